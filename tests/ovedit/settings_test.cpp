#include "settings.h"

#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <ovconfig.h>

#include "configuration.h"

namespace {

class StoredSettings : public testing::Test
{
protected:
    QString file() const { return folder.filePath("ovedit.conf"); }

    QTemporaryDir folder;
};

TEST_F(StoredSettings, putTheLastDatabaseFirstAndKeepEachOnce)
{
    Settings settings(file());
    for (const char *path : {"/a", "/b", "/c", "/a"}) {
        settings.addRecentDatabase(path);
    }
    EXPECT_EQ(settings.recentDatabases(), (QStringList{"/a", "/c", "/b"}));
    settings.removeRecentDatabase("/c");
    EXPECT_EQ(settings.recentDatabases(), (QStringList{"/a", "/b"}));
    settings.clearRecentDatabases();
    EXPECT_TRUE(settings.recentDatabases().isEmpty());
}

TEST_F(StoredSettings, keepTheLanguageChosen)
{
    EXPECT_EQ(Settings(file()).language(), "");
    Settings(file()).setLanguage("de");
    EXPECT_EQ(Settings(file()).language(), "de");
    Settings(file()).setLanguage(QString());
    EXPECT_EQ(Settings(file()).language(), "");
}

TEST_F(StoredSettings, keepABoundedNumberOfDatabases)
{
    Settings settings(file());
    for (int i = 0; i < 30; ++i) {
        settings.addRecentDatabase(QString("/db%1").arg(i));
    }
    EXPECT_EQ(settings.recentDatabases().size(), Settings::mostRecent);
    EXPECT_EQ(settings.recentDatabases().first(), "/db29");
}

TEST_F(StoredSettings, surviveARestart)
{
    {
        Settings settings(file());
        OvConfig config;
        registerKnownKeys(config);
        config.toggle("show_tooltips");
        config.configure("font_size_points", 17);
        config.configure("update_interval_sec", 30.5);
        config.configure("local_time_zone", "Asia/Tokyo");
        config.toggle("show_raw_nulls");
        for (const char *key :
             {"show_tooltips", "font_size_points", "update_interval_sec", "local_time_zone"}) {
            settings.remember(config, key);
        }
        settings.setWindowGeometry("somewhere");
        settings.addRecentDatabase("/a");
        settings.setLastFolder("/data");
    }
    const Settings settings(file());
    OvConfig config;
    registerKnownKeys(config);
    settings.restore(config);
    EXPECT_EQ(config["show_tooltips"], QVariant(false));
    EXPECT_EQ(config["font_size_points"], QVariant(17));
    EXPECT_EQ(config["update_interval_sec"], QVariant(30.5));
    EXPECT_EQ(config["local_time_zone"], QVariant("Asia/Tokyo"));
    EXPECT_EQ(config["show_raw_nulls"], QVariant(false)) << "it was not remembered";
    EXPECT_EQ(settings.windowGeometry(), "somewhere");
    EXPECT_EQ(settings.recentDatabases(), QStringList{"/a"});
    EXPECT_EQ(settings.lastFolder(), "/data");
}

TEST_F(StoredSettings, leaveOutWhatTheProgramDoesntUnderstand)
{
    {
        QSettings store(file(), QSettings::IniFormat);
        store.setValue("chosen/font_size_points", "huge");
        store.setValue("chosen/gone", true);
    }
    OvConfig config;
    registerKnownKeys(config);
    Settings(file()).restore(config);
    EXPECT_EQ(config["font_size_points"], QVariant(10));
    EXPECT_FALSE(config.hasKey("gone"));
}

} // namespace
