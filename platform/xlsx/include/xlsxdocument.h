// A spreadsheet of one sheet, written cell by cell in any order and saved as an Office Open XML (.xlsx) file.
//
// Cells do not stay in memory: they go to a spool file in the temporary folder, from which saving reads them
// back in row order. A document's memory is bounded, whatever its number of cells and their order.
#ifndef ORVANE_XLSX_DOCUMENT_H
#define ORVANE_XLSX_DOCUMENT_H

#include <QString>
#include <QVariant>

#include <memory>

#include <xlsx_export.h>
#include <xlsxformat.h>

namespace QXlsx {

class DocumentPrivate;

class ORVANE_XLSX_EXPORT Document
{
public:
    Document();
    ~Document();
    Document(const Document &) = delete;
    Document &operator=(const Document &) = delete;

    // Sets the cell at the 1-based row (up to 1 048 576) and column (up to 16 384); a later value replaces an
    // earlier one. Numbers stay numbers, booleans booleans, and all text is text, never a formula or a link.
    // A QDateTime or QDate is its own clock's date and time as a date serial, shown as an ISO date unless the
    // format says otherwise. What a spreadsheet's numbers cannot hold is written as text: not-a-number and
    // infinities, integers beyond 2^53, dates outside 1900 to 9999. An invalid or null variant and an empty
    // text leave the cell blank.
    // False, with a reason in errorText(), when the place is outside the sheet, the text is longer than the
    // 32 767 characters of a cell (characters that the file must escape count as seven), the number format is
    // longer than 127 bytes, the value has no text form, or the spool file cannot be written; the
    // cell is then as it was. After a failure of the spool file saveAs() fails too, as the document is not
    // whole.
    bool write(int row, int column, const QVariant &value, const Format &format = Format());

    // The width of a 1-based column in characters, from 0 to 255. False, with a reason, for any other.
    bool setColumnWidth(int column, double width);

    // Writes the document to a temporary file beside the path and renames it over the path, so that the path
    // holds the old file or the whole new one; the mode of a replaced file stays. A document may be saved
    // again, and written on. False, with a reason, when that fails; nothing is left behind then.
    bool saveAs(const QString &path) const;

    // The members from here on are the stand-in's own. ---------------------------------------------------

    // Why the last call that answered false did so (English); empty before any.
    QString errorText() const;

    // Asked from another thread while saveAs() runs in one: how far it is, from 0 to 1.
    double savedFraction() const;

    // Asks a running saveAs() from another thread to fail. It does so soon, but once it packs the file, only
    // when that is done.
    void stopSaving();

private:
    std::unique_ptr<DocumentPrivate> d;
};

} // namespace QXlsx

#endif
