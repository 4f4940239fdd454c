#include "schema/schema_reader.h"

#include <gtest/gtest.h>
#include <orvane/util.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

using namespace orvane;

namespace {

// Line numbers in the tests below count from the first line of this text.
const std::string good =
    "name: tiny\n"                                                                         // 1
    "description: a schema\n"                                                              // 2
    "timestamp: lddate\n"                                                                  // 3
    "attributes:\n"                                                                        // 4
    "  sta: {type: string, width: 6, format: \"%-6s\", null: \"-\"}\n"                     // 5
    "  lat:\n"                                                                             // 6
    "    type: real\n"                                                                     // 7
    "    width: 9\n"                                                                       // 8
    "    format: \"%9.4f\"\n"                                                              // 9
    "    null: \"-999.0000\"\n"                                                            // 10
    "    range: lat >= -90.0 && lat <= 90.0\n"                                             // 11
    "  id: {type: integer, width: 8, format: \"%8d\", null: \"-1\"}\n"                     // 12
    "  on: {type: yearday, width: 8, format: \"%8d\", null: \"-1\"}\n"                     // 13
    "  off: {type: yearday, width: 8, format: \"%8d\", null: \"-1\"}\n"                    // 14
    "  lddate: {type: time, width: 17, format: \"%17.5f\", null: \"-9999999999.99900\"}\n" // 15
    "relations:\n"                                                                         // 16
    "  site:\n"                                                                            // 17
    "    fields: [sta, on, off, lat, lddate]\n"                                            // 18
    "    primary: [sta, \"on::off\"]\n"                                                    // 19
    "  thing:\n"                                                                           // 20
    "    fields: [id, sta, lddate]\n"                                                      // 21
    "    primary: [id]\n"                                                                  // 22
    "    defines: id\n";                                                                   // 23

std::string changed(const std::string &from, const std::string &to)
{
    std::string text = good;
    const auto at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    if (at != std::string::npos)
        text.replace(at, from.size(), to);
    return text;
}

std::string failure_of(const std::string &text)
{
    elog_clear();
    const auto schema = read_schema(text, "dir/tiny.yaml");
    return schema.ok() ? "(read)" : std::string(schema.status().message());
}

} // namespace

TEST(SchemaReader, reads_attributes_and_relations_in_order)
{
    const auto read = read_schema(good, "dir/tiny.yaml");
    ASSERT_TRUE(read.ok()) << read.status().message();
    const Schema &schema = **read;
    EXPECT_EQ(schema.name, "tiny");
    EXPECT_EQ(schema.description, "a schema");
    EXPECT_EQ(schema.timestamp, "lddate");
    EXPECT_EQ(schema.attribute_names(),
              (std::vector<std::string_view>{"sta", "lat", "id", "on", "off", "lddate"}));
    EXPECT_EQ(schema.relation_names(), (std::vector<std::string_view>{"site", "thing"}));
    const Attribute &lat = *schema.attribute("lat");
    EXPECT_EQ(lat.type, FieldType::Real);
    EXPECT_EQ(lat.width, 9);
    EXPECT_EQ(lat.null, "-999.0000");
    EXPECT_EQ(lat.null_real, -999.0);
    EXPECT_EQ(lat.range, "lat >= -90.0 && lat <= 90.0");
    const Relation &site = *schema.relation("site");
    EXPECT_EQ(site.record_size(), 6 + 1 + 8 + 1 + 8 + 1 + 9 + 1 + 17 + 1);
    EXPECT_EQ(site.fields()[3].offset, 25);
    EXPECT_EQ(site.primary[1].text(), "on::off");
    EXPECT_EQ(site.null_record(), "-            -1       -1 -999.0000 -9999999999.99900");
    EXPECT_EQ(schema.defining("id"), schema.relation("thing"));
    EXPECT_EQ(schema.defining("sta"), nullptr);
}

TEST(SchemaReader, takes_a_range_with_what_it_covers)
{
    const auto read = read_schema(changed("\"on::off\"", "{range: \"on::off\", covers: [id, lddate]}"), "t");
    ASSERT_TRUE(read.ok()) << read.status().message();
    const KeyElement &range = (*read)->relation("site")->primary[1];
    EXPECT_EQ(range.begin, "on");
    EXPECT_EQ(range.end, "off");
    EXPECT_EQ(range.covers, (std::vector<std::string>{"id", "lddate"}));
}

