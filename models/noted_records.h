#ifndef OVQT_MODELS_NOTED_RECORDS_H
#define OVQT_MODELS_NOTED_RECORDS_H

#include <QList>
#include <QPersistentModelIndex>
#include <QString>
#include <QVector>

class QDbptr;

// The records that somebody selected or edits, by what tells them from others, so that they are found again
// when another program puts another file in the place of the table, as by crunching it.
class NotedRecords
{
public:
    // More are not followed: each costs a search.
    static constexpr int most = 50;

    struct Record {
        QPersistentModelIndex place;
        QString expression; // true for the record
    };

    void clear() { m_records.clear(); }
    void add(const QPersistentModelIndex &place, const QString &expression)
    {
        m_records.append({place, expression});
    }
    const QVector<Record> &records() const { return m_records; }

    // "sta == 'AAK'".
    static QString isEqual(const QString &field, const QString &text);

    // The row of `table` for which the expression is true, the nearest to `row`, before it first: crunching
    // moves records there. -1 where there is none. Leaves the error log as it was.
    static qint64 find(QDbptr &table, const QString &expression, qint64 row);

private:
    QVector<Record> m_records;
};

#endif
