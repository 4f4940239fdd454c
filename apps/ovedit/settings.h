// What survives a restart: window geometry, databases opened recently, and what was chosen in the menus.
#ifndef OVEDIT_SETTINGS_H
#define OVEDIT_SETTINGS_H

#include <QByteArray>
#include <QSettings>
#include <QString>
#include <QStringList>

class OvConfig;

class Settings
{
public:
    static constexpr int mostRecent = 10;

    // The user's own settings.
    Settings();
    // The settings in a file of its own, for tests.
    explicit Settings(const QString &file);

    // Databases opened recently, the last one first, by absolute path.
    QStringList recentDatabases() const;
    void addRecentDatabase(const QString &path);
    void removeRecentDatabase(const QString &path);
    void clearRecentDatabases();

    QByteArray windowGeometry() const;
    void setWindowGeometry(const QByteArray &geometry);

    // The code of the language chosen; empty: as the environment asks.
    QString language() const;
    void setLanguage(const QString &code);

    QString lastFolder() const;
    void setLastFolder(const QString &folder);

    // Remembers the present value of a key that the user has just chosen. Only such keys are remembered, so
    // that a parameter file given for one run doesn't outlive it.
    void remember(const OvConfig &config, const QString &key);

    // Stores what was remembered; keys that the program doesn't know any more, and values that don't fit the
    // type of their key, are left out.
    void restore(OvConfig &config) const;

private:
    QSettings m_store;
};

#endif
