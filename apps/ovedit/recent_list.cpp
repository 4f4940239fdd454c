#include "recent_list.h"

#include <QDir>
#include <QFileInfo>

namespace {

constexpr int pathRole = Qt::UserRole;

}

QListWidget *makeRecentList(const QStringList &paths)
{
    auto *list = new QListWidget;
    for (const QString &path : paths) {
        const QFileInfo file(path);
        auto *item = new QListWidgetItem(
            QString::fromUtf8("%1  \u2014  %2").arg(file.fileName(), QDir::toNativeSeparators(file.path())),
            list);
        item->setData(pathRole, path);
        item->setToolTip(QDir::toNativeSeparators(path));
    }
    list->setTextElideMode(Qt::ElideMiddle);
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    return list;
}

QString pathOf(const QListWidgetItem &item)
{
    return item.data(pathRole).toString();
}
