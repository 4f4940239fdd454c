// The table shown as a spreadsheet: its visible columns, a header line, a row for each of its rows.
#include "save_form.h"

#include <QDateTime>
#include <QVariant>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

#include <orvane/db.h>
#include <orvane/tr.h>
#include <xlsxdocument.h>
#include <xlsxformat.h>

#include <orvanetablemodel.h>
#include <orvanetableview.h>

#include "new_file.h"

namespace {

constexpr const char *operation = "spreadsheet";
constexpr int mostRows = 1048576; // of a sheet
constexpr int mostColumns = 16384;
constexpr double writingShare = 0.6; // of the time; the rest is saving
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

void report(double fraction)
{
    if (dbreport_progress(operation, fraction) != 0) {
        fail(QStringLiteral("%1: cancelled").arg(operation));
    }
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
            m_document.setColumnWidth(static_cast<int>(i) + 1,
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

    // Beside the path and then in its place. The writer has no steps to report between, so it works in a
    // thread of its own; who cancels waits until it is done.
    void save()
    {
        NewFile file(m_request.path);
        const QString beside = file.writtenPath();
        bool isSaved = false;
        if (!beside.isEmpty()) {
            isSaved = saveReporting(beside);
        }
        if (!isSaved && !beside.isEmpty()) {
            fail(OvTranslation::tr("The spreadsheet '%1' could not be written").arg(m_request.path));
        }
        file.putInPlace();
    }

private:
    void writeHeaders(int row)
    {
        for (std::size_t i = 0; i < m_columns.size(); ++i) {
            put(row, i, m_table.headerData(m_columns[i].inTable, Qt::Horizontal, Qt::UserRole),
                m_formats.header);
        }
    }

    void writeRecord(int row, int record)
    {
        for (std::size_t i = 0; i < m_columns.size(); ++i) {
            put(row, i, m_table.data(m_table.index(record, m_columns[i].inTable), Qt::UserRole),
                m_columns[i].isTime ? m_formats.time : m_formats.plain);
        }
    }

    void put(int row, std::size_t column, const QVariant &value, const QXlsx::Format &format)
    {
        if (!m_document.write(row, static_cast<int>(column) + 1, value, format)) {
            fail(OvTranslation::tr("Row %1, column %2 could not be written to the spreadsheet")
                     .arg(row)
                     .arg(column + 1));
        }
    }

    bool saveReporting(const QString &path)
    {
        std::atomic<bool> isDone = false;
        bool isSaved = false;
        std::thread saving([&] {
            isSaved = m_document.saveAs(path);
            isDone = true;
        });
        bool isCancelled = false;
        while (!isDone) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            isCancelled = isCancelled || dbreport_progress(operation, writingShare) != 0;
        }
        saving.join();
        if (isCancelled) {
            fail(QStringLiteral("%1: cancelled").arg(operation));
        }
        return isSaved;
    }

    const SaveRequest &m_request;
    OrvaneTableModel &m_table;
    std::vector<Column> m_columns;
    Formats m_formats;
    QXlsx::Document m_document;
};

} // namespace

void saveSpreadsheet(const SaveRequest &request)
{
    SheetWriter sheet(request);
    sheet.checkSize();
    sheet.write();
    sheet.save();
}
