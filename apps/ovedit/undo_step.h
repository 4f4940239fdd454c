// What one command of the user changed in the records of a database, and the way back.
#ifndef OVEDIT_UNDO_STEP_H
#define OVEDIT_UNDO_STEP_H

#include <vector>

#include <QSet>
#include <QString>
#include <QUndoCommand>

#include <orvane/db.h>

#include "undo_store.h"

// A command of the undo stack, which holds the order of the steps. The work is done by takeBack() and
// doAgain() before the stack is moved, because it may fail; undo() and redo() do nothing.
class UndoStep : public QUndoCommand
{
public:
    explicit UndoStep(quint64 number) : m_number(number) {}

    // By which changes that belong together are known.
    quint64 number() const { return m_number; }

    // Takes over what a change has replaced. False when there is no room to keep it: see reason().
    bool add(const DbChange &change);

    enum class Outcome { Done, Nothing, Outdated, Cancelled, Failed };
    // Puts back what was there before, or what the step put there. Records that hold something else by now
    // are left alone: leftAlone() counts them. When it is Done the step can go the other way; Nothing: none
    // of its records could be changed; Outdated: they have other numbers by now. After the others it can be
    // asked for again and goes on where it was.
    Outcome takeBack() { return exchange(true); }
    Outcome doAgain() { return exchange(false); }
    qint64 leftAlone() const { return m_leftAlone; }
    qint64 values() const { return m_values; }
    QString reason() const { return m_reason; }

    // Forgets a table whose records have other numbers than these. The step is obsolete when nothing is left.
    void dropTable(qint64 table, qint64 numbering);
    void dropTable(qint64 table);
    const QSet<qint64> &tables() const { return m_tables; }

    qint64 bytesKept() const { return m_store.size(); }
    bool isInFile() const { return m_store.isInFile(); }

private:
    struct Change {
        DbChange told;           // its pointers are not valid
        qint64 firstRecord = -1; // -1: the numbers are kept; else they follow one another
        qint64 offset = 0;       // of numbers, texts before and the text after
    };

    Outcome exchange(bool back);
    bool load(const Change &change, QByteArray &bytes, std::vector<int64_t> &numbers, DbChange &told);
    void dropChanges(bool (*isGone)(const Change &, qint64, qint64), qint64 table, qint64 numbering);
    QString description() const;
    void noteNames(const DbChange &change);

    const quint64 m_number;
    std::vector<Change> m_changes;
    UndoStore m_store;
    QSet<qint64> m_tables;
    qint64 m_values = 0; // records of all changes
    qint64 m_leftAlone = 0;
    QString m_reason;

    // For the description: of the first change, and whether the others are alike.
    int m_kind = 0;
    QString m_table;
    QString m_field;
    qint64 m_record = -1;
    bool m_isOneTable = true;
    bool m_isOneField = true;
    bool m_isOneKind = true;
};

#endif
