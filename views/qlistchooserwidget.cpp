#include <qlistchooserdialog.h>

#include <QDropEvent>
#include <QKeyEvent>
#include <QSet>

#include "name_list.h"

QListChooserWidget::QListChooserWidget(QWidget *parent) : QListWidget(parent) {}

void QListChooserWidget::addItem(QListWidgetItem *item)
{
    if (!item || !findItems(item->text(), Qt::MatchFixedString | Qt::MatchCaseSensitive).isEmpty())
        return;
    QListWidget::addItem(item->text());
    emit itemAdded();
}

void QListChooserWidget::keyPressEvent(QKeyEvent *event)
{
    if (!isRemovalKey(*event)) {
        QListWidget::keyPressEvent(event);
        return;
    }
    removeSelectedItems(*this);
    if (count() == 0)
        emit lastItemRemoved();
}

void QListChooserWidget::dropEvent(QDropEvent *event)
{
    QListWidget::dropEvent(event);
    if (event->source() != this)
        event->setDropAction(Qt::CopyAction); // a drag that ends as a move would empty the list it came from

    QSet<QString> seen;
    for (int row = 0; row < count();) {
        const QString name = item(row)->text();
        if (seen.contains(name)) {
            delete takeItem(row);
            continue;
        }
        seen.insert(name);
        ++row;
        emit itemAdded();
    }
}
