// Typing letters in the table view.
#include <orvanetableview.h>

#include <algorithm>

#include <QApplication>
#include <QScopeGuard>

#include <orvane/db.h>

#include <orvanetablemodel.h>

#include "slot_guard.h"

namespace {

// Most wanted rows are near; those that are far are read in larger steps, and some milliseconds are between
// two chances to stop.
constexpr int rowsAtFirst = 64;
constexpr int rowsAtOnce = 4096;

bool isOneKey(const QString &typed)
{
    return typed.size() > 1 && typed.count(typed.back()) == typed.size();
}

} // namespace

// Goes to the next row that is shown to begin with what is typed, in the column where one is. The toolkit's
// own asks the model about all rows at once, and nobody could stop it.
void OrvaneTableView::keyboardSearch(const QString &search)
{
    loggingErrors("OrvaneTableView::keyboardSearch", [&] {
        if (m_model == nullptr || m_model->rowCount() == 0 || m_typed.searching) {
            return;
        }
        const bool goesOn = !search.isEmpty() && m_typed.since.isValid() &&
                            m_typed.since.elapsed() <= QApplication::keyboardInputInterval();
        if (!goesOn) {
            m_typed = Typed();
        }
        m_typed.text += search;
        if (m_typed.text.isEmpty()) {
            return;
        }
        const bool leavesRow = currentIndex().isValid() && (!goesOn || isOneKey(m_typed.text));
        // What has been found nowhere is not looked for again with more behind it.
        const QPointer<OrvaneTableView> self = this; // a long search may let events through
        if (!m_typed.nowhere && !goToTyped(leavesRow)) {
            return;
        }
        if (self != nullptr) {
            m_typed.since.start(); // keys wait while it is searched
        }
    });
}

// False where the view or its model are gone.
bool OrvaneTableView::goToTyped(bool leavesRow)
{
    const QPointer<OrvaneTableView> self = this;
    const QPointer<OrvaneTableModel> table = m_model;
    const QModelIndex current = currentIndex();
    const int column = current.isValid() ? current.column() : columnAt(0);
    const int start = current.isValid() ? current.row() + (leavesRow ? 1 : 0) : 0;
    if (column < 0) {
        return true;
    }
    m_typed.searching = true;
    const auto done = qScopeGuard([&self] {
        if (self != nullptr) {
            self->m_typed.searching = false;
        }
    });
    const QString wanted = m_typed.text;
    const int rows = m_model->rowCount();
    int row = -1;
    bool cancelled = false;
    int step = rowsAtFirst;
    // To the end, and from the first row to where it began.
    for (qint64 past = 0; past < rows && row < 0 && !cancelled;) {
        const int first = static_cast<int>((start + past) % rows);
        const int end = static_cast<int>(std::min<qint64>({first + step, rows, first + rows - past}));
        const QStringList texts = m_model->displayedTexts({column}, first, end);
        const auto found = std::find_if(texts.begin(), texts.end(), [&wanted](const QString &text) {
            return text.startsWith(wanted, Qt::CaseInsensitive);
        });
        row = found == texts.end() ? -1 : first + static_cast<int>(found - texts.begin());
        past += end - first;
        step = std::min(2 * step, rowsAtOnce);
        cancelled = dbreport_progress("dbfind", static_cast<double>(past) / rows) != 0;
        if (self == nullptr || table == nullptr || m_model != table) {
            return false;
        }
    }
    m_typed.nowhere = row < 0;
    if (row >= 0 && !cancelled) {
        setCurrentIndex(m_model->index(row, column));
    }
    return true;
}
