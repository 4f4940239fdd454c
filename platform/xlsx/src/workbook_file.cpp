#include "workbook_file.h"

#include "saving_watch.h"

#include <QDir>
#include <QFile>
#include <QStorageInfo>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>

#include <unistd.h>

#include <locale.h> // the calls for one thread's locale are not the standard library's

#include <xlsxwriter.h>

namespace QXlsx {

namespace {

// Above this size of the sheet within the archive only its 64-bit form can hold it. Others are written in the
// classic form, as not every reader knows the 64-bit one.
constexpr qint64 largestClassicSheet = 4000000000LL;
constexpr qint64 restOfTheWorkbook = 1 << 20; // all but the cells, generously
constexpr std::uint64_t cellsBetweenLooks = 1024;
constexpr int packedSamples = 4;
constexpr int packedSampleBytes = 128 << 10;

// While it lives this thread writes numbers with a point: the writing library prints them by the locale, in
// which a host program's user may well have a comma, and a file with commas is broken.
class PlainNumbers
{
public:
    PlainNumbers() : m_plain(::newlocale(LC_ALL_MASK, "C", nullptr))
    {
        if (!m_plain) {
            throw std::bad_alloc();
        }
        m_before = ::uselocale(m_plain);
    }
    ~PlainNumbers()
    {
        ::uselocale(m_before);
        ::freelocale(m_plain);
    }
    PlainNumbers(const PlainNumbers &) = delete;
    PlainNumbers &operator=(const PlainNumbers &) = delete;

private:
    locale_t m_plain;
    locale_t m_before{};
};

struct WorkbookFree {
    void operator()(lxw_workbook *workbook) const { lxw_workbook_free(workbook); }
};
using Workbook = std::unique_ptr<lxw_workbook, WorkbookFree>;

void check(lxw_error error)
{
    if (error != LXW_NO_ERROR) {
        throw std::runtime_error(lxw_strerror(error));
    }
}

// The workbook's formats for each of ours: as is, and with what a date shows as where it has no number
// format.
class CellFormats
{
public:
    CellFormats(lxw_workbook *workbook, const std::vector<Format> &formats)
        : m_workbook(workbook), m_formats(formats)
    {
    }

    lxw_format *of(const SpooledCell &cell)
    {
        const Format &format = m_formats[cell.format];
        QString numberFormat = format.numberFormat();
        if (numberFormat.isEmpty() && cell.value.kind == CellKind::DateTime) {
            numberFormat = QStringLiteral("yyyy-mm-dd hh:mm:ss");
        } else if (numberFormat.isEmpty() && cell.value.kind == CellKind::Date) {
            numberFormat = QStringLiteral("yyyy-mm-dd");
        }
        if (!format.fontBold() && numberFormat.isEmpty()) {
            return nullptr;
        }
        lxw_format *&made = m_made[{format.fontBold(), numberFormat}];
        if (!made) {
            made = make(format.fontBold(), numberFormat);
        }
        return made;
    }

private:
    lxw_format *make(bool bold, const QString &numberFormat)
    {
        lxw_format *format = workbook_add_format(m_workbook);
        if (!format) {
            throw std::bad_alloc();
        }
        if (bold) {
            format_set_bold(format);
        }
        if (!numberFormat.isEmpty()) {
            format_set_num_format(format, numberFormat.toUtf8().constData());
        }
        return format;
    }