TEST(SchemaReader, names_a_schema_without_a_name_after_its_file)
{
    const auto read = read_schema(changed("name: tiny\n", ""), "dir/other.yaml");
    ASSERT_TRUE(read.ok()) << read.status().message();
    EXPECT_EQ((*read)->name, "other");
}

struct BadSchema {
    const char *name;
    const char *from;
    const char *to;
    const char *failure;
};

class RefusedSchema : public testing::TestWithParam<BadSchema>
{
};

TEST_P(RefusedSchema, tells_file_line_column_and_what_was_expected)
{
    const BadSchema &bad = GetParam();
    EXPECT_EQ(failure_of(changed(bad.from, bad.to)), bad.failure);
}

INSTANTIATE_TEST_SUITE_P(
    SchemaReader, RefusedSchema,
    testing::Values(
        BadSchema{"unknown_key", "description:", "descripton:",
                  "dir/tiny.yaml:2:1: schema: unknown key 'descripton'; near it: description"},
        BadSchema{"unknown_key_of_an_attribute", "    range:", "    rnge:",
                  "dir/tiny.yaml:11:5: attribute lat: unknown key 'rnge'; near it: range"},
        BadSchema{"unknown_key_of_a_relation", "    defines: id", "    zzzzzz: id",
                  "dir/tiny.yaml:23:5: relation thing: unknown key 'zzzzzz'; known are: fields, primary, "
                  "alternate, foreign, defines, description, detail"},
        BadSchema{"missing_type", "    type: real\n", "",
                  "dir/tiny.yaml:6:3: attribute lat: 'type' is missing"},
        BadSchema{"missing_width", "    width: 9\n", "",
                  "dir/tiny.yaml:6:3: attribute lat: 'width' is missing"},
        BadSchema{"missing_format", "    format: \"%9.4f\"\n", "",
                  "dir/tiny.yaml:6:3: attribute lat: 'format' is missing"},
        BadSchema{"missing_null", "    null: \"-999.0000\"\n", "",
                  "dir/tiny.yaml:6:3: attribute lat: 'null' is missing"},
        BadSchema{"missing_fields",
                  "    fields: [sta, on, off, lat, lddate]\n    primary: [sta, \"on::off\"]\n",
                  "    description: none\n", "dir/tiny.yaml:17:3: relation site: 'fields' is missing"},
        BadSchema{
            "unknown_type", "type: real", "type: float",
            "dir/tiny.yaml:7:11: attribute lat: unknown type 'float', expected one of boolean, integer, "
            "real, time, yearday, string, dbptr"},
        BadSchema{"width_that_is_no_number", "width: 9", "width: 9.5",
                  "dir/tiny.yaml:8:12: attribute lat: width '9.5' is not a whole number from 1 to 32767"},
        BadSchema{"width_of_zero", "width: 9", "width: 0",
                  "dir/tiny.yaml:8:12: attribute lat: width '0' is not a whole number from 1 to 32767"},
        BadSchema{
            "format_that_is_none", "%9.4f", "%9.4lf",
            "dir/tiny.yaml:9:13: attribute lat: format '%9.4lf' is not one C conversion d, e, f, g or s "
            "with flags, width and precision, and without length letters"},
        BadSchema{
            "format_of_another_type", "%9.4f", "%9d",
            "dir/tiny.yaml:9:13: attribute lat: format '%9d' does not print type real, whose conversion "
            "is e, f or g"},
        BadSchema{"format_wider_than_the_field", "%9.4f", "%10.4f",
                  "dir/tiny.yaml:9:13: attribute lat: format '%10.4f' prints 10 bytes, the field is 9 wide"},
        BadSchema{
            "format_that_prints_the_null_too_wide", "%9.4f", "%9.6f",
            "dir/tiny.yaml:9:13: attribute lat: format '%9.6f' prints the null as '-999.000000', 11 bytes "
            "where the field is 9 wide"},
        BadSchema{
            "string_cut_wider_than_the_field", "%-6s", "%-6.8s",
            "dir/tiny.yaml:5:41: attribute sta: format '%-6.8s' prints up to 8 bytes, the field is 6 wide"},
        BadSchema{"null_wider_than_the_field", "-999.0000", "-9999.0000",
                  "dir/tiny.yaml:10:11: attribute lat: null '-9999.0000' has 10 bytes, the field is 9 wide"},
        BadSchema{"null_of_another_type", "-999.0000", "none",
                  "dir/tiny.yaml:10:11: attribute lat: null 'none' is not a value of type real"},
        BadSchema{"empty_range", "range: lat >= -90.0 && lat <= 90.0", "range: \"  \"",
                  "dir/tiny.yaml:11:12: attribute lat: the range is empty"},
        BadSchema{
            "field_that_is_no_attribute", "[sta, on, off, lat, lddate]", "[sta, on, off, latt, lddate]",
            "dir/tiny.yaml:18:28: relation site: field 'latt' is not an attribute of the schema; near it: "
            "lat"},
        BadSchema{"field_listed_twice", "[id, sta, lddate]", "[id, sta, id]",
                  "dir/tiny.yaml:21:23: relation thing: field 'id' is listed twice"},
        BadSchema{"no_fields_at_all", "    fields: [id, sta, lddate]\n    primary: [id]\n    defines: id\n",
                  "    fields: []\n", "dir/tiny.yaml:21:13: relation thing: has no fields"},
        BadSchema{"key_outside_the_fields", "primary: [id]", "primary: [lat]",
                  "dir/tiny.yaml:22:15: relation thing: 'lat' in 'primary' is not among its fields"},
        BadSchema{
            "alternate_key_outside_the_fields", "defines: id", "alternate: [stb]",
            "dir/tiny.yaml:23:17: relation thing: 'stb' in 'alternate' is not among its fields; near it: "
            "sta"},
        BadSchema{"foreign_key_outside_the_fields", "defines: id", "foreign: [on]",
                  "dir/tiny.yaml:23:15: relation thing: 'on' in 'foreign' is not among its fields"},
        BadSchema{"key_element_twice", "primary: [id]", "primary: [id, id]",
                  "dir/tiny.yaml:22:19: relation thing: 'id' stands twice in 'primary'"},
        BadSchema{"range_end_outside_the_fields", "on::off", "on::end",
                  "dir/tiny.yaml:19:20: relation site: 'end' in 'primary' is not among its fields"},
        BadSchema{"range_without_an_end", "on::off", "on::",
                  "dir/tiny.yaml:19:20: relation site: 'on::' in 'primary' is not a range of two fields, "
                  "'begin::end'"},
        BadSchema{"plain_field_as_range", "\"on::off\"", "{range: on}",
                  "dir/tiny.yaml:19:28: relation site: 'on' is not a range of two fields, 'begin::end'"},
        BadSchema{
            "covers_that_is_no_attribute", "\"on::off\"", "{range: \"on::off\", covers: [jdate]}",
            "dir/tiny.yaml:19:48: relation site: covers 'jdate', which is not an attribute of the schema"},
        BadSchema{"unknown_key_of_a_range", "\"on::off\"", "{range: \"on::off\", cover: [id]}",
                  "dir/tiny.yaml:19:39: relation site, primary: unknown key 'cover'; near it: covers"},
        BadSchema{"range_missing", "\"on::off\"", "{covers: [id]}",
                  "dir/tiny.yaml:19:20: relation site, primary: 'range' is missing"},
        BadSchema{
            "list_as_key_element", "\"on::off\"", "[on, off]",
            "dir/tiny.yaml:19:20: relation site: an element of 'primary' is a list where a field, a range "
            "or {range: …, covers: […]} was expected"},
        BadSchema{"defines_outside_the_fields", "defines: id", "defines: lat",
                  "dir/tiny.yaml:23:14: relation thing: defines 'lat', which is not among its fields"},
        BadSchema{
            "unknown_timestamp", "timestamp: lddate", "timestamp: lddat",
            "dir/tiny.yaml:3:12: timestamp: 'lddat' is not an attribute of the schema; near it: lddate"},
        BadSchema{"timestamp_of_another_type", "timestamp: lddate", "timestamp: lat",
                  "dir/tiny.yaml:3:12: timestamp: 'lat' is of type real where time or string was expected"},
        BadSchema{"text_where_a_mapping_belongs",
                  "  id: {type: integer, width: 8, format: \"%8d\", null: \"-1\"}", "  id: integer",
                  "dir/tiny.yaml:12:7: attribute id is a text where a mapping was expected"},
        BadSchema{"list_where_a_text_belongs", "name: tiny", "name: [tiny]",
                  "dir/tiny.yaml:1:7: schema: 'name' is a list where a text was expected"},
        BadSchema{"text_where_a_list_belongs", "fields: [id, sta, lddate]", "fields: id",
                  "dir/tiny.yaml:21:13: relation thing: 'fields' is a text where a list was expected"},
        BadSchema{"mapping_as_a_field", "[id, sta, lddate]", "[id, {sta: x}, lddate]",
                  "dir/tiny.yaml:21:18: relation thing: an element of 'fields' is a mapping where a text was "
                  "expected"},
        BadSchema{
            "name_that_no_expression_could_take", "  id: {type", "  i-d: {type",
            "dir/tiny.yaml:12:3: attribute 'i-d': a name is letters, digits and underscores, and does not "
            "begin with a digit\n"
            "dir/tiny.yaml:21:14: relation thing: field 'id' is not an attribute of the schema; near it: "
            "i-d"}),
    [](const auto &bad) { return std::string(bad.param.name); });

