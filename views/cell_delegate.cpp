#include "cell_delegate.h"

#include <QAbstractItemView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QToolTip>

#include <orvane/tr.h>
#include <orvanetablemodel.h>

#include "slot_guard.h"

namespace {

constexpr const char *placeOfEditor = "orvane_index"; // property: the index that an editor is for

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

QWidget *CellDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &,
                                    const QModelIndex &index) const
{
    auto *editor = new QLineEdit(parent);
    editor->setFrame(false);
    editor->setProperty(placeOfEditor, QVariant::fromValue(QPersistentModelIndex(index)));
    connect(editor, &QLineEdit::textEdited, this, [this] { hideRefusal(); });
    return editor;
}

void CellDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    auto &line = static_cast<QLineEdit &>(*editor);
    if (!line.isModified()) { // a table that changes while one types keeps what is typed
        line.setText(index.data(Qt::DisplayRole).toString());
    }
}

bool CellDelegate::store(QWidget *editor) const
{
    bool stored = true;
    loggingErrors("CellDelegate::store", [&] {
        auto &line = static_cast<QLineEdit &>(*editor);
        const QModelIndex index = editor->property(placeOfEditor).value<QPersistentModelIndex>();
        auto *model = qobject_cast<OrvaneTableModel *>(m_view->model());
        if (!index.isValid() || model == nullptr || line.text() == index.data(Qt::DisplayRole).toString()) {
            return;
        }
        if (!m_refusal.isNull() && line.text() == m_refusedText) {
            stored = false; // told already
            return;
        }
        stored = model->setData(index, line.text(), Qt::EditRole);
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
    QStyledItemDelegate::destroyEditor(editor, index);
}

bool CellDelegate::eventFilter(QObject *watched, QEvent *event)
{
    auto *editor = qobject_cast<QLineEdit *>(watched);
    if (editor != nullptr && storesValue(*event) && !store(editor)) {
        return event->type() == QEvent::KeyPress; // the editor goes on, where it is left it stays open
    }
    return QStyledItemDelegate::eventFilter(watched, event);
}

void CellDelegate::tellRefusal(QWidget *editor, const QString &reason) const
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
    m_refusal->setText(OvTranslation::tr("Not stored: %1").arg(reason));
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
