// Whether a change makes the keys of records the same.
#ifndef OVQT_VIEWS_RECORD_KEYS_H
#define OVQT_VIEWS_RECORD_KEYS_H

#include <QMap>
#include <QPair>
#include <QStringList>

class OrvaneTableModel;

// Counts the different primary keys of base tables, before and after. Each throws std::runtime_error where
// that fails or is cancelled.
class RecordKeys
{
public:
    // Before a column is changed, whose field may be a part of a key; in all records of the table: `isAll`.
    // Answers the key where that is already known to make some the same.
    QStringList note(const OrvaneTableModel &model, int column, bool isAll);

    // Afterwards: the key of a table that has fewer different ones now; empty where there is none.
    QStringList met(const OrvaneTableModel &model) const;

    // What is told of it.
    static QString sentence(const QStringList &key);

private:
    QMap<QStringList, QPair<int, qint64>> m_counts; // by key: one of its columns, and how many there were
};

#endif
