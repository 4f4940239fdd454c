// What dbputv takes for a field, and what it refuses.
#include "edited.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

struct Case {
    const char *name;
    const char *field;
    DbValue value;
    const char *stored;   // the field's text as it stands; null: refused
    const char *log = ""; // part of the reason
};

DbValue text_of(const char *text)
{
    DbValue value{};
    value.type = dbSTRING;
    value.text = const_cast<char *>(text);
    return value;
}
DbValue dbptr_of(int64_t a, int64_t b, int64_t c, int64_t d)
{
    DbValue value{};
    value.type = dbDBPTR;
    value.dbptr = Dbptr{a, b, c, d};
    return value;
}

class PutValue : public testing::TestWithParam<Case>
{
};

const Case cases[] = {
    {"real_by_its_format", "lat", real_value(12.34567), "  12.3457"},
    {"real_from_a_whole_number", "lat", integer_value(12), "  12.0000"},
    {"real_from_a_text", "lat", text_of(" -1.5e1 "), " -15.0000"},
    {"real_null_passes_the_range", "lat", real_value(-999.0), "-999.0000"},
    {"real_null_with_fewer_decimals", "lat", text_of("-999"), "-999.0000"},
    {"real_at_the_end_of_the_range", "lat", real_value(90.0), "  90.0000"},
    {"real_beyond_the_range", "lat", real_value(90.1), nullptr, "out of range: lat >= -90.0 && lat <= 90.0"},
    {"real_that_only_rounding_puts_into_the_range", "lat", real_value(90.000001), nullptr, "out of range"},
    {"real_that_is_no_number", "lat", real_value(std::nan("")), nullptr, "is not a number"},
    {"real_infinite", "lat", real_value(std::numeric_limits<double>::infinity()), nullptr, "is not a number"},
    {"real_from_words", "lat", text_of("abc"), nullptr, "'abc' is not a number"},
    {"real_from_an_empty_text", "lat", text_of(""), nullptr, "'' is not a number"},
    {"integer", "orid", integer_value(42), "      42"},
    {"integer_as_wide_as_the_field", "orid", integer_value(12345678), "12345678"},
    {"integer_too_wide", "orid", integer_value(123456789), nullptr,
     "'123456789' is 9 characters wide, the field has 8"},
    {"integer_null", "orid", integer_value(-1), "      -1"},
    {"integer_out_of_range", "orid", integer_value(0), nullptr, "out of range: orid > 0"},
    {"integer_from_a_whole_real", "orid", real_value(7.0), "       7"},
    {"integer_from_a_broken_real", "orid", real_value(7.5), nullptr, "7.5 is not a whole number"},
    {"integer_from_a_large_real", "orid", real_value(1e300), nullptr, "is not a whole number"},
    {"integer_from_a_text", "orid", text_of("17"), "      17"},
    {"integer_from_words", "orid", text_of("abc"), nullptr, "'abc' is not a whole number"},
    {"integer_from_a_pointer", "orid", dbptr_of(0, 0, 0, 0), nullptr, "is not a whole number"},
    {"boolean_true", "flag", integer_value(1, dbBOOLEAN), " 1"},
    {"boolean_null", "flag", integer_value(-1), "-1"},
    {"boolean_two", "flag", integer_value(2), nullptr, "2 is not 0 or 1"},
    {"yearday", "jdate", integer_value(2016366, dbYEARDAY), " 2016366"},
    {"yearday_that_the_year_has_not", "jdate", integer_value(2017366), nullptr, "is not a day as yyyyddd"},
    {"yearday_null", "jdate", integer_value(-1), "      -1"},
    {"yearday_nought", "jdate", integer_value(0), nullptr, "is not a day as yyyyddd"},
    {"time_by_its_format", "time", real_value(1517997600.123456, dbTIME), " 1517997600.12346"},
    {"time_from_a_date", "time", text_of("2018-02-07T10:00:00"), " 1517997600.00000"},
    {"time_null", "time", real_value(-9999999999.999, dbTIME), "-9999999999.99900"},
    {"time_too_wide", "time", real_value(1e15, dbTIME), nullptr, "characters wide, the field has 17"},
    {"time_from_words", "time", text_of("soon"), nullptr, "'soon' is not epoch seconds or a date"},
    {"text", "sta", text_of("AAK"), "AAK   "},
    {"text_as_wide_as_the_field", "sta", text_of("ABCDEF"), "ABCDEF"},
    {"text_with_blanks_at_its_end", "sta", text_of("ABC       "), "ABC   "},
    {"text_too_long", "sta", text_of("ABCDEFG"), nullptr,
     "'ABCDEFG' is 7 bytes long, the field has room for 6"},
    {"text_of_several_bytes_a_letter", "sta", text_of("ÄÖÜ"), "ÄÖÜ"},
    {"text_that_would_have_to_be_cut_in_a_letter", "sta", text_of("ABCDEÄ"), nullptr, "is 7 bytes long"},
    {"text_with_half_a_letter", "sta", text_of("AB\xc3"), nullptr,
     "byte 2 of the text does not begin a whole"},
    {"text_with_a_lone_continuation", "sta", text_of("\x80"), nullptr, "byte 0"},
    {"text_with_a_long_form", "sta", text_of("\xc0\xaf"), nullptr, "byte 0"},
    {"text_with_half_of_a_pair", "sta", text_of("\xed\xa0\x80"), nullptr, "byte 0"},
    {"text_beyond_the_last_letter", "sta", text_of("\xf4\x90\x80\x80"), nullptr, "byte 0"},
    {"text_with_a_line_feed", "sta", text_of("A\nB"), nullptr, "has a line feed, which would end the record"},
    {"text_with_a_tab", "sta", text_of("A\tB"), nullptr, "a control character at byte 1"},
    {"text_with_delete", "sta", text_of("A\x7f"), nullptr, "a control character at byte 1"},
    {"text_with_a_control_of_two_bytes", "sta", text_of("\xc2\x85"), nullptr,
     "a control character at byte 0"},
    {"text_null", "sta", text_of("-"), "-     "},
    {"text_from_a_whole_number", "sta", integer_value(-1), "-1    "},
    {"text_from_a_real", "sta", real_value(-0.5), "-0.5  "},
    {"pointer", "bundle", dbptr_of(0, 12, -501, 7), "     0 12 -501 7"},
    {"pointer_to_nothing", "bundle", dbptr_of(-102, -102, -102, -102), "-               "},
    {"pointer_from_a_number", "bundle", integer_value(1), nullptr, "is not a pointer"},
    {"no_type", "sta", DbValue{}, nullptr, "there is no type 0 of values"},
    {"text_that_is_null", "sta", text_of(nullptr), nullptr, "the text of the value is null"},
};

} // namespace

