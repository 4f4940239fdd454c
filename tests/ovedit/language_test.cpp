// The language that the program speaks: asked for, chosen in the menu, or the environment's.
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QProcess>
#include <QSettings>

#include <orvane/language.h>

#include "running_program.h"

namespace {

class Language : public RunningProgram
{
protected:
    // What the program says when it can't write a picture.
    QString complaint(const QStringList &options, const QProcessEnvironment &wishes)
    {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) {
            environment.remove(name);
        }
        environment.insert(wishes);
        environment.insert("QT_QPA_PLATFORM", "offscreen");
        environment.insert("HOME", folder.path());
        environment.insert("XDG_CONFIG_HOME", folder.filePath("config"));
        process.setProcessEnvironment(environment);
        process.start(ORVANE_BINARY_DIR "/bin/ovedit",
                      options + QStringList{"--screenshot", "/nowhere/picture.png", path()});
        EXPECT_TRUE(process.waitForFinished(60000)) << process.errorString().toStdString();
        return QString::fromUtf8(process.readAllStandardError());
    }

    QString complaint(const QStringList &options, const QString &variable, const QString &value)
    {
        QProcessEnvironment wishes;
        wishes.insert(variable, value);
        return complaint(options, wishes);
    }

    // What was chosen in the menu before.
    void choose(const QString &code)
    {
        QSettings(folder.filePath("config/Orvane/ovedit.conf"), QSettings::IniFormat)
            .setValue("language", code);
    }

    const QString german = "Das Bild kann nicht geschrieben werden";
    const QString english = "the picture can't be written";
};

TEST_F(Language, isThatOfTheEnvironment)
{
    for (const char *variable : {"LANG", "LC_MESSAGES", "LC_ALL"}) {
        EXPECT_TRUE(complaint({}, variable, "de_AT.UTF-8").contains(german)) << variable;
    }
    EXPECT_TRUE(complaint({}, "LANG", "C.UTF-8").contains(english));
    EXPECT_TRUE(complaint({}, QProcessEnvironment()).contains(english));
    EXPECT_TRUE(complaint({}, "LANG", "fr_FR.UTF-8").contains(english));
}

TEST_F(Language, isTheFirstOfTheEnvironmentsThatThereIs)
{
    QProcessEnvironment wishes;
    wishes.insert("LANG", "de_DE.UTF-8");
    wishes.insert("LANGUAGE", "fr:de:en");
    EXPECT_TRUE(complaint({}, wishes).contains(german));
    wishes.insert("LANGUAGE", "fr:en:de");
    EXPECT_TRUE(complaint({}, wishes).contains(english));
}

TEST_F(Language, isTheOneAskedForBeforeAnyOther)
{
    EXPECT_TRUE(complaint({"--language", "de"}, "LANG", "C.UTF-8").contains(german));
    choose("de");
    EXPECT_TRUE(complaint({"--language=en"}, "LANG", "de_DE.UTF-8").contains(english));
}

TEST_F(Language, isTheOneChosenBeforeThatOfTheEnvironment)
{
    choose("de");
    EXPECT_TRUE(complaint({}, "LANG", "C.UTF-8").contains(german));
    choose("en");
    EXPECT_TRUE(complaint({}, "LANG", "de_DE.UTF-8").contains(english));
    choose("gone");
    EXPECT_TRUE(complaint({}, "LANG", "de_DE.UTF-8").contains(german));
}

TEST_F(Language, isChosenInTheMenuForTheNextStart)
{
    MainWindow &window = opened();
    EXPECT_TRUE(action(window, "language_").isChecked());
    EXPECT_EQ(action(window, "language_de").text(), "Deutsch");
    EXPECT_EQ(action(window, "language_en").text(), "English");
    action(window, "language_de").trigger();
    EXPECT_EQ(settings.language(), "de");
    EXPECT_TRUE(action(window, "language_de").isChecked());
    EXPECT_FALSE(action(window, "language_").isChecked());
    EXPECT_TRUE(window.findChild<QLabel *>("noticeText")->text().contains("next time"));
    action(window, "language_").trigger();
    EXPECT_EQ(settings.language(), "");
}

TEST_F(Language, isSeenInTheMenuOfEveryWindow)
{
    MainWindow &first = opened();
    MainWindow &second = *program.showStartPage();
    action(first, "language_de").trigger();
    auto *menu = second.findChild<QMenu *>("languageMenu");
    ASSERT_NE(menu, nullptr);
    emit menu->aboutToShow();
    EXPECT_TRUE(action(second, "language_de").isChecked());
}

// A catalogue may say two things with the same letter where English has two.
class LanguageOfMenus : public Language, public testing::WithParamInterface<const char *>
{
};

TEST_P(LanguageOfMenus, hasEachKeyOnce)
{
    ASSERT_TRUE(OvLanguage::use(GetParam()));
    MainWindow &window = opened();
    QList<QPair<QString, QList<QAction *>>> menus{{"menu bar", window.menuBar()->actions()}};
    for (int i = 0; i < menus.size(); ++i) {
        QMap<QChar, QString> keys;
        const QList<QAction *> actions = menus[i].second;
        for (QAction *entry : actions) {
            const int at = entry->text().remove("&&").indexOf('&');
            const QChar key = at < 0 ? QChar() : entry->text().remove("&&")[at + 1].toLower();
            EXPECT_TRUE(key.isNull() || !keys.contains(key))
                << menus[i].first.toStdString() << ": " << entry->text().toStdString() << " and "
                << keys.value(key).toStdString();
            keys.insert(key, entry->text());
            if (entry->menu() != nullptr) {
                menus.append({entry->text(), entry->menu()->actions()});
            }
        }
    }
    EXPECT_GT(menus.size(), 6);
    EXPECT_TRUE(OvLanguage::use("en"));
}

INSTANTIATE_TEST_SUITE_P(Every, LanguageOfMenus, testing::Values("en", "de"));

} // namespace
