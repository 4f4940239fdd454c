#ifndef OVQT_MODELS_CELL_READER_H
#define OVQT_MODELS_CELL_READER_H

#include <QList>
#include <QString>
#include <QVariant>
#include <chrono>
#include <memory>

#include <orvane/db.h>

class QDbptr;
struct TableColumn;

// The text of a cell without blanks at its ends, and whether it is its field's null.
struct CellText {
    QString text;
    bool null = false;
};

// Reads cells with one handle that is moved about, and remembers the cell read last: a view asks for the
// display, the background and the value of a cell one after the other, and the database is asked once for all
// of them.
//
// Other programs and other handles may change the cell at any time. So the memory serves each use once, and
// never after 50 ms: who asks twice is told what the database says now.
class CellReader
{
public:
    enum Use { Display = 1, Background = 2, Value = 4 };

    CellReader();
    ~CellReader();

    // The table to read from, which must be valid. Forgets the cell.
    void setTable(const QDbptr &table);
    void forget() { m_servedUses = All; }

    // The text of a cell. Throws when the record is gone or the request fails; the result lives until the
    // next call.
    const CellText &text(const TableColumn &column, qint64 record, Use use);

    // The value of a cell by its field's type. Throws likewise.
    QVariant value(const TableColumn &column, qint64 record);

    // The handle, to be moved about. Null before setTable().
    QDbptr *handle() const { return m_handle.get(); }

private:
    static constexpr int All = Display | Background | Value;
    static constexpr std::chrono::milliseconds lifetime{50};

    QDbptr &cell(const TableColumn &column, qint64 record);

    std::unique_ptr<QDbptr> m_handle;
    const QString m_getRequest = QStringLiteral("dbget");
    const QList<QVariant> m_getArguments{QVariant(false)};

    CellText m_cell;
    int64_t m_field = dbINVALID;
    int64_t m_record = dbINVALID;
    int m_servedUses = All; // All: nothing is remembered
    std::chrono::steady_clock::time_point m_readAt;
};

#endif
