// Keeping one's place in a table that changes.
#include <orvanetableview.h>

#include <algorithm>

#include <QApplication>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QScrollBar>
#include <QTimer>

#include <orvane/tr.h>

#include <orvanetablemodel.h>
#include <qovutil.h>

#include "slot_guard.h"

namespace {

constexpr int mostNoted = 50; // of the rows selected; more lose their selection with another file

} // namespace

// The toolkit's connections are made by text, and find the model's own signal, which comes at every change of
// the table. What ends a selection or an open editor is the inherited one.
void OrvaneTableView::hearInheritedReset()
{
    const auto hear = [this](auto *listener, auto end) {
        disconnect(m_model, SIGNAL(modelReset()), listener, SLOT(reset()));
        connect(m_model, &QAbstractItemModel::modelReset, listener, end);
    };
    hear(this, &QAbstractItemView::reset);
    hear(horizontalHeader(), &QAbstractItemView::reset);
    hear(verticalHeader(), &QAbstractItemView::reset);
    hear(selectionModel(), &QItemSelectionModel::reset);
    connect(selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &OrvaneTableView::noteSelectionLater);
    connect(selectionModel(), &QItemSelectionModel::currentChanged, this,
            &OrvaneTableView::noteSelectionLater);
}

// A change of layout that somebody asked for leaves the view where it is, with the columns as wide as their
// hints say; any other shall not be noticed.
void OrvaneTableView::holdPlace()
{
    m_place = Place();
    if (m_model == nullptr || !m_model->isRefreshing()) {
        return;
    }
    const int top = rowAt(0);
    const QModelIndex current = currentIndex();
    const bool currentIsSeen = current.isValid() && visualRect(current).intersects(viewport()->rect());
    const int row = currentIsSeen ? current.row() : top;
    m_place.anchor = m_model->index(row, 0);
    m_place.offset = row - top;
    if (current.isValid()) {
        m_place.current = QPoint(current.column(), current.row());
    }
}

void OrvaneTableView::keepPlace()
{
    if (m_model == nullptr || !m_model->isRefreshing()) {
        resizeColumns();
        return;
    }
    loggingErrors("OrvaneTableView::keepPlace", [this] {
        const bool recordIsGone = m_place.current.y() >= 0 && !currentIndex().isValid();
        if (recordIsGone && viewport()->isAncestorOf(QApplication::focusWidget())) {
            // An editor that is hidden with the keyboard hands it on like the Tab key, and the toolkit would
            // go to a cell that nobody chose, and select it.
            setFocus();
        }
        if (m_place.anchor.isValid()) {
            executeDelayedItemsLayout();
            verticalScrollBar()->setValue(m_place.anchor.row() - m_place.offset);
        }
        if (recordIsGone) {
            // The view has not let go of all that it knew of the record yet.
            QTimer::singleShot(0, this, SLOT(standWhereTheRecordWas()));
        }
    });
}

// The keyboard goes on there; nothing is selected.
void OrvaneTableView::standWhereTheRecordWas()
{
    loggingErrors("OrvaneTableView::standWhereTheRecordWas", [this] {
        if (m_model == nullptr || currentIndex().isValid()) {
            return;
        }
        executeDelayedItemsLayout(); // not from within the change of the current cell
        const int row = std::min(m_place.current.y(), m_model->rowCount() - 1);
        if (row >= 0) {
            selectionModel()->setCurrentIndex(m_model->index(row, m_place.current.x()),
                                              QItemSelectionModel::NoUpdate);
        }
    });
}

// A drag over many rows changes the selection again and again.
void OrvaneTableView::noteSelectionLater()
{
    if (!m_noting) {
        m_noting = true;
        QTimer::singleShot(0, this, SLOT(noteSelection()));
    }
}

void OrvaneTableView::noteSelection()
{
    m_noting = false;
    loggingErrors("OrvaneTableView::noteSelection", [this] {
        if (m_model == nullptr) {
            return;
        }
        QVector<int> rows;
        if (currentIndex().isValid()) {
            rows.append(currentIndex().row());
        }
        if (selectedRowCount() < mostNoted) {
            for (const RowRange &range : selectedRows()) {
                for (int row = range.first; row <= range.last; ++row) {
                    if (!rows.contains(row)) {
                        rows.append(row);
                    }
                }
            }
        }
        m_model->noteRows(this, rows);
    });
}

// Asked before rows are changed by their numbers: whether they stand for what the user has seen. If not, the
// table is read anew and the user told.
bool OrvaneTableView::isStillThere()
{
    if (m_model == nullptr) {
        return false;
    }
    if (m_model->isCurrent()) {
        return true;
    }
    emit m_model->modelReset();
    qovutil_showError(
        OvTranslation::tr("Another program has replaced the table '%1' since it was shown. Nothing was "
                          "changed. The table has been read anew: look at the rows and try again.")
            .arg(m_model->getTableName()),
        nullptr);
    return false;
}