TEST(SchemaReader, reports_all_findings_in_the_order_of_the_file)
{
    std::string text = changed("type: real", "type: float");
    text.replace(text.find("defines: id"), 11, "defines: ib");
    text.replace(text.find("descr"), 5, "desrc");
    EXPECT_EQ(
        failure_of(text),
        "dir/tiny.yaml:2:1: schema: unknown key 'desrciption'; near it: description\n"
        "dir/tiny.yaml:7:11: attribute lat: unknown type 'float', expected one of boolean, integer, real, "
        "time, yearday, string, dbptr\n"
        "dir/tiny.yaml:23:14: relation thing: defines 'ib', which is not among its fields; near it: id");
}

TEST(SchemaReader, refuses_an_id_that_two_relations_define)
{
    std::string text = changed("    primary: [sta, \"on::off\"]\n", "    defines: sta\n");
    text.replace(text.find("defines: id"), 11, "defines: sta");
    EXPECT_EQ(failure_of(text),
              "dir/tiny.yaml:23:14: relation thing: defines 'sta', which relation site defines already");
}

TEST(SchemaReader, refuses_a_schema_without_attributes_and_relations)
{
    EXPECT_EQ(failure_of("name: x\n"), "dir/tiny.yaml:1:1: schema: 'attributes' is missing\n"
                                       "dir/tiny.yaml:1:1: schema: 'relations' is missing");
    EXPECT_EQ(failure_of("attributes: {}\nrelations: {}\n"), "dir/tiny.yaml:2:12: relations: there are none");
}

