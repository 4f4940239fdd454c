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

void QListChooserWidget::addNames(const QList<QString> &names)
{
    QSet<QString> known;
    for (int row = 0; row < count(); ++row)
        known.insert(item(row)->text());
    QStringList added;
    for (const QString &name : names) {
        if (!known.contains(name))
            added.append(name);
        known.insert(name);
    }
    addItems(added);
    for (int i = 0; i < added.size(); ++i)
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
