// The table shown as a spreadsheet: its visible columns, a header line, a row for each of its rows.
#include "save_form.h"

#include <QDateTime>
#include <QVariant>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

#include <orvane/db.h>
#include <orvane/tr.h>
#include <orvane/util.h>
#include <xlsxdocument.h>
#include <xlsxformat.h>

#include <orvanetablemodel.h>
#include <orvanetableview.h>

#include "new_file.h"

namespace {

constexpr const char *operation = "spreadsheet";
constexpr int mostRows = 1048576; // of a sheet
constexpr int mostColumns = 16384;
constexpr double writingShare = 0.5; // of the time; the rest is saving
constexpr int cellsBetweenReports = 1024;

struct Formats {
    QXlsx::Format header;
    QXlsx::Format time;
    QXlsx::Format plain;

    Formats()
    {
        header.setFontBold(true);
        time.setNumberFormat(QStringLiteral("m/d/yy h:mm:ss.00"));
    }
};

struct Column {
    int inTable;
    bool isTime;
};

[[noreturn]] void fail(const QString &text)
{
    throw std::runtime_error(text.toStdString());
}

// The stand-in tells more of its saving than the writer that it stands in for. ----------------------------

template <class Document>
double savedFraction(const Document &document)
{
    if constexpr (requires { document.savedFraction(); }) {
        return document.savedFraction();
    }
    return 0;
}

template <class Document>
void stopSaving(Document &document)
{
    if constexpr (requires { document.stopSaving(); }) {
        document.stopSaving();
    }
}

// Why the last call failed; empty where that can't be told.
template <class Document>
QString reasonOf(const Document &document)
{
    if constexpr (requires { document.errorText(); }) {
        return document.errorText();
    }
    return {};
}

void report(double fraction)
{
    if (dbreport_progress(operation, fraction) != 0) {
        fail(QStringLiteral("%1: cancelled").arg(operation));
    }
}

// The writer at work on the file, in a thread of its own: it has no steps to report between, and takes long
// over many rows.
class Saving
{
public:
    Saving(std::shared_ptr<QXlsx::Document> document, const QString &path)
        : m_document(std::move(document)), m_file(path), m_beside(m_file.writtenPath())
    {
    }

    // Empty where the file can't be made; putInPlace() then says why.
    const QString &beside() const { return m_beside; }
    NewFile &file() { return m_file; }

    void run()
    {
        m_isSaved = m_document->saveAs(m_beside);
        m_isDone = true;
    }
    bool isDone() const { return m_isDone; }
    bool isSaved() const { return m_isSaved; }
    double fraction() const { return savedFraction(*m_document); }
    void stop() { stopSaving(*m_document); }

private:
    std::shared_ptr<QXlsx::Document> m_document;
    NewFile m_file;
    const QString m_beside;
    std::atomic<bool> m_isDone = false;
    bool m_isSaved = false;
};

// The writer ends when it gets to it, if it can be stopped at all. Who cancels doesn't wait for it: it goes
// on by itself, with nothing to show for it in the end, and the program does not exit before that, so that
// its file goes, too.
void letGo(std::thread thread)
{
    struct Ending {
        std::vector<std::thread> threads;
        ~Ending()
        {
            for (std::thread &each : threads) {
                each.join();
            }
        }
    };
    static Ending ending;
    ending.threads.push_back(std::move(thread));
}

class SheetWriter
{
public:
    explicit SheetWriter(const SaveRequest &request) : m_request(request), m_table(request.table)
    {
        for (const QString &field : request.view.getFieldNamesVisible()) {
            const int column = m_table.indexForColumn(field).column();
            m_columns.push_back({column, m_table.getColumnType(column) == dbTIME});
        }
    }