TEST(SchemaReader, bounds_the_number_of_findings_it_tells)
{
    std::string text = "attributes:\n";
    for (int i = 0; i < 200; ++i)
        text += "  a" + std::to_string(i) + ": {width: 1, format: \"%d\", null: \"1\"}\n";
    text += "relations:\n  r: {fields: [a0]}\n";
    const std::string failure = failure_of(text);
    EXPECT_EQ(std::count(failure.begin(), failure.end(), '\n'), 50);
    EXPECT_TRUE(failure.ends_with("\ndir/tiny.yaml: and 150 more")) << failure;
}

TEST(SchemaReader, refuses_what_is_not_yaml_with_the_place_in_the_log)
{
    EXPECT_EQ(failure_of("attributes: [a\nrelations: {}\n"),
              "dir/tiny.yaml: is not a parameter file (YAML mappings, lists and texts)");
    char *log = elog_string(0);
    EXPECT_NE(std::string(log).find("dir/tiny.yaml"), std::string::npos) << log;
    free(log);
    elog_clear();
}

TEST(SchemaReader, refuses_an_attribute_or_relation_that_is_there_twice)
{
    for (const char *copy : {"  sta: {type: string, width: 6, format: \"%-6s\", null: \"-\"}\n"}) {
        const std::string text = changed("  lat:\n", std::string(copy) + "  lat:\n");
        EXPECT_NE(failure_of(text), "(read)");
        char *log = elog_string(0);
        EXPECT_NE(std::string(log).find("dir/tiny.yaml:6"), std::string::npos) << log;
        free(log);
    }
    EXPECT_NE(failure_of(good + "  site: {fields: [sta]}\n"), "(read)");
    elog_clear();
}

TEST(SchemaReader, refuses_binary_data_with_the_place)
{
    EXPECT_EQ(failure_of(std::string("name: x\0y", 9)),
              "dir/tiny.yaml: is binary: byte 7 is zero, text was expected");
}

TEST(SchemaReader, survives_every_cut_and_every_changed_byte_of_a_schema)
{
    for (std::size_t length = 0; length < good.size(); ++length)
        static_cast<void>(failure_of(good.substr(0, length)));
    for (std::size_t at = 0; at < good.size(); ++at)
        for (char byte : {'\0', ':', '{', '\n', '\xff', '9'}) {
            std::string text = good;
            text[at] = byte;
            static_cast<void>(failure_of(text));
        }
    elog_clear();
    SUCCEED();
}
