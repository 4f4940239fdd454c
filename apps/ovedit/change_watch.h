// Notices at once when other programs change the tables of an open database.
#ifndef OVEDIT_CHANGE_WATCH_H
#define OVEDIT_CHANGE_WATCH_H

#include <QFileSystemWatcher>
#include <QObject>
#include <QStringList>
#include <QTimer>

class OrvaneDatabaseModel;
class OvConfig;

// The system tells of files and folders that change; then, and when its window comes to the front, the model
// looks at the times of its tables. Where the system tells nothing, as of network disks, the model's own
// timer goes on looking. Nothing is looked at while `update_interval_sec` is not above 0.
class ChangeWatch : public QObject
{
    Q_OBJECT

public:
    static constexpr int settleFor =
        200; // milliseconds, so that a program that writes a lot is looked at rarely

    // Both must outlive the watch.
    ChangeWatch(OrvaneDatabaseModel &model, OvConfig &config, QObject *parent);

    // Looks as soon as the event loop is next idle.
    void lookSoon();

private:
    bool isWanted() const;
    void noteChange();
    void look();
    void watchFiles();
    QStringList files() const;

    OrvaneDatabaseModel &m_model;
    OvConfig &m_config;
    QFileSystemWatcher m_system;
    QTimer m_look;
};

#endif
