#include <orvane/tr.h>

#include <QCoreApplication>
#include <QTranslator>

#include <gtest/gtest.h>

namespace {

// Stands for a catalogue: translates one text of the system's context, and nothing else.
class OneTextCatalogue : public QTranslator {
public:
    QString translate(const char *context, const char *text, const char *, int) const override
    {
        const bool known = qstrcmp(context, "OvTranslation") == 0 && qstrcmp(text, "Row") == 0;
        return known ? QStringLiteral("Zeile") : QString();
    }
    bool isEmpty() const override { return false; }
};

struct Application {
    int argc = 1;
    char name[5] = "test";
    char *argv[2] = {name, nullptr};
    QCoreApplication application{argc, argv};
};

} // namespace

TEST(Translation, AnswersTheSourceTextWithoutACatalogue)
{
    const Application application;
    EXPECT_EQ(OvTranslation::tr("View name"), QString("View name"));
    EXPECT_EQ(OvTranslation::tr("Größe"), QString::fromUtf8("Größe"));
}

TEST(Translation, ANullTextIsEmpty)
{
    const Application application;
    EXPECT_EQ(OvTranslation::tr(nullptr), QString());
}

TEST(Translation, AsksTheInstalledCataloguesInOneContext)
{
    const Application application;
    OneTextCatalogue catalogue;
    ASSERT_TRUE(QCoreApplication::installTranslator(&catalogue));
    EXPECT_EQ(OvTranslation::tr("Row"), QString("Zeile"));
    EXPECT_EQ(OvTranslation::tr("Rows"), QString("Rows"));
    EXPECT_TRUE(QCoreApplication::removeTranslator(&catalogue));
    EXPECT_EQ(OvTranslation::tr("Row"), QString("Row"));
}
