#include <QDialogButtonBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "open_dialog.h"
#include "settings.h"
#include "start_page.h"
#include "time_zone_dialog.h"

namespace {

QPushButton &button(const QDialog &dialog, QDialogButtonBox::StandardButton which)
{
    return *dialog.findChild<QDialogButtonBox *>()->button(which);
}

TEST(TimeZones, beginOnTheZoneInUse)
{
    EXPECT_EQ(TimeZoneDialog("Europe/Oslo", nullptr).zone(), "Europe/Oslo");
}

TEST(TimeZones, beginOnUtcWhenTheZoneIsUnknown)
{
    EXPECT_EQ(TimeZoneDialog("Middle/Earth", nullptr).zone(), "UTC");
    EXPECT_EQ(TimeZoneDialog("", nullptr).zone(), "UTC");
}

TEST(TimeZones, areFoundAsPeopleTypeThem)
{
    TimeZoneDialog dialog("UTC", nullptr);
    auto *filter = dialog.findChild<QLineEdit *>("zoneFilter");
    filter->setText("new york");
    EXPECT_EQ(dialog.zone(), "America/New_York");
    EXPECT_TRUE(button(dialog, QDialogButtonBox::Ok).isEnabled());
    filter->setText("no such place");
    EXPECT_EQ(dialog.zone(), "");
    EXPECT_FALSE(button(dialog, QDialogButtonBox::Ok).isEnabled());
    filter->setText("Tokyo");
    EXPECT_EQ(dialog.zone(), "Asia/Tokyo");
    EXPECT_TRUE(button(dialog, QDialogButtonBox::Ok).isEnabled());
}

class Recent : public testing::Test
{
protected:
    Recent()
    {
        settings.addRecentDatabase("/data/older");
        settings.addRecentDatabase("/data/newer");
    }

    QTemporaryDir folder;
    Settings settings{folder.filePath("ovedit.conf")};
};

TEST_F(Recent, databasesFillThePathOfTheOpenDialog)
{
    OpenDialog dialog(settings, nullptr);
    EXPECT_FALSE(button(dialog, QDialogButtonBox::Open).isEnabled());
    EXPECT_EQ(dialog.mode(), "r");
    dialog.findChild<QListWidget *>("openRecent")->setCurrentRow(1);
    EXPECT_EQ(dialog.database(), "/data/older");
    EXPECT_TRUE(button(dialog, QDialogButtonBox::Open).isEnabled());
    dialog.findChild<QLineEdit *>("openPath")->setText("   ");
    EXPECT_FALSE(button(dialog, QDialogButtonBox::Open).isEnabled());
}

TEST_F(Recent, databasesCanBeOpenedForWriting)
{
    OpenDialog dialog(settings, nullptr);
    for (QRadioButton *choice : dialog.findChildren<QRadioButton *>()) {
        choice->click();
    }
    EXPECT_EQ(dialog.mode(), "r+");
}

TEST_F(Recent, databasesAreOpenedFromTheStartPage)
{
    StartPage page(settings);
    QSignalSpy chosen(&page, &StartPage::databaseChosen);
    auto *list = page.findChild<QListWidget *>("startRecent");
    ASSERT_NE(list, nullptr);
    emit list->itemActivated(list->item(0));
    ASSERT_EQ(chosen.count(), 1);
    EXPECT_EQ(chosen.first().first().toString(), "/data/newer");
}

TEST_F(Recent, databasesAreLeftOutOfTheStartPageWhenThereAreNone)
{
    settings.clearRecentDatabases();
    StartPage page(settings);
    EXPECT_EQ(page.findChild<QListWidget *>("startRecent"), nullptr);
    QSignalSpy asked(&page, &StartPage::openRequested);
    page.findChild<QPushButton *>("startOpen")->click();
    EXPECT_EQ(asked.count(), 1);
}

} // namespace
