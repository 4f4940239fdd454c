#include <orvane/language.h>
#include <orvane/numbers.h>
#include <orvane/tr.h>

#include <QCoreApplication>

#include <gtest/gtest.h>

namespace {

struct Application {
    int argc = 1;
    char name[5] = "test";
    char *argv[2] = {name, nullptr};
    QCoreApplication application{argc, argv};
};

// How the button of a dialog reads.
QString buttonText()
{
    return QCoreApplication::translate("QPlatformTheme", "Cancel");
}

} // namespace

TEST(Language, KnowsEnglishAndTheCatalogues)
{
    const QStringList known = OvLanguage::known();
    EXPECT_EQ(known.value(0), QString("en"));
    EXPECT_TRUE(known.contains("de")) << known.join(' ').toStdString();
    EXPECT_EQ(known.count("en"), 1);
}

TEST(Language, TakesWishesAsPeopleAndEnvironmentsWriteThem)
{
    for (const char *wish : {"de", "DE", "de_AT", "de-CH", "de_DE.UTF-8", "de_DE@euro", "de-Latn-DE"}) {
        EXPECT_EQ(OvLanguage::forWish(wish), QString("de")) << wish;
    }
    EXPECT_EQ(OvLanguage::forWish("en_GB"), QString("en"));
    for (const char *wish : {"", "C", "xx", "deu", "d", "_de", "../de", "*"}) {
        EXPECT_EQ(OvLanguage::forWish(wish), QString()) << wish;
    }
}

TEST(Language, SpeaksGermanWithItsButtons)
{
    const Application application;
    EXPECT_TRUE(OvLanguage::use("de"));
    EXPECT_EQ(OvTranslation::tr("Row Number"), QString("Zeilennummer"));
    EXPECT_EQ(QCoreApplication::translate("NoticeBar", "%n problems were found. Everything else can be used.",
                                          nullptr, 1),
              QString("1 Problem wurde gefunden. Alles andere ist benutzbar."));
    EXPECT_EQ(buttonText(), QString("Abbrechen"));
}

TEST(Language, WritesCountsAsItsTextsDo)
{
    const Application application;
    EXPECT_EQ(OvNumbers::counted(1234567), "1,234,567");
    ASSERT_TRUE(OvLanguage::use("de"));
    EXPECT_EQ(OvNumbers::counted(1234567), "1.234.567");
    EXPECT_EQ(OvNumbers::counted(999), "999");
    EXPECT_EQ(OvNumbers::counted(-1000), "-1.000");
    ASSERT_TRUE(OvLanguage::use("en"));
    EXPECT_EQ(OvNumbers::counted(1234567), "1,234,567");
}

TEST(Language, GoesBackToEnglish)
{
    const Application application;
    EXPECT_TRUE(OvLanguage::use("de"));
    EXPECT_TRUE(OvLanguage::use("en"));
    EXPECT_EQ(OvTranslation::tr("Row Number"), QString("Row Number"));
    EXPECT_EQ(buttonText(), QString("Cancel"));
}

TEST(Language, StaysEnglishWhereThereIsNoCatalogue)
{
    const Application application;
    EXPECT_FALSE(OvLanguage::use("xx"));
    EXPECT_EQ(OvTranslation::tr("Row Number"), QString("Row Number"));
}
