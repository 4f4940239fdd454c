#include <qlistitemchooserdialog.h>

#include <utility>

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>

#include <orvane/tr.h>

#include "name_list.h"

QListItemChooserWidget::QListItemChooserWidget(QWidget *parent) : QListWidget(parent) {}

void QListItemChooserWidget::keyPressEvent(QKeyEvent *event)
{
    if (isRemovalKey(*event))
        removeSelectedItems(*this);
    else
        QListWidget::keyPressEvent(event);
}

QListItemChooserDialog::QListItemChooserDialog(QWidget *parent, QList<QString> names, QString label,
                                               Qt::WindowFlags flags)
    : QDialog(parent, flags), m_names(std::move(names))
{
    if (m_names.isEmpty())
        resize(240, 80); // the toolkit would open a large blank window
    else
        addWidgets(label);
}

void QListItemChooserDialog::addWidgets(const QString &label)
{
    m_list = new QListItemChooserWidget;
    m_list->setObjectName("names");
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    m_list->addItems(m_names);
    m_list->setAccessibleName(label);
    limitToUsableSize(*m_list);

    m_layout = new QGridLayout(this);
    m_label = new QLabel(label + OvTranslation::tr(":"));
    m_label->setObjectName("label");
    m_label->setTextFormat(Qt::PlainText);
    m_buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, Qt::Horizontal);
    m_buttons->setObjectName("buttons");
    int row = 0;
    for (QWidget *widget :
         {static_cast<QWidget *>(m_label), static_cast<QWidget *>(m_list), static_cast<QWidget *>(m_buttons)})
        m_layout->addWidget(widget, row++, 0);
    m_list->setFocus();
    resizeToNames(*this, *m_list, 1);

    connect(m_buttons, SIGNAL(accepted()), this, SLOT(accept()));
    connect(m_buttons, SIGNAL(rejected()), this, SLOT(reject()));
    connect(m_list, SIGNAL(itemDoubleClicked(QListWidgetItem *)), this, SLOT(accept()));
}

void QListItemChooserDialog::accept()
{
    const QList<QListWidgetItem *> selected = m_list ? m_list->selectedItems() : QList<QListWidgetItem *>();
    m_result = selected.isEmpty() ? QString() : selected.first()->text();
    QDialog::accept();
}

void QListItemChooserDialog::reject()
{
    m_result.clear();
    QDialog::reject();
}

QString QListItemChooserDialog::getListItem()
{
    return m_result;
}

QString QListItemChooserDialog::chooseItem(QWidget *parent, QList<QString> names, QString title,
                                           QString label, bool *ok, Qt::WindowFlags flags)
{
    QListItemChooserDialog dialog(parent, names, label, flags);
    dialog.setWindowTitle(title);
    const bool accepted = dialog.exec() == QDialog::Accepted;
    if (ok)
        *ok = accepted;
    return accepted ? dialog.getListItem() : QString();
}
