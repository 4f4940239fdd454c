// What a window shows before it has a database: how to open one.
#ifndef OVEDIT_START_PAGE_H
#define OVEDIT_START_PAGE_H

#include <QWidget>

class Settings;
class QListWidget;

class StartPage : public QWidget
{
    Q_OBJECT

public:
    explicit StartPage(const Settings &settings);

signals:
    void openRequested();
    void databaseChosen(const QString &path);

private:
    QListWidget *recentList(const Settings &settings);
};

#endif
