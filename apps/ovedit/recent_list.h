// A list of databases opened recently: name first, its folder after it.
#ifndef OVEDIT_RECENT_LIST_H
#define OVEDIT_RECENT_LIST_H

#include <QListWidget>
#include <QStringList>

// A new list without parent, for the caller to own.
QListWidget *makeRecentList(const QStringList &paths);

// The absolute path of an entry.
QString pathOf(const QListWidgetItem &item);

#endif