    // Said before anything is written.
    void checkSize() const
    {
        const int rows = m_table.rowCount();
        const int most = mostRows - (m_request.hasHeaders ? 1 : 0);
        if (rows > most) {
            fail(OvTranslation::tr(
                     "'%1' has %2 rows; a spreadsheet holds no more than %3. Nothing was written: "
                     "save it as a text file, or a part of it.")
                     .arg(m_table.getTableName())
                     .arg(rows)
                     .arg(most));
        }
        if (m_columns.size() > mostColumns) {
            fail(OvTranslation::tr("'%1' has more columns than a spreadsheet holds")
                     .arg(m_table.getTableName()));
        }
    }

    void write()
    {
        int row = 1;
        for (std::size_t i = 0; i < m_columns.size(); ++i) {
            m_document->setColumnWidth(static_cast<int>(i) + 1,
                                       m_table.approxColumnWidthChars(m_columns[i].inTable));
        }
        if (m_request.hasHeaders) {
            writeHeaders(row++);
        }
        const int rows = m_table.rowCount();
        int cells = 0;
        for (int record = 0; record < rows; ++record, ++row) {
            writeRecord(row, record);
            cells += static_cast<int>(m_columns.size());
            if (cells >= cellsBetweenReports) {
                cells = 0;
                report(writingShare * record / rows);
            }
        }
    }

    // Beside the path and then in its place.
    void save()
    {
        const auto saving = std::make_shared<Saving>(m_document, m_request.path);
        if (!saving->beside().isEmpty() && !saveReporting(saving)) {
            failed(OvTranslation::tr("The spreadsheet '%1' could not be written").arg(m_request.path));
        }
        saving->file().putInPlace();
    }

private:
    void writeHeaders(int row)
    {
        for (std::size_t i = 0; i < m_columns.size(); ++i) {
            put(row, i, m_table.headerData(m_columns[i].inTable, Qt::Horizontal, Qt::UserRole),
                m_formats.header);
        }
    }

    // A record that is gone shows as empty cells; written so it would be wrong.
    void checkReadable(int record) const
    {
        Dbptr place = m_table.getFacadeDbptr();
        place.field = dbALL;
        place.record = record;
        char unused = 0;
        if (dbget(place, &unused, 0) < 0) { // with no room for it the record is looked at and not copied
            elog_clear();
            fail(OvTranslation::tr("Row %1 of '%2' can't be read any more: the table has changed meanwhile. "
                                   "Nothing was written.")
                     .arg(record)
                     .arg(m_table.getTableName()));
        }
    }

    void writeRecord(int row, int record)
    {
        checkReadable(record);
        for (std::size_t i = 0; i < m_columns.size(); ++i) {
            put(row, i, m_table.data(m_table.index(record, m_columns[i].inTable), Qt::UserRole),
                m_columns[i].isTime ? m_formats.time : m_formats.plain);
        }
    }

    void put(int row, std::size_t column, const QVariant &value, const QXlsx::Format &format)
    {
        if (!m_document->write(row, static_cast<int>(column) + 1, value, format)) {
            failed(OvTranslation::tr("Row %1, column %2 could not be written to the spreadsheet")
                       .arg(row)
                       .arg(column + 1));
        }
    }

    // With the writer's reason where it tells one.
    [[noreturn]] void failed(const QString &what) const
    {
        const QString reason = reasonOf(*m_document);
        fail(reason.isEmpty() ? what : what + QStringLiteral(": ") + reason);
    }

    bool saveReporting(const std::shared_ptr<Saving> &saving)
    {
        std::thread thread([saving] { saving->run(); });
        while (!saving->isDone()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            if (dbreport_progress(operation, writingShare + (1 - writingShare) * saving->fraction()) != 0) {
                saving->stop();
                letGo(std::move(thread));
                fail(QStringLiteral("%1: cancelled").arg(operation));
            }
        }
        thread.join();
        return saving->isSaved();
    }

    const SaveRequest &m_request;
    OrvaneTableModel &m_table;
    std::vector<Column> m_columns;
    Formats m_formats;
    const std::shared_ptr<QXlsx::Document> m_document = std::make_shared<QXlsx::Document>();
};

} // namespace

void saveSpreadsheet(const SaveRequest &request)
{
    SheetWriter sheet(request);
    sheet.checkSize();
    sheet.write();
    sheet.save();
}