    lxw_workbook *m_workbook;
    const std::vector<Format> &m_formats;
    std::map<std::pair<bool, QString>, lxw_format *> m_made;
};

void writeCell(lxw_worksheet *sheet, const SpooledCell &cell, lxw_format *format)
{
    const CellValue &value = cell.value;
    switch (value.kind) {
    case CellKind::Blank:
        return check(worksheet_write_blank(sheet, cell.row, cell.column, format));
    case CellKind::Boolean:
        return check(worksheet_write_boolean(sheet, cell.row, cell.column, value.number != 0, format));
    case CellKind::Text:
        return check(worksheet_write_string(sheet, cell.row, cell.column, value.text.constData(), format));
    case CellKind::Number:
    case CellKind::DateTime:
    case CellKind::Date:
        return check(worksheet_write_number(sheet, cell.row, cell.column, value.number, format));
    }
}

// The writing library does not look whether its temporary files take what it writes to them. So: the rows it
// has written must have arrived, and there must be room for the copy of them that closing makes.
// Returns the size of the rows.
qint64 checkedRows(lxw_worksheet *sheet, const QString &temporaryFolder)
{
    std::FILE *rows = sheet->optimize_tmpfile;
    if (std::fflush(rows) != 0 || std::ferror(rows)) {
        throw std::runtime_error("cannot write to the temporary folder '" + temporaryFolder.toStdString() +
                                 "'");
    }
    const qint64 size = std::ftell(rows);
    if (QStorageInfo(temporaryFolder).bytesFree() < size + restOfTheWorkbook) {
        throw std::runtime_error("not enough room in the temporary folder '" + temporaryFolder.toStdString() +
                                 "'");
    }
    return size;
}

// How large the rows are when they are packed, about: some parts of them are packed to see. The same method
// and level as the writing library's.
qint64 packedSize(lxw_worksheet *sheet, qint64 size)
{
    const int file = ::fileno(sheet->optimize_tmpfile);
    qint64 taken = 0;
    qint64 packed = 0;
    std::vector<uchar> sample(packedSampleBytes);
    for (int i = 0; i < packedSamples; ++i) {
        const ssize_t got = ::pread(file, sample.data(), sample.size(), size / packedSamples * i);
        if (got > 0) {
            taken += got;
            packed += qCompress(sample.data(), static_cast<int>(got)).size();
        }
    }
    return taken == 0 ? 0
                      : static_cast<qint64>(static_cast<double>(size) / static_cast<double>(taken) *
                                            static_cast<double>(packed));
}

} // namespace

void writeWorkbook(const QByteArray &path, const SheetContents &contents, SavingWatch &watch)
{
    const PlainNumbers plainNumbers;
    const QString temporaryFolder = QDir::tempPath();
    QByteArray folder = QFile::encodeName(temporaryFolder);
    lxw_workbook_options options{};
    options.constant_memory = LXW_TRUE;
    options.tmpdir = folder.data();
    Workbook workbook(workbook_new_opt(path.constData(), &options));
    lxw_worksheet *sheet = workbook ? workbook_add_worksheet(workbook.get(), nullptr) : nullptr;
    if (!sheet || !sheet->optimize_tmpfile) {
        throw std::runtime_error("cannot make a workbook in the temporary folder '" +
                                 temporaryFolder.toStdString() + "'");
    }
    for (const auto &[column, width] : contents.columnWidths) {
        const lxw_col_t at = lxw_col_t(column - 1);
        check(worksheet_set_column(sheet, at, at, width, nullptr));
    }
    CellFormats formats(workbook.get(), contents.formats);
    const auto cells = static_cast<double>(contents.cells.count());
    std::uint64_t written = 0;
    contents.cells.readInRowOrder([&](const SpooledCell &cell) {
        writeCell(sheet, cell, formats.of(cell));
        if (++written % cellsBetweenLooks == 0) {
            watch.gathered(static_cast<double>(written) / cells);
        }
    });
    const qint64 size = checkedRows(sheet, temporaryFolder);
    watch.packing(path, packedSize(sheet, size));
    workbook->options.use_zip64 = size > largestClassicSheet ? LXW_TRUE : LXW_FALSE;
    errno = 0;
    const lxw_error closed = workbook_close(workbook.release()); // which frees it, come what may
    if (closed != LXW_NO_ERROR && errno != 0) {
        // Its own words tell what it did, not why that failed.
        throw std::runtime_error(std::string(lxw_strerror(closed)) + ' ' + std::strerror(errno) + '.');
    }
    check(closed);
}

} // namespace QXlsx
