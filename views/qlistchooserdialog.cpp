#include <qlistchooserdialog.h>

#include <algorithm>
#include <utility>

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>

#include <orvane/tr.h>

#include "name_list.h"

namespace {

constexpr int sourceColumn = 0;
constexpr int chosenColumn = 1;
constexpr int listRow = 1; // below the labels

QList<QString> textsOf(const QListWidget &list)
{
    QList<QString> texts;
    for (int row = 0; row < list.count(); ++row)
        texts.append(list.item(row)->text());
    return texts;
}

QLabel *captionOf(QListWidget *list, const char *text)
{
    const QString name = OvTranslation::tr(text);
    auto *label = new QLabel(name + OvTranslation::tr(":"));
    label->setBuddy(list); // readers of the screen name the list after it
    return label;
}

QPushButton *listButton(const char *name, const char *text)
{
    auto *button = new QPushButton(OvTranslation::tr(text));
    button->setObjectName(name);
    button->setAutoDefault(false); // Enter means OK wherever the focus is
    return button;
}

QCheckBox *option(const char *name, const char *text)
{
    auto *box = new QCheckBox(OvTranslation::tr(text));
    box->setObjectName(name);
    return box;
}

} // namespace

QListChooserDialog::QListChooserDialog(QWidget *parent, QList<QString> names, bool *reverse, bool *unique,
                                       Qt::WindowFlags flags)
    : QDialog(parent, flags), m_names(std::move(names)), m_reverse(reverse), m_unique(unique),
      m_layout(new QGridLayout(this))
{
    addLists();
    addListButtons();
    if (m_reverse != nullptr && m_unique != nullptr)
        addOptions();
    addButtonBox();
    wire();
    disableOK();
    resizeToNames(*this, *m_source, 2);
}

void QListChooserDialog::addLists()
{
    m_source = new QListWidget;
    m_source->setObjectName("fields");
    m_source->setDragDropMode(QAbstractItemView::DragOnly);
    m_source->setToolTip(OvTranslation::tr("Double-click, press Enter or drag to choose a name"));
    m_source->addItems(m_names);

    m_chosen = new QListChooserWidget;
    m_chosen->setObjectName("chosen");
    m_chosen->setDragDropMode(QAbstractItemView::DragDrop);
    m_chosen->setDefaultDropAction(Qt::MoveAction);
    m_chosen->setToolTip(OvTranslation::tr("Drag to change the order, press Delete to take a name out"));

    for (QListWidget *list : {m_source, static_cast<QListWidget *>(m_chosen)}) {
        list->setSelectionMode(QAbstractItemView::ExtendedSelection);
        limitToUsableSize(*list);
        const int column = list == m_source ? sourceColumn : chosenColumn;
        m_layout->addWidget(
            captionOf(list, list == m_source ? OvTranslation::noop("Fields") : OvTranslation::noop("Chosen")),
            0, column);
        m_layout->addWidget(list, listRow, column);
        m_layout->setColumnStretch(column, 1);
    }
    m_layout->setRowStretch(listRow, 1);
}

void QListChooserDialog::addListButtons()
{
    QPushButton *chooseAll = listButton("chooseAll", OvTranslation::noop("Choose all"));
    QPushButton *clear = listButton("clearAll", OvTranslation::noop("Clear all"));
    m_layout->addWidget(chooseAll, listRow + 1, sourceColumn);
    m_layout->addWidget(clear, listRow + 1, chosenColumn);
    connect(chooseAll, SIGNAL(clicked()), this, SLOT(selectAll()));
    connect(clear, SIGNAL(clicked()), this, SLOT(clearAll()));
}

void QListChooserDialog::addOptions()
{
    m_reverseBox = option("reverse", OvTranslation::noop("Reverse"));
    m_uniqueBox = option("unique", OvTranslation::noop("Unique"));
    m_layout->addWidget(m_reverseBox, listRow + 2, sourceColumn);
    m_layout->addWidget(m_uniqueBox, listRow + 2, chosenColumn);
}

void QListChooserDialog::addButtonBox()
{
    m_buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, Qt::Horizontal);
    m_buttons->setObjectName("buttons");
    m_buttons->button(QDialogButtonBox::Ok)->setDefault(true);
    m_layout->addWidget(m_buttons, m_layout->rowCount(), 0, 1, m_layout->columnCount());
}

void QListChooserDialog::wire()
{
    connect(m_source, SIGNAL(itemDoubleClicked(QListWidgetItem *)), m_chosen,
            SLOT(addItem(QListWidgetItem *)));
    connect(m_chosen, SIGNAL(itemAdded()), this, SLOT(enableOK()));
    connect(m_chosen, SIGNAL(lastItemRemoved()), this, SLOT(disableOK()));
    connect(m_buttons, SIGNAL(accepted()), this, SLOT(accept()));
    connect(m_buttons, SIGNAL(rejected()), this, SLOT(reject()));

    // A list made shorter is a changed list as well: without this no name could be taken out of those that
    // the dialog began with.
    connect(m_chosen->model(), &QAbstractItemModel::rowsRemoved, this,
            [this] { m_chosen->count() > 0 ? enableOK() : disableOK(); });
    m_source->installEventFilter(this);
}

void QListChooserDialog::enableOK()
{
    m_buttons->buttons().at(0)->setEnabled(true);
}

void QListChooserDialog::disableOK()
{
    m_buttons->buttons().at(0)->setEnabled(false);
}

void QListChooserDialog::selectAll()
{
    clearAll();
    m_chosen->addItems(m_names);
    enableOK();
}

void QListChooserDialog::clearAll()
{
    m_chosen->clear();
    m_result.clear();
    disableOK();
}

void QListChooserDialog::setFiltered(QList<QString> names)
{
    clearAll();
    m_chosen->addItems(names);
}

void QListChooserDialog::accept()
{
    m_result = textsOf(*m_chosen);
    if (m_reverse && m_unique) {
        *m_reverse = m_reverseBox->checkState() != Qt::Unchecked;
        *m_unique = m_uniqueBox->checkState() != Qt::Unchecked;
    }
    QDialog::accept();
}

void QListChooserDialog::reject()
{
    m_result.clear();
    QDialog::reject();
}

QList<QString> QListChooserDialog::getListValue()
{
    return m_result;
}

bool QListChooserDialog::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_source && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if ((key == Qt::Key_Return || key == Qt::Key_Enter) && chooseSelected())
            return true;
    }
    return QDialog::eventFilter(watched, event);
}

// Adds the offered names that are selected, or else the current one, and tells whether any was new: with
// nothing to add, Enter is left to the OK button.
bool QListChooserDialog::chooseSelected()
{
    QModelIndexList selected = m_source->selectionModel()->selectedIndexes();
    std::sort(selected.begin(), selected.end()); // from top to bottom, however they were selected
    if (selected.isEmpty())
        selected.append(m_source->currentIndex());
    QList<QString> names;
    for (const QModelIndex &name : qAsConst(selected))
        if (name.isValid())
            names.append(name.data().toString());

    const int before = m_chosen->count();
    m_chosen->addNames(names);
    return m_chosen->count() > before;
}

QList<QString> QListChooserDialog::modifyList(QWidget *parent, QList<QString> names, QList<QString> current,
                                              QString title, bool *ok, bool *reverse, bool *unique,
                                              Qt::WindowFlags flags)
{
    QListChooserDialog dialog(parent, names, reverse, unique, flags);
    dialog.setFiltered(current);
    dialog.setWindowTitle(title);
    const bool accepted = dialog.exec() == QDialog::Accepted;
    if (ok)
        *ok = accepted;
    return accepted ? dialog.getListValue() : current;
}
