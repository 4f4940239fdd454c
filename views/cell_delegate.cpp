#include "cell_delegate.h"

#include <QAbstractItemView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QScopedValueRollback>
#include <QTimer>
#include <QToolTip>

#include <orvane/db.h>
#include <orvane/tr.h>
#include <orvanetablemodel.h>
#include <qovutil.h>

#include "cell_ground.h"
#include "slot_guard.h"

namespace {

constexpr const char *placeOfEditor = "orvane_index"; // property: the index that an editor is for
constexpr const char *storedText = "orvane_stored";   // property: what its cell showed last

// Keys by which an editor is left with its value stored.
bool storesValue(const QEvent &event)
{
    if (event.type() == QEvent::FocusOut) {
        return true;
    }
    if (event.type() != QEvent::KeyPress) {
        return false;
    }
    switch (static_cast<const QKeyEvent &>(event).key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        return true;
    default:
        return false;
    }
}

} // namespace

CellDelegate::CellDelegate(QAbstractItemView *view) : QStyledItemDelegate(view), m_view(view) {}

void CellDelegate::initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    option->backgroundBrush = groundIn(option->palette, option->backgroundBrush);
}

QWidget *CellDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &,
                                    const QModelIndex &index) const
{
    auto *editor = new QLineEdit(parent);
    editor->setFrame(false);
    editor->setProperty(placeOfEditor, QVariant::fromValue(QPersistentModelIndex(index)));
    connect(editor, &QLineEdit::textEdited, this, [this] { hideRefusal(); });
    return editor;
}

// Called anew when the table changes while one types: what is typed stays, and what is stored is told.
void CellDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    auto &line = static_cast<QLineEdit &>(*editor);
    const QString stored = index.data(Qt::DisplayRole).toString();
    if (!line.isModified()) {
        line.setText(stored);
    } else if (!m_storing && stored != editor->property(storedText).toString()) {
        tell(editor,
             OvTranslation::tr("Changed meanwhile: '%1' is stored now. Enter replaces it by what you typed, "
                               "Escape leaves it.")
                 .arg(stored));
    }
    editor->setProperty(storedText, stored);
}

bool CellDelegate::store(QWidget *editor) const
{
    bool stored = true;
    loggingErrors("CellDelegate::store", [&] {
        auto &line = static_cast<QLineEdit &>(*editor);
        const QModelIndex index = editor->property(placeOfEditor).value<QPersistentModelIndex>();
        auto *model = qobject_cast<OrvaneTableModel *>(m_view->model());
        if (!index.isValid() && model != nullptr && line.isModified()) {
            stored = false; // destroyEditor() tells
            return;
        }
        if (!index.isValid() || model == nullptr || line.text() == index.data(Qt::DisplayRole).toString()) {
            return;
        }
        if (!m_refusal.isNull() && line.text() == m_refusedText) {
            stored = false; // told already
            return;
        }
        {
            const QScopedValueRollback<bool> storing(m_storing, true);
            stored = model->setData(index, line.text(), Qt::EditRole);
        }
        if (stored) {
            line.setText(index.data(Qt::DisplayRole).toString()); // closing the editor stores nothing more
        } else {
            m_refusedText = line.text();
            tellRefusal(editor, model->editError());
        }
    });
    return stored;
}

// Storing is done before the editor is closed, by eventFilter(): whether it stays open depends on it.
void CellDelegate::setModelData(QWidget *editor, QAbstractItemModel *, const QModelIndex &) const
{
    store(editor);
}

void CellDelegate::destroyEditor(QWidget *editor, const QModelIndex &index) const
{
    hideRefusal();
    const auto &line = static_cast<QLineEdit &>(*editor);
    if (!index.isValid() && line.isModified() &&
        qobject_cast<OrvaneTableModel *>(m_view->model()) != nullptr) {
        const QString text =
            OvTranslation::tr(
                "The record that was being changed is gone: another program removed it or replaced "
                "the table. Not stored was what had been typed:") +
            "\n\n" + line.text();
        // Not from within the change that is being told.
        QTimer::singleShot(0, m_view, [text] { qovutil_showError(text, nullptr); });
    }
    QStyledItemDelegate::destroyEditor(editor, index);
}

bool CellDelegate::eventFilter(QObject *watched, QEvent *event)
{
    auto *editor = qobject_cast<QLineEdit *>(watched);
    // What takes long shows a window of its own, which takes the keyboard: the editor is not left by that.
    if (event->type() == QEvent::FocusOut && (m_storing || dbprogress_operation() != nullptr)) {
        return false;
    }
    // Asked for again it is tried again: the reason may be gone, as there is room on the disk by now.
    if (editor != nullptr && storesValue(*event) && event->type() == QEvent::KeyPress) {
        hideRefusal();
    }
    if (editor != nullptr && storesValue(*event) && !store(editor)) {
        return event->type() == QEvent::KeyPress; // the editor goes on, where it is left it stays open
    }
    return QStyledItemDelegate::eventFilter(watched, event);
}

void CellDelegate::tellRefusal(QWidget *editor, const QString &reason) const
{
    tell(editor, OvTranslation::tr("Not stored: %1").arg(reason));
}

void CellDelegate::tell(QWidget *editor, const QString &text) const
{
    if (m_refusal.isNull()) {
        m_refusal = new QLabel(m_view->viewport());
        m_refusal->setObjectName("refusal");
        m_refusal->setTextFormat(Qt::PlainText);
        m_refusal->setWordWrap(true);
        m_refusal->setMargin(4);
        m_refusal->setFrameShape(QFrame::Box);
        m_refusal->setAutoFillBackground(true);
        m_refusal->setPalette(QToolTip::palette());
        m_refusal->setBackgroundRole(QPalette::ToolTipBase);
        m_refusal->setForegroundRole(QPalette::ToolTipText);
    }
    const QRect cell = editor->geometry();
    const QRect room = m_view->viewport()->rect();
    m_refusal->setText(text);
    m_refusal->setMaximumWidth(room.width());
    m_refusal->adjustSize();
    // Below the cell, or above it where there is no room below.
    QPoint place(qMin(cell.left(), room.right() - m_refusal->width()), cell.bottom() + 2);
    if (place.y() + m_refusal->height() > room.bottom()) {
        place.setY(cell.top() - m_refusal->height() - 2);
    }
    m_refusal->move(qMax(0, place.x()), qMax(0, place.y()));
    m_refusal->show();
    m_refusal->raise();
}

void CellDelegate::hideRefusal() const
{
    if (!m_refusal.isNull()) {
        delete m_refusal.data();
    }
}
