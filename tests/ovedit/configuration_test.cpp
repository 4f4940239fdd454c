#include "configuration.h"

#include <QFile>
#include <QFont>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <ovconfig.h>

namespace {

class Configuration : public testing::Test
{
protected:
    Configuration() { registerKnownKeys(config); }

    QString load(const QByteArray &text)
    {
        QFile file(folder.filePath("settings.yaml"));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        file.close();
        return loadParameterFile(config, file.fileName());
    }

    QTemporaryDir folder;
    OvConfig config;
};

TEST_F(Configuration, leavesWhatTheHostHasSetBefore)
{
    OvConfig mine;
    mine.configure("show_tooltips", false);
    registerKnownKeys(mine);
    EXPECT_EQ(mine["show_tooltips"], QVariant(false));
    EXPECT_EQ(mine["show_raw_nulls"], QVariant(false));
}

TEST_F(Configuration, convertsTheTextsOfAParameterFileToTheTypesOfTheirKeys)
{
    EXPECT_EQ(load("show_tooltips: no\nshow_raw_nulls: yes\nfont_size_points: 12\nupdate_interval_sec: 2.5\n"
                   "local_time_zone: Europe/Oslo\ndefault_table: {css3.0: origin}\nmine: no\n"),
              "");
    EXPECT_EQ(config["show_tooltips"], QVariant(false));
    EXPECT_EQ(config["show_raw_nulls"], QVariant(true));
    EXPECT_EQ(config["font_size_points"], QVariant(12));
    EXPECT_EQ(config["update_interval_sec"], QVariant(2.5));
    EXPECT_EQ(config["local_time_zone"], QVariant("Europe/Oslo"));
    EXPECT_EQ(config["default_table"].toMap().value("css3.0"), QVariant("origin"));
    EXPECT_EQ(config["mine"], QVariant("no"));
}

TEST_F(Configuration, keepsAValueThatTheFileGivesWrongly)
{
    EXPECT_EQ(load("font_size_points: large\n"), "");
    EXPECT_EQ(config["font_size_points"], QVariant(10));
}

TEST_F(Configuration, saysWhichFileCantBeReadAndStoresNothing)
{
    const QString missing = folder.filePath("missing.yaml");
    EXPECT_TRUE(loadParameterFile(config, missing).contains(missing));
    const QString reason = load("show_tooltips: [no\nfont_size_points: 30\n");
    EXPECT_TRUE(reason.contains("settings.yaml")) << reason.toStdString();
    EXPECT_EQ(config["show_tooltips"], QVariant(true));
    EXPECT_EQ(config["font_size_points"], QVariant(10));
}

TEST_F(Configuration, keepsTheFontWithinItsRange)
{
    QFont font("monospace", 10);
    config.configure("font", font);
    setFontSize(config, 14);
    EXPECT_EQ(config["font"].value<QFont>().pointSize(), 14);
    EXPECT_EQ(config["font_size_points"], QVariant(14));
    setFontSize(config, 1000);
    EXPECT_EQ(config["font"].value<QFont>().pointSize(), 72);
    setFontSize(config, -3);
    EXPECT_EQ(config["font_size_points"], QVariant(4));
}

TEST_F(Configuration, hasOnlySwitchesThatCanBeFlipped)
{
    for (const auto &switches : {viewSwitches(), saveSwitches()}) {
        ASSERT_FALSE(switches.empty());
        for (const Switch &known : switches) {
            const bool before = config[known.key].toBool();
            EXPECT_EQ(config.toggle(known.key), !before) << known.key;
        }
    }
}

} // namespace
