#include <QFont>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <ovconfig.h>

#include "captured_output.h"

namespace {

TEST(OvConfig, AnAbsentKeyReadsAsAnInvalidVariantAndStaysAbsent)
{
    const OvConfig config;
    EXPECT_FALSE(config["nothing"].isValid());
    EXPECT_FALSE(config["nothing"].toBool());
    EXPECT_EQ(config["nothing"].toInt(), 0);
    EXPECT_EQ(config["nothing"].toString(), QString());
    EXPECT_FALSE(config.hasKey("nothing"));
}

TEST(OvConfig, ConfigureStoresANewKeyAsItIsAndAnnouncesIt)
{
    OvConfig config;
    QSignalSpy changes(&config, &OvConfig::configurationChanged);
    config.configure("font_size_points", 12);
    EXPECT_TRUE(config.hasKey("font_size_points"));
    EXPECT_EQ(config["font_size_points"], QVariant(12));
    EXPECT_EQ(changes.count(), 1);
}

TEST(OvConfig, ConfigureAnnouncesAnEqualValueToo)
{
    OvConfig config;
    config.configure("font_size_points", 12);
    QSignalSpy changes(&config, &OvConfig::configurationChanged);
    config.configure("font_size_points", 12);
    EXPECT_EQ(changes.count(), 1);
}

TEST(OvConfig, ConfigureIfUnsetStoresOnlyAnAbsentKey)
{
    OvConfig config;
    QSignalSpy changes(&config, &OvConfig::configurationChanged);
    config.configureIfUnset("auto_open", true);
    EXPECT_EQ(changes.count(), 1);
    config.configureIfUnset("auto_open", false);
    config.configureIfUnset("auto_open", "anything");
    EXPECT_EQ(changes.count(), 1);
    EXPECT_EQ(config["auto_open"], QVariant(true));
}

TEST(OvConfig, ConfigureIfUnsetKeepsAnEarlierValueOfAnotherType)
{
    OvConfig config;
    config.configure("font_size_points", "11");
    config.configureIfUnset("font_size_points", 10);
    EXPECT_EQ(config["font_size_points"], QVariant("11"));
}

TEST(OvConfig, TheFirstTypeOfAKeyIsKept)
{
    OvConfig config;
    config.configureIfUnset("font_size_points", 10);
    config.configure("font_size_points", "14");
    EXPECT_EQ(config["font_size_points"].userType(), QMetaType::Int);
    EXPECT_EQ(config["font_size_points"].toInt(), 14);

    config.configureIfUnset("background_null_color", "light gray");
    config.configure("background_null_color", 7);
    EXPECT_EQ(config["background_null_color"].userType(), QMetaType::QString);
    EXPECT_EQ(config["background_null_color"].toString(), QString("7"));
}

TEST(OvConfig, AFontIsReadFromItsText)
{
    OvConfig config;
    config.configureIfUnset("font", QFont("Monospace", 10));
    config.configure("font", QFont("Serif", 17).toString());
    EXPECT_EQ(config["font"].userType(), QMetaType::QFont);
    EXPECT_EQ(config["font"].value<QFont>().pointSize(), 17);
}

TEST(OvConfig, AnInvalidVariantGivesAKeyNoType)
{
    OvConfig config;
    config.configureIfUnset("anything", QVariant());
    EXPECT_TRUE(config.hasKey("anything"));
    EXPECT_EQ(standardErrorOf([&] { config.configure("anything", 5); }), "");
    EXPECT_EQ(config["anything"], QVariant(5));
}

TEST(OvConfig, AValueThatDoesNotConvertIsReportedAndIgnored)
{
    OvConfig config;
    config.configureIfUnset("font_size_points", 10);
    QSignalSpy changes(&config, &OvConfig::configurationChanged);
    EXPECT_EQ(
        standardErrorOf([&] { config.configure("font_size_points", "abc"); }),
        "OvConfig::configure: Failed to convert parameter 'font_size_points' to pre-existing type 'int', "
        "ignoring parameter\n\n");
    EXPECT_EQ(config["font_size_points"], QVariant(10));
    EXPECT_EQ(changes.count(), 0);
}

struct Refused {
    QVariant existing;
    QVariant value;
    std::string type;
};

void PrintTo(const Refused &refused, std::ostream *out)
{
    *out << (refused.value.isValid() ? refused.value.typeName() : "invalid") << " "
         << refused.value.toString().toStdString() << " as " << refused.type;
}

class OvConfigRefuses : public testing::TestWithParam<Refused>
{
};

TEST_P(OvConfigRefuses, NamingTheStoredType)
{
    const Refused &refused = GetParam();
    OvConfig config;
    config.configure("key", refused.existing);
    EXPECT_EQ(standardErrorOf([&] { config.configure("key", refused.value); }),
              "OvConfig::configure: Failed to convert parameter 'key' to pre-existing type '" + refused.type +
                  "', ignoring parameter\n\n");
    EXPECT_EQ(config["key"], refused.existing);
}

INSTANTIATE_TEST_SUITE_P(Values, OvConfigRefuses,
                         testing::Values(Refused{true, QVariantList{1}, "bool"},
                                         Refused{true, QVariant(), "bool"},
                                         Refused{1, QVariantMap{{"a", 1}}, "int"}, Refused{1, "", "int"},
                                         Refused{1, "1.5", "int"},
                                         Refused{QVariantMap(), "text", "QVariantMap"},
                                         Refused{QVariantList(), "text", "QVariantList"},
                                         Refused{"text", QVariantMap(), "QString"}));

struct Truth {
    QVariant value;
    bool expected;
};

void PrintTo(const Truth &truth, std::ostream *out)
{
    *out << truth.value.typeName() << " " << truth.value.toString().toStdString();
}

class OvConfigBoolean : public testing::TestWithParam<Truth>
{
};

TEST_P(OvConfigBoolean, IsReadFromTextsAndNumbers)
{
    for (const bool before : {true, false}) {
        OvConfig config;
        config.configureIfUnset("show_tooltips", before);
        config.configure("show_tooltips", GetParam().value);
        EXPECT_EQ(config["show_tooltips"].userType(), QMetaType::Bool);
        EXPECT_EQ(config["show_tooltips"].toBool(), GetParam().expected)
            << GetParam().value.toString().toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(Values, OvConfigBoolean,
                         testing::Values(Truth{"no", false}, Truth{"No", false}, Truth{"NO", false},
                                         Truth{"off", false}, Truth{"Off", false}, Truth{"false", false},
                                         Truth{"FALSE", false}, Truth{"n", false}, Truth{"N", false},
                                         Truth{"f", false}, Truth{"F", false}, Truth{"0", false},
                                         Truth{"", false}, Truth{"yes", true}, Truth{"on", true},
                                         Truth{"true", true}, Truth{"1", true}, Truth{"t", true},
                                         Truth{"y", true}, Truth{"none", true}, Truth{"00", true},
                                         Truth{"abc", true}, Truth{0.0, false}, Truth{Qt::Unchecked, false},
                                         Truth{Qt::Checked, true}));

TEST(OvConfig, TextsThatMeanFalseStayTextsUnderATextKey)
{
    OvConfig config;
    config.configureIfUnset("local_time_zone", "");
    config.configure("local_time_zone", "no");
    EXPECT_EQ(config["local_time_zone"], QVariant("no"));
}

TEST(OvConfig, ToggleFlipsABooleanAndAnnouncesIt)
{
    OvConfig config;
    config.configureIfUnset("show_raw_nulls", false);
    QSignalSpy changes(&config, &OvConfig::configurationChanged);
    EXPECT_TRUE(config.toggle("show_raw_nulls"));
    EXPECT_EQ(config["show_raw_nulls"], QVariant(true));
    EXPECT_FALSE(config.toggle("show_raw_nulls"));
    EXPECT_EQ(config["show_raw_nulls"], QVariant(false));
    EXPECT_EQ(changes.count(), 2);
}

TEST(OvConfig, ToggleLeavesWhatIsNotABoolean)
{
    OvConfig config;
    config.configure("font_size_points", 1);
    config.configure("text", "true");
    QSignalSpy changes(&config, &OvConfig::configurationChanged);
    EXPECT_FALSE(config.toggle("font_size_points"));
    EXPECT_FALSE(config.toggle("text"));
    EXPECT_FALSE(config.toggle("absent"));
    EXPECT_EQ(config["font_size_points"], QVariant(1));
    EXPECT_EQ(config["text"], QVariant("true"));
    EXPECT_FALSE(config.hasKey("absent"));
    EXPECT_EQ(changes.count(), 0);
}

TEST(OvConfig, AListenerSeesTheNewValueBeforeConfigureReturns)
{
    OvConfig config;
    int seen = 0;
    QObject::connect(&config, &OvConfig::configurationChanged, [&] { seen = config["size"].toInt(); });
    config.configure("size", 3);
    EXPECT_EQ(seen, 3);
}

TEST(OvConfig, DumpPrintsEntriesInKeyOrderWithTheElementsOfListsAndMaps)
{
    OvConfig config;
    config.configure("zone", "UTC");
    config.configure("auto_open", true);
    config.configure("default_table", QVariantMap{{"quakes", "origin"}, {"other", "site"}});
    config.configure("fields", QVariantList{"lat", "lon"});
    config.configure("font_size_points", 10);
    EXPECT_EQ(standardOutputOf([&] { config.dump(); }), "Parameter: (bool)\t\t'auto_open'\t\ttrue\n"
                                                        "Parameter: (QVariantMap)\t\t'default_table'\t\t\n"
                                                        "\tEntry:\t\t\tother\tsite\n"
                                                        "\tEntry:\t\t\tquakes\torigin\n"
                                                        "Parameter: (QVariantList)\t\t'fields'\t\t\n"
                                                        "\tEntry:\t\t\tlat\n"
                                                        "\tEntry:\t\t\tlon\n"
                                                        "Parameter: (int)\t\t'font_size_points'\t\t10\n"
                                                        "Parameter: (QString)\t\t'zone'\t\tUTC\n");
}

TEST(OvConfig, DumpOfAnEmptyStorePrintsNothing)
{
    OvConfig config;
    EXPECT_EQ(standardOutputOf([&] { config.dump(); }), "");
}

} // namespace