TEST_P(PutValue, is_stored_or_refused_with_its_reason)
{
    TemporaryDatabase files;
    files.addTable("kinds", {{"0", "1", "1.0", "0.0", "2018001", "XXX"}, {"1", "2"}});
    const std::string before = TemporaryDatabase::readFile(files.tablePath("kinds"));
    Opened opened(files.path(), "r+");
    const Dbptr record = opened.record("kinds", 0);
    const int checked = dbcheckv(record, GetParam().field, &GetParam().value);
    const std::string log_of_check = take_log();
    EXPECT_EQ(TemporaryDatabase::readFile(files.tablePath("kinds")), before);
    const int code = dbputv(record, GetParam().field, &GetParam().value);
    const std::string log = take_log();
    EXPECT_EQ(checked, code);
    EXPECT_EQ(log_of_check.empty(), log.empty());
    if (!GetParam().stored) {
        EXPECT_TRUE(code == dbERROR_VALUE || code == dbERROR_ARGUMENT) << code;
        EXPECT_NE(log.find(GetParam().log), std::string::npos) << log;
        EXPECT_NE(log_of_check.find(GetParam().log), std::string::npos) << log_of_check;
        EXPECT_EQ(TemporaryDatabase::readFile(files.tablePath("kinds")), before);
        return;
    }
    EXPECT_EQ(code, 0) << log;
    EXPECT_EQ(log, "");
    EXPECT_EQ(get(opened.field("kinds", GetParam().field, 0)), GetParam().stored);
    const std::string after = TemporaryDatabase::readFile(files.tablePath("kinds"));
    ASSERT_EQ(after.size(), before.size());
    const size_t size = before.size() / 2;
    EXPECT_EQ(after.substr(size), before.substr(size)); // the other record
    const auto offset = static_cast<size_t>(integer(opened.field("kinds", GetParam().field), dbFIELD_INDEX));
    EXPECT_EQ(after.substr(offset, std::string(GetParam().stored).size()), GetParam().stored);
}

INSTANTIATE_TEST_SUITE_P(Values, PutValue, testing::ValuesIn(cases),
                         [](const auto &each) { return std::string(each.param.name); });

// Digits that the format leaves out shall not carry a value beyond its range.
TEST(PutValues, refuse_what_would_be_out_of_range_as_it_is_written)
{
    std::string schema = smallSchemaText();
    const std::string old = "range: \"lat >= -90.0 && lat <= 90.0\"";
    schema.replace(schema.find(old), old.size(), "range: \"lat < 90.0\"");
    TemporaryDatabase files("small", schema);
    files.addTable("kinds", {{"0", "1", "1.0"}});
    Opened opened(files.path(), "r+");
    const DbValue value = real_value(89.99999);
    EXPECT_EQ(dbputv(opened.record("kinds", 0), "lat", &value), dbERROR_VALUE);
    EXPECT_NE(take_log().find("out of range: lat < 90.0"), std::string::npos);
}

