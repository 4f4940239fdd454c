#include "save_form.h"

#include <QFile>
#include <QFileInfo>
#include <QMessageBox>

#include <orvane/db.h>
#include <orvane/tr.h>

#include <orvanetablemodel.h>

#include "library_call.h"
#include "new_file.h"

namespace {

struct FieldListRelease {
    void operator()(Tbl *list) const { freetbl(list, std::free); }
};
using FieldList = std::unique_ptr<Tbl, FieldListRelease>;

FieldList fieldsOf(Dbptr table)
{
    Tbl *fields = nullptr;
    dbquery(table, dbTABLE_FIELDS, &fields);
    return FieldList(fields);
}

// ---- Text ---------------------------------------------------------------------------------------------

void writeText(const SaveRequest &request, const char *separator, int flag)
{
    const Dbptr table = request.table.getFacadeDbptr();
    const FieldList fields = fieldsOf(table);
    NewFile file(request.path);
    if (request.hasHeaders && file.stream() != nullptr) {
        dbselect_hdr(table, fields.get(), file.stream(), separator, flag);
    }
    callLibrary(OvTranslation::tr("dbselect failed"),
                [&] { return dbselect(table, fields.get(), file.stream(), separator, flag); });
    file.putInPlace();
}

void saveSpaces(const SaveRequest &request)
{
    writeText(request, " ", 0);
}

void saveTabs(const SaveRequest &request)
{
    writeText(request, "\t", 1);
}

void saveCommas(const SaveRequest &request)
{
    writeText(request, ",", 1);
}

// ---- Databases ----------------------------------------------------------------------------------------

// The file dialog has asked about the name of the database; the table's file may be there all the same.
bool mayBeReplaced(const QString &path, QWidget &window)
{
    return !QFileInfo::exists(path) ||
           QMessageBox::question(
               &window, OvTranslation::tr("Save As"),
               OvTranslation::tr("%1 already exists.\nDo you want to replace it?").arg(path),
               QMessageBox::Yes | QMessageBox::No, QMessageBox::No) == QMessageBox::Yes;
}

// The records of a base table as they stand, in the order shown. No failure is reported here; the library's
// reason is in the error log.
void saveTableFile(const SaveRequest &request)
{
    const QString path = request.path + "." + request.table.getTableName();
    if (!mayBeReplaced(path, request.window)) {
        return;
    }
    const Dbptr table = request.table.getFacadeDbptr();
    const FieldList fields = fieldsOf(table);
    NewFile file(path);
    try {
        if (dbselect(table, fields.get(), file.stream(), " ", 0) == 0) {
            file.putInPlace();
        }
    } catch (const std::exception &error) {
        elog_log("%s", error.what());
    }
}

void saveDatabase(const SaveRequest &request)
{
    if (!request.table.tableIsView()) {
        saveTableFile(request);
        return;
    }
    callLibrary(OvTranslation::tr("dbunjoin failed"), [&] {
        return dbunjoin(request.table.getFacadeDbptr(), QFile::encodeName(request.path).constData(), 0);
    });
}

// Under the name proposed the view belongs to the database.
void saveView(const SaveRequest &request)
{
    const Dbptr table = request.table.getFacadeDbptr();
    if (QFileInfo(request.path).fileName() == request.defaultName) {
        callLibrary(OvTranslation::tr("dbsave_view failed"), [&] { return dbsave_view(table); });
        return;
    }
    NewFile file(request.path);
    callLibrary(OvTranslation::tr("dbwrite_view failed"), [&] { return dbwrite_view(table, file.stream()); });
    file.putInPlace();
}

struct SaveForm {
    const char *filter;
    void (*save)(const SaveRequest &request);
};

const SaveForm forms[] = {
    {OvTranslation::noop("New Database"), saveDatabase},
    {OvTranslation::noop("View"), saveView},
    {OvTranslation::noop("Excel Spreadsheet (*.xlsx)"), saveSpreadsheet},
    {OvTranslation::noop("Text File -- spaces (*.txt)"), saveSpaces},
    {OvTranslation::noop("Text File -- tabs (*.tsv)"), saveTabs},
    {OvTranslation::noop("Text File -- commas (*.csv)"), saveCommas},
    {OvTranslation::noop("Image File (*.png)"), savePicture},
};
constexpr int firstForm = 1;

} // namespace

QStringList saveFilters()
{
    QStringList filters;
    for (const SaveForm &form : forms) {
        filters.append(OvTranslation::tr(form.filter));
    }
    return filters;
}

QString firstSaveFilter()
{
    return saveFilters().at(firstForm);
}

void saveInForm(const QString &filter, const SaveRequest &request)
{
    const int form = saveFilters().indexOf(filter);
    if (form < 0) {
        throw std::runtime_error(
            OvTranslation::tr("Unexpected internal logic error -- unknown format from SaveAs Dialog")
                .toStdString());
    }
    forms[form].save(request);
}
