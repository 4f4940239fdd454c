#include <xlsxdocument.h>

#include "cell_spool.h"
#include "cell_value.h"
#include "replacement_file.h"
#include "saving_watch.h"
#include "workbook_file.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace QXlsx {

class DocumentPrivate
{
public:
    void write(int row, int column, const QVariant &value, const Format &format);
    void setColumnWidth(int column, double width);
    void saveAs(const QString &path);

    // Runs a step of which a failure is the reason for errorText and false: no exception reaches a caller.
    template <typename Step>
    bool attempt(Step step);

    QString reason;
    SavingWatch watch;

private:
    std::uint16_t formatIndex(const Format &format);

    CellSpool m_cells;
    std::vector<Format> m_formats;
    std::map<int, double> m_columnWidths;
    bool m_lostCells = false; // the spool file failed
};

namespace {

void checkColumn(int column)
{
    if (column < 1 || column > lastColumn) {
        throw std::out_of_range("a sheet has no column " + std::to_string(column));
    }
}

} // namespace

template <typename Step>
bool DocumentPrivate::attempt(Step step)
{
    try {
        step();
        return true;
    } catch (const std::exception &error) {
        reason = QString::fromUtf8(error.what());
        return false;
    }
}

void DocumentPrivate::write(int row, int column, const QVariant &value, const Format &format)
{
    checkColumn(column);
    if (row < 1 || row > lastRow) {
        throw std::out_of_range("a sheet has no row " + std::to_string(row));
    }
    const SpooledCell cell{std::uint32_t(row - 1), std::uint16_t(column - 1), formatIndex(format),
                           cellValue(value)};
    try {
        m_cells.append(cell);
    } catch (...) {
        m_lostCells = true;
        throw;
    }
}

// Formats are few and come in long stretches of one, so the last ones are looked at first.
std::uint16_t DocumentPrivate::formatIndex(const Format &format)
{
    const auto known = std::find(m_formats.rbegin(), m_formats.rend(), format);
    if (known != m_formats.rend()) {
        return std::uint16_t(m_formats.rend() - known - 1);
    }
    if (format.numberFormat().toUtf8().size() > longestNumberFormat) {
        throw std::length_error("the number format is longer than " + std::to_string(longestNumberFormat) +
                                " bytes");
    }
    if (m_formats.size() > std::numeric_limits<std::uint16_t>::max()) {
        throw std::length_error("the document has too many formats");
    }
    m_formats.push_back(format);
    return std::uint16_t(m_formats.size() - 1);
}

void DocumentPrivate::setColumnWidth(int column, double width)
{
    checkColumn(column);
    if (!(width >= 0 && width <= 255)) {
        throw std::out_of_range("a column cannot be " + std::to_string(width) + " characters wide");
    }
    m_columnWidths[column] = width;
}

void DocumentPrivate::saveAs(const QString &path)
{
    if (m_lostCells) {
        throw std::runtime_error("the spool file could not be written, so cells are missing");
    }
    watch.begin();
    ReplacementFile file(path);
    writeWorkbook(file.temporaryPath(), {m_cells, m_formats, m_columnWidths}, watch);
    watch.gathered(1);
    file.commit();
}

Document::Document() : d(std::make_unique<DocumentPrivate>()) {}

Document::~Document() = default;

bool Document::write(int row, int column, const QVariant &value, const Format &format)
{
    return d->attempt([&] { d->write(row, column, value, format); });
}

bool Document::setColumnWidth(int column, double width)
{
    return d->attempt([&] { d->setColumnWidth(column, width); });
}

bool Document::saveAs(const QString &path) const
{
    return d->attempt([&] { d->saveAs(path); });
}

QString Document::errorText() const
{
    return d->reason;
}

double Document::savedFraction() const
{
    return d->watch.fraction();
}

void Document::stopSaving()
{
    d->watch.stop();
}

} // namespace QXlsx