TEST(PutValues, go_to_the_field_that_is_named_or_pointed_to)
{
    TemporaryDatabase files;
    files.addTable("origin", {{"1.0", "2.0", "3.0", "0.0", "7"}});
    Opened opened(files.path(), "r+");
    const DbValue value = real_value(5);
    EXPECT_EQ(dbputv(opened.field("origin", "lon", 0), nullptr, &value), 0);
    EXPECT_EQ(dbputv(opened.field("origin", "lon", 0), "lat", &value), 0);
    EXPECT_EQ(dbputv(opened.record("origin", 0), "origin.depth", &value), 0);
    EXPECT_EQ(trim(get(opened.field("origin", "lon", 0))), "5.0000");
    EXPECT_EQ(trim(get(opened.field("origin", "lat", 0))), "5.0000");
    EXPECT_EQ(trim(get(opened.field("origin", "depth", 0))), "5.0000");
    EXPECT_EQ(take_log(), "");
    EXPECT_EQ(dbputv(opened.record("origin", 0), "nothing", &value), dbERROR_NOT_FOUND);
    EXPECT_EQ(dbputv(opened.record("origin", 0), nullptr, &value), dbERROR_ARGUMENT);
    EXPECT_EQ(dbputv(opened.record("origin", 0), "lat", nullptr), dbERROR_ARGUMENT);
    EXPECT_EQ(dbputv(opened.record("origin", 1), "lat", &value), dbERROR_NOT_FOUND);
    EXPECT_EQ(dbputv(opened.record("origin", dbALL), "lat", &value), dbERROR_ARGUMENT);
    EXPECT_EQ(dbputv(opened.record("origin", dbNULL), "lat", &value), dbERROR_ARGUMENT);
    EXPECT_EQ(dbputv(dbinvalid(), "lat", &value), dbERROR_STALE);
    take_log();
}

TEST(PutValues, set_the_timestamp)
{
    TemporaryDatabase files;
    files.addTable("origin", {{"1.0", "2.0"}, {"1.0", "2.0"}});
    Opened opened(files.path(), "r+");
    const double before = std_now();
    EXPECT_EQ(put(opened.record("origin", 1), "auth", "me"), 0);
    DbValue stamp{};
    ASSERT_EQ(dbgetv(opened.record("origin", 1), "lddate", &stamp), 0);
    EXPECT_GE(stamp.real, before - 0.001);
    EXPECT_LE(stamp.real, std_now() + 0.001);
    // Whatever is put there.
    const DbValue old = real_value(0, dbTIME);
    EXPECT_EQ(dbputv(opened.record("origin", 1), "lddate", &old), 0);
    ASSERT_EQ(dbgetv(opened.record("origin", 1), "lddate", &stamp), 0);
    EXPECT_GE(stamp.real, before - 0.001);
    ASSERT_EQ(dbgetv(opened.record("origin", 0), "lddate", &stamp), 0);
    EXPECT_EQ(stamp.real, -9999999999.999);
}

TEST(PutValues, are_not_stamped_where_the_schema_has_no_timestamp)
{
    std::string schema = smallSchemaText();
    schema.erase(schema.find("timestamp: lddate\n"), std::string("timestamp: lddate\n").size());
    TemporaryDatabase files("small", schema);
    files.addTable("event", {{"1", "2", "me", "5.00000"}});
    Opened opened(files.path(), "r+");
    EXPECT_EQ(put(opened.record("event", 0), "auth", "you"), 0);
    EXPECT_EQ(trim(get(opened.field("event", "lddate", 0))), "5.00000");
}

TEST(PutValues, of_the_scratch_record_stay_in_memory)
{
    TemporaryDatabase files;
    files.addTable("event", {{"1", "2", "me"}});
    const std::string before = TemporaryDatabase::readFile(files.tablePath("event"));
    Opened opened(files.path(), "r");
    EXPECT_EQ(put(opened.record("event", dbSCRATCH), "evid", "9"), 0);
    EXPECT_EQ(trim(get(opened.field("event", "evid", dbSCRATCH))), "9");
    EXPECT_EQ(put(opened.record("event", dbSCRATCH), "evid", "0"), dbERROR_VALUE);
    EXPECT_NE(take_log().find("scratch record, field evid: the value is out of range"), std::string::npos);
    EXPECT_EQ(trim(get(opened.field("event", "evid", dbSCRATCH))), "9");
    EXPECT_EQ(TemporaryDatabase::readFile(files.tablePath("event")), before);
}

TEST(PutValues, tell_a_range_that_the_schema_has_wrong)
{
    std::string schema = smallSchemaText();
    const std::string old = "range: \"evid > 0\"";
    schema.replace(schema.find(old), old.size(), "range: \"evid > \"");
    TemporaryDatabase files("small", schema);
    files.addTable("event", {{"1", "2", "me"}});
    Opened opened(files.path(), "r+");
    EXPECT_EQ(put(opened.record("event", 0), "evid", "9"), dbERROR_FORMAT);
    EXPECT_NE(take_log().find("its range cannot be asked; mend the schema"), std::string::npos);
    EXPECT_EQ(put(opened.record("event", 0), "evid", "-1"), 0);
}
