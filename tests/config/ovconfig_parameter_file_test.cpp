#include <cstring>
#include <memory>
#include <stdexcept>

#include <QSignalSpy>

#include <gtest/gtest.h>

#include <orvane/util.h>
#include <ovconfig.h>

#include "captured_output.h"

namespace {

using ParameterFile = std::unique_ptr<Pf, void (*)(Pf *)>;

ParameterFile parsed(const char *text)
{
    Pf *pf = nullptr;
    if (pfparse(text, std::strlen(text), "test", &pf) < 0)
        throw std::runtime_error("the test's own parameter file is wrong");
    return {pf, pffree};
}

TEST(OvConfigParameterFile, NullDoesNothing)
{
    OvConfig config;
    QSignalSpy changes(&config, &OvConfig::configurationChanged);
    config.configure(nullptr);
    EXPECT_EQ(changes.count(), 0);
}

TEST(OvConfigParameterFile, AnEmptyFileStoresNothing)
{
    OvConfig config;
    config.configure(parsed("").get());
    EXPECT_EQ(standardOutputOf([&] { config.dump(); }), "");
}

TEST(OvConfigParameterFile, AListAsRootStoresNothing)
{
    const ParameterFile file = parsed("list: [a, b]\n");
    PfValue value{};
    ASSERT_EQ(pfget(file.get(), "list", &value), PFLIST);
    OvConfig config;
    config.configure(value.pf);
    EXPECT_EQ(standardOutputOf([&] { config.dump(); }), "");
}

TEST(OvConfigParameterFile, ScalarsOfUnregisteredKeysStayTexts)
{
    OvConfig config;
    config.configure(parsed("a: 12\nb: no\nc: null\nd: größer\ne: ''\n").get());
    EXPECT_EQ(config["a"], QVariant("12"));
    EXPECT_EQ(config["b"], QVariant("no"));
    EXPECT_EQ(config["c"], QVariant("null"));
    EXPECT_EQ(config["d"], QVariant(QString::fromUtf8("größer")));
    EXPECT_EQ(config["e"], QVariant(""));
}

TEST(OvConfigParameterFile, ScalarsBecomeTheTypeThatWasRegistered)
{
    OvConfig config;
    config.configureIfUnset("font_size_points", 10);
    config.configureIfUnset("show_tooltips", true);
    config.configureIfUnset("show_raw_nulls", false);
    QSignalSpy changes(&config, &OvConfig::configurationChanged);
    config.configure(parsed("font_size_points: 14\nshow_tooltips: no\nshow_raw_nulls: yes\n").get());
    EXPECT_EQ(config["font_size_points"], QVariant(14));
    EXPECT_EQ(config["show_tooltips"], QVariant(false));
    EXPECT_EQ(config["show_raw_nulls"], QVariant(true));
    EXPECT_EQ(changes.count(), 3);
}

TEST(OvConfigParameterFile, ABadScalarIsReportedAndTheRestIsRead)
{
    OvConfig config;
    config.configureIfUnset("font_size_points", 10);
    const ParameterFile file = parsed("font_size_points: large\nlocal_time_zone: UTC\n");
    EXPECT_EQ(
        standardErrorOf([&] { config.configure(file.get()); }),
        "OvConfig::configure: Failed to convert parameter 'font_size_points' to pre-existing type 'int', "
        "ignoring parameter\n\n");
    EXPECT_EQ(config["font_size_points"], QVariant(10));
    EXPECT_EQ(config["local_time_zone"], QVariant("UTC"));
}

TEST(OvConfigParameterFile, AListBecomesAListOfTexts)
{
    OvConfig config;
    config.configure(parsed("fields: [lat, 12, no]\nnone: []\n").get());
    EXPECT_EQ(config["fields"], QVariant(QVariantList{"lat", "12", "no"}));
    EXPECT_EQ(config["none"], QVariant(QVariantList{}));
}

TEST(OvConfigParameterFile, AnArrayBecomesAMapOfTexts)
{
    OvConfig config;
    config.configureIfUnset("default_table", QVariantMap());
    config.configure(parsed("default_table: {quakes: origin, 7: site}\n").get());
    EXPECT_EQ(config["default_table"], QVariant(QVariantMap{{"quakes", "origin"}, {"7", "site"}}));
}

TEST(OvConfigParameterFile, NestedElementsOfAListAreReportedByIndexAndLeftOut)
{
    OvConfig config;
    const ParameterFile file = parsed("fields: [lat, [a, b], lon, {x: y}]\n");
    EXPECT_EQ(standardErrorOf([&] { config.configure(file.get()); }),
              "Lists not allowed to nest other lists/arrays in OvConfig (parameter 'fields', element '1')\n"
              "Lists not allowed to nest other lists/arrays in OvConfig (parameter 'fields', element '3')\n");
    EXPECT_EQ(config["fields"], QVariant(QVariantList{"lat", "lon"}));
}

TEST(OvConfigParameterFile, NestedElementsOfAnArrayAreReportedByNameAndLeftOut)
{
    OvConfig config;
    const ParameterFile file = parsed("default_table: {quakes: origin, list: [a], more: {x: y}}\n");
    EXPECT_EQ(
        standardErrorOf([&] { config.configure(file.get()); }),
        "Arrays not allowed to nest other lists/arrays in OvConfig (parameter 'default_table', subparameter "
        "'list')\n"
        "Arrays not allowed to nest other lists/arrays in OvConfig (parameter 'default_table', subparameter "
        "'more')\n");
    EXPECT_EQ(config["default_table"], QVariant(QVariantMap{{"quakes", "origin"}}));
}

} // namespace
