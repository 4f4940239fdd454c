#include "undo_history.h"

#include <stdexcept>
#include <utility>

#include <QHash>
#include <QSet>

#include <orvane/tr.h>

#include "sentences.h"
#include "undo_step.h"

namespace {

// All histories of the process, by their databases: the library has one hook.
QHash<qint64, UndoHistory *> &histories()
{
    static QHash<qint64, UndoHistory *> all;
    return all;
}

} // namespace

UndoHistory::UndoHistory(qint64 database, QObject *parent) : QObject(parent), m_database(database)
{
    m_announce.setSingleShot(true);
    m_announce.setInterval(0);
    connect(&m_announce, &QTimer::timeout, this, [this] {
        purge();
        if (std::exchange(m_isBroken, false)) {
            emit message(OvTranslation::tr(
                "There is no room to keep what was there before the last change: it can't be undone."));
        }
        emit changed();
    });
    histories().insert(database, this);
    dbset_change_hook(&UndoHistory::hook, nullptr);
}

UndoHistory::~UndoHistory()
{
    if (histories().value(m_database) == this) {
        histories().remove(m_database);
    }
    if (histories().isEmpty()) {
        dbset_change_hook(nullptr, nullptr);
    }
}

UndoStep *UndoHistory::stepAt(int index) const
{
    // The stack hands out constant commands; all of them are ours.
    return const_cast<UndoStep *>(static_cast<const UndoStep *>(m_stack.command(index)));
}

// ---- Taking changes in
// -------------------------------------------------------------------------------------

void UndoHistory::hook(const DbChange *change, void *)
{
    if (UndoHistory *history = histories().value(change->place.database)) {
        history->take(*change);
    }
}

// The table is locked meanwhile, so that nothing more than this is done; the rest follows from the event
// loop.
void UndoHistory::take(const DbChange &change)
{
    m_announce.start();
    if (change.kind == dbCHANGED_NUMBERS) {
        dropFromAll([&](UndoStep &step) { step.dropTable(change.place.table); });
        return;
    }
    const bool isNew = m_latest == nullptr || m_latest->number() != change.step || m_stack.canRedo();
    if (isNew) {
        m_latest = new UndoStep(change.step);
        m_stack.push(m_latest); // what could be redone is gone now
    }
    if (!m_latest->isObsolete() && !m_latest->add(change)) {
        m_isBroken = true;
    }
}

template <typename Drop>
void UndoHistory::dropFromAll(Drop drop)
{
    for (int index = 0; index < m_stack.count(); ++index) {
        drop(*stepAt(index));
    }
}

// Steps that have ended go when they are next in turn: the stack lets none go from its middle.
void UndoHistory::purge()
{
    while (m_stack.canUndo() && stepAt(m_stack.index() - 1)->isObsolete()) {
        m_stack.undo();
        m_latest = nullptr;
    }
    while (m_stack.canRedo() && stepAt(m_stack.index())->isObsolete()) {
        m_stack.redo();
    }
}

bool UndoHistory::hasStepsOf(qint64 table) const
{
    for (int index = 0; index < m_stack.count(); ++index) {
        if (!stepAt(index)->isObsolete() && stepAt(index)->tables().contains(table)) {
            return true;
        }
    }
    return false;
}

void UndoHistory::lookForNewNumbers()
{
    QSet<qint64> tables;
    dropFromAll([&](UndoStep &step) { tables.unite(step.tables()); });
    bool isChanged = false;
    for (const qint64 table : tables) {
        int64_t numbering = 0;
        if (dbquery(Dbptr{m_database, table, dbALL, dbALL}, dbTABLE_NUMBERING, &numbering) < 0) {
            continue;
        }
        dropFromAll([&](UndoStep &step) {
            const qint64 before = step.values();
            step.dropTable(table, numbering);
            isChanged = isChanged || step.values() != before;
        });
    }
    if (!isChanged) {
        return;
    }
    purge();
    emit message(OvTranslation::tr("Another program has crunched or replaced a table: what was changed in it "
                                   "before can't be undone any more."));
    emit changed();
}

// ---- There and back
// ----------------------------------------------------------------------------------------

void UndoHistory::undo()
{
    move(true);
}

void UndoHistory::redo()
{
    move(false);
}

void UndoHistory::told(const UndoStep &step, bool back)
{
    if (step.leftAlone() == 0) {
        return;
    }
    const char *text =
        step.leftAlone() == step.values()
            ? (back ? OvTranslation::noop("Nothing was undone of \"%1\": the records hold something else by "
                                          "now. Another program may have changed them.")
                    : OvTranslation::noop(
                          "Nothing was done again of \"%1\": the records hold something else by "
                          "now. Another program may have changed them."))
            : OvTranslation::noop("%2 of %3 values of \"%1\" were left as they are: they are others by now. "
                                  "Another program may have changed them.");
    emit message(OvTranslation::tr(text)
                     .replace("%2", counted(step.leftAlone()))
                     .replace("%3", counted(step.values()))
                     .replace("%1", step.text()));
}

void UndoHistory::move(bool back)
{
    purge();
    if (back ? !m_stack.canUndo() : !m_stack.canRedo()) {
        return;
    }
    m_latest = nullptr; // nothing is added to a step that was undone
    UndoStep &step = *stepAt(back ? m_stack.index() - 1 : m_stack.index());
    const QString text = step.text();
    const UndoStep::Outcome outcome = back ? step.takeBack() : step.doAgain();
    const QString reason = step.reason();
    switch (outcome) {
    case UndoStep::Outcome::Done:
    case UndoStep::Outcome::Nothing:
        told(step, back);
        step.setObsolete(outcome == UndoStep::Outcome::Nothing);
        back ? m_stack.undo() : m_stack.redo();
        purge();
        break;
    case UndoStep::Outcome::Outdated:
        lookForNewNumbers();
        break;
    case UndoStep::Outcome::Cancelled:
        emit message(
            OvTranslation::tr("Stopped before \"%1\" was done. Do it once more for the rest.").arg(text));
        break;
    case UndoStep::Outcome::Failed:
        break;
    }
    emit recordsChanged();
    emit changed();
    if (outcome == UndoStep::Outcome::Failed) {
        const char *failed = back ? OvTranslation::noop("\"%1\" can't be undone: %2")
                                  : OvTranslation::noop("\"%1\" can't be done again: %2");
        throw std::runtime_error(OvTranslation::tr(failed).arg(text, reason).toStdString());
    }
}

// ---- Giving up
// ----------------------------------------------------------------------------------------------

quint64 UndoHistory::latestStep() const
{
    const UndoStep *latest = undoStep();
    return latest == nullptr ? 0 : latest->number();
}

QString UndoHistory::giveUpSince(quint64 since)
{
    if (latestStep() == since) {
        return {};
    }
    m_latest = nullptr;
    UndoStep &step = *stepAt(m_stack.index() - 1);
    const bool isKept = !step.isObsolete();
    const UndoStep::Outcome outcome = isKept ? step.takeBack() : UndoStep::Outcome::Failed;
    QString reason = outcome == UndoStep::Outcome::Cancelled
                         ? OvTranslation::tr("Putting back what was there was cancelled: Undo does the rest.")
                         : step.reason();
    if (outcome == UndoStep::Outcome::Done || outcome == UndoStep::Outcome::Nothing) {
        if (step.leftAlone() > 0) {
            reason = OvTranslation::tr("%1 values can't be put back: another program has changed them since.")
                         .arg(counted(step.leftAlone()));
        }
        step.setObsolete(true);
        m_stack.undo(); // which deletes it
    }
    purge();
    emit recordsChanged();
    emit changed();
    return reason;
}
