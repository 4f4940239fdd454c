#include "change_watch.h"

#include <memory>
#include <set>

#include <QFileInfo>

#include <orvanedatabasemodel.h>
#include <ovconfig.h>
#include <qdbptr.h>

ChangeWatch::ChangeWatch(OrvaneDatabaseModel &model, OvConfig &config, QObject *parent)
    : QObject(parent), m_model(model), m_config(config)
{
    m_look.setSingleShot(true);
    connect(&m_look, &QTimer::timeout, this, &ChangeWatch::look);
    connect(&m_system, &QFileSystemWatcher::fileChanged, this, &ChangeWatch::noteChange);
    connect(&m_system, &QFileSystemWatcher::directoryChanged, this, &ChangeWatch::noteChange);
    connect(&config, &OvConfig::configurationChanged, this, &ChangeWatch::watchFiles);
    watchFiles();
}

bool ChangeWatch::isWanted() const
{
    return m_config["update_interval_sec"].toDouble() > 0;
}

void ChangeWatch::lookSoon()
{
    if (isWanted()) {
        m_look.start(0);
    }
}

// Not started anew by each change, or one that goes on and on would put the look off for ever.
void ChangeWatch::noteChange()
{
    if (isWanted() && !m_look.isActive()) {
        m_look.start(settleFor);
    }
}

void ChangeWatch::look()
{
    m_model.checkForUpdates();
    watchFiles();
}

// The folders tell of files that come, go and are replaced; a file alone tells that it is written to. One
// that was replaced is not watched any more.
void ChangeWatch::watchFiles()
{
    const QStringList now = isWanted() ? files() : QStringList();
    const QStringList before = m_system.files() + m_system.directories();
    QStringList come, gone;
    const std::set<QString> nowSet(now.begin(), now.end()), beforeSet(before.begin(), before.end());
    for (const QString &path : nowSet) {
        if (beforeSet.count(path) == 0) {
            come.append(path);
        }
    }
    for (const QString &path : beforeSet) {
        if (nowSet.count(path) == 0) {
            gone.append(path);
        }
    }
    if (!gone.isEmpty()) {
        m_system.removePaths(gone);
    }
    if (!come.isEmpty()) {
        m_system.addPaths(come); // those that the system can't watch are left to the timer
    }
}

QStringList ChangeWatch::files() const
{
    QStringList paths;
    if (!m_model.isOpen()) {
        return paths;
    }
    try {
        for (const QString &name : m_model.getTableNames()) {
            const std::unique_ptr<QDbptr> table(m_model.getQDbptr()->lookupTable(name));
            paths.append(QFileInfo(table->getTableFilename()).absoluteFilePath());
        }
        for (const QString &folder : m_model.getQDbptr()->getDbPath().split(':', Qt::SkipEmptyParts)) {
            const QFileInfo found(QFileInfo(folder).isAbsolute()
                                      ? folder
                                      : QFileInfo(m_model.getQDbptr()->getDatabaseAbspath()).absolutePath() +
                                            "/" + folder);
            if (found.isDir()) {
                paths.append(found.absoluteFilePath());
            }
        }
    } catch (const std::exception &) {
        paths.clear(); // the timer looks
    }
    return paths;
}
