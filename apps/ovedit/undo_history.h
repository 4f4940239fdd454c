// The undo and redo of one database: what was changed in its records since its window was opened.
#ifndef OVEDIT_UNDO_HISTORY_H
#define OVEDIT_UNDO_HISTORY_H

#include <QObject>
#include <QString>
#include <QTimer>
#include <QUndoStack>

#include <orvane/db.h>

class UndoStep;

// Steps are kept without limit. Each puts its values back only in records that still hold what it had put
// there; when a table's records get other numbers (it was crunched, or replaced by another program) the steps
// of the table end.
class UndoHistory : public QObject
{
    Q_OBJECT

public:
    // Of the open database with this index.
    explicit UndoHistory(qint64 database, QObject *parent = nullptr);
    ~UndoHistory() override;

    // What undo() and redo() would do, for a menu: "Change of arrival.sta in record 12". Empty: nothing.
    QString undoText() const { return m_stack.undoText(); }
    QString redoText() const { return m_stack.redoText(); }

    // The step that undo() would take back, or redo() do again; null when there is none.
    const UndoStep *undoStep() const { return m_stack.canUndo() ? stepAt(m_stack.index() - 1) : nullptr; }
    const UndoStep *redoStep() const { return m_stack.canRedo() ? stepAt(m_stack.index()) : nullptr; }
    int count() const { return m_stack.count(); }

    // Puts back what was changed since latestStep() answered `since`, as if nothing had been: it can't be
    // done again. Answers why something of it is left, which undo() may still take back; else an empty text.
    quint64 latestStep() const;
    QString giveUpSince(quint64 since);

    // Whether a step would be lost with a table.
    bool hasStepsOf(qint64 table) const;

public slots:
    // Throw std::runtime_error with the reason when it fails; the step then stays where it is.
    void undo();
    void redo();
    // Drops the steps of tables that were crunched or replaced by another program.
    void lookForNewNumbers();

signals:
    // Another text, or none. Not while the database library works.
    void changed();
    // Records were changed by undo() or redo().
    void recordsChanged();
    // What the user should know: records that were left alone, steps that ended.
    void message(const QString &text);

private:
    static void hook(const DbChange *change, void *);
    void take(const DbChange &change);
    void move(bool back);
    void told(const UndoStep &step, bool back);
    void purge();
    UndoStep *stepAt(int index) const;
    template <typename Drop>
    void dropFromAll(Drop drop);

    const qint64 m_database;
    QUndoStack m_stack;
    UndoStep *m_latest = nullptr; // to which changes of its number are added
    QTimer m_announce;
    bool m_isBroken = false; // a change could not be kept
};

#endif
