#include "settings.h"

#include <ovconfig.h>

#include "configuration.h"

namespace {

const QString recentKey = QStringLiteral("recentDatabases");
const QString geometryKey = QStringLiteral("window/geometry");
const QString languageKey = QStringLiteral("language");
const QString folderKey = QStringLiteral("lastFolder");
const QString chosenGroup = QStringLiteral("chosen/");

} // namespace

Settings::Settings() : m_store("Orvane", "ovedit") {}

Settings::Settings(const QString &file) : m_store(file, QSettings::IniFormat) {}

QStringList Settings::recentDatabases() const
{
    return m_store.value(recentKey).toStringList();
}

void Settings::addRecentDatabase(const QString &path)
{
    QStringList recent = recentDatabases();
    recent.removeAll(path);
    recent.prepend(path);
    m_store.setValue(recentKey, QStringList(recent.mid(0, mostRecent)));
}

void Settings::removeRecentDatabase(const QString &path)
{
    QStringList recent = recentDatabases();
    recent.removeAll(path);
    m_store.setValue(recentKey, recent);
}

void Settings::clearRecentDatabases()
{
    m_store.remove(recentKey);
}

QByteArray Settings::windowGeometry() const
{
    return m_store.value(geometryKey).toByteArray();
}

void Settings::setWindowGeometry(const QByteArray &geometry)
{
    m_store.setValue(geometryKey, geometry);
}

QString Settings::language() const
{
    return m_store.value(languageKey).toString();
}

void Settings::setLanguage(const QString &code)
{
    if (code.isEmpty()) {
        m_store.remove(languageKey);
    } else {
        m_store.setValue(languageKey, code);
    }
}

QString Settings::lastFolder() const
{
    return m_store.value(folderKey).toString();
}

void Settings::setLastFolder(const QString &folder)
{
    m_store.setValue(folderKey, folder);
}

void Settings::remember(const OvConfig &config, const QString &key)
{
    m_store.setValue(chosenGroup + key, config[key]);
}

void Settings::restore(OvConfig &config) const
{
    for (const KnownKey &known : knownKeys()) {
        QVariant chosen = m_store.value(chosenGroup + known.key);
        if (chosen.isValid() && chosen.convert(known.value.userType())) {
            config.configure(known.key, chosen);
        }
    }
}
