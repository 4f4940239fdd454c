#include "open_database.h"

#include <QMessageBox>
#include <QTimer>
#include <gtest/gtest.h>
#include <orvane/util.h>

#include <qovutil.h>

namespace {

struct Tooltip : testing::Test {
    OpenSites sites;

    std::unique_ptr<QDbptr> table(const char *name) const
    {
        return std::unique_ptr<QDbptr>(sites.model->getQDbptr()->lookupTable(name));
    }
    std::unique_ptr<QDbptr> field(const char *tableName, const char *name) const
    {
        return std::unique_ptr<QDbptr>(table(tableName)->lookupField(name));
    }
    std::unique_ptr<QDbptr> record(const char *tableName, int number) const
    {
        return std::unique_ptr<QDbptr>(table(tableName)->lookupRecord(number));
    }
    static QString tip(const std::unique_ptr<QDbptr> &handle, OvConfig *config = nullptr)
    {
        return qovutil_getToolTipString(handle.get(), config);
    }
    static QString taken(char *text)
    {
        const QString result = QString::fromUtf8(strtrim(text));
        free(text);
        return result;
    }
    // The cell of a label in a record's tooltip.
    static QString pair(const QString &tooltip, const QString &label)
    {
        const QString start = "<td><b>" + label + ":</b></td><td style='white-space: nowrap'>";
        const int from = tooltip.indexOf(start) + start.length();
        return tooltip.mid(from, tooltip.indexOf("</td>", from) - from);
    }
};

TEST_F(Tooltip, OfADatabase)
{
    const QString path = sites.files.name();
    const QString folder = QString::fromStdString(sites.files.folder());
    const QString dbpath = sites.model->getQDbptr()->getDbPath();
    EXPECT_TRUE(dbpath.contains(folder) || dbpath == ".") << dbpath.toStdString();
    EXPECT_EQ(qovutil_getToolTipString(sites.model->getQDbptr(), nullptr),
              "<table>\n"
              "<tr><td width=160><b>Database name:</b></td><td width=400>" +
                  path +
                  "</td></tr>\n"
                  "<tr><td><b>Database dbpath:</b></td><td>" +
                  dbpath +
                  "</td></tr>\n"
                  "<tr></tr>\n"
                  "<tr><td><b>Launch path:</b></td><td>" +
                  path +
                  "</td></tr>\n"
                  "<tr><td><b>Absolute path:</b></td><td>" +
                  path +
                  "</td></tr>\n"
                  "<tr><td><b>Dblocks:</b></td><td>local</td></tr>\n"
                  "<tr><td><b>Dbidserver:</b></td><td></td></tr>\n"
                  "<tr></tr>\n"
                  "<tr><td><b>Schema:</b></td><td>small</td></tr>\n"
                  "<tr><td><b>Schema description:</b></td><td>a small schema</td></tr>\n"
                  "<tr><td><b>Timestamp field:</b></td><td>lddate</td></tr>\n"
                  "</table>\n"
                  "<br/>\n<br/>\n"
                  "<b>Schema detail:</b>\n"
                  "<pre>" +
                  sites.model->getQDbptr()->getSchemaDetail() + "</pre>");
    EXPECT_TRUE(sites.model->getQDbptr()->getSchemaDetail().contains("every type, every kind of key."));
}

TEST_F(Tooltip, OfABaseTable)
{
    const std::unique_ptr<QDbptr> site = table("site");
    const double time = site->getTableModTime();
    const int recordSize = static_cast<int>(sites.files.record("site", {}).size()) + 1;
    EXPECT_EQ(tip(site),
              "<table>\n"
              "<tr><td width=160><b>Table:</b></td><td width=400><b><i>site</i></b></td></tr>\n"
              "<tr><td width=160><b>Table type:</b></td><td width=400>Base Table</td></tr>\n"
              "<tr><td><b>Description:</b></td><td>station locations</td></tr>\n"
              "<tr><td><b>File:</b></td><td>" +
                  site->getTableFilename() +
                  "</td></tr>\n"
                  "<tr><td><b>Unix permissions:</b></td><td>Read-only</td></tr>\n"
                  "<tr><td><b>Modified:</b></td><td>" +
                  taken(strlocaltime(time)) + "(" + taken(strtdelta(std_now() - time)) +
                  " ago)</td></tr>\n"
                  "<tr></tr>\n"
                  "<tr><td><b>Table size:</b></td><td>" +
                  QString::number(3 * recordSize) +
                  " bytes</td></tr>\n"
                  "<tr><td><b>Record size:</b></td><td>" +
                  QString::number(recordSize) +
                  " bytes per record</td></tr>\n"
                  "<tr><td><b>Record count:</b></td><td>3 records</td></tr>\n"
                  "<tr></tr>\n"
                  "<tr><td><b>Primary keys:</b></td><td><i>sta</i>, <i>ondate::offdate</i></td></tr>\n"
                  "<tr><td><b>Alternate keys:</b></td><td><i></i></td></tr>\n"
                  "<tr><td><b>Foreign keys:</b></td><td><i></i></td></tr>\n"
                  "<tr><td><b>Defines:</b></td><td><i></i></td></tr>\n"
                  "</table>\n"
                  "<br/><br/>\n"
                  "<b>Detailed description:</b>\n"
                  "<pre>" +
                  site->getTableDetail() + "</pre>\n");
    EXPECT_TRUE(site->getTableDetail().contains("Where stations stand."));
}

TEST_F(Tooltip, OfAView)
{
    const std::unique_ptr<QDbptr> view(table("site")->subset("lat < 50", "southern"));
    EXPECT_EQ(tip(view),
              "<table>\n"
              "<tr><td width=160><b>Table:</b></td><td width=400><b><i>southern</i></b></td></tr>\n"
              "<tr><td width=160><b>Table type:</b></td><td width=400>View</td></tr>\n"
              "<tr></tr>\n"
              "<tr><td><b>Record count:</b></td><td>2 records</td></tr>\n"
              "<tr></tr>\n"
              "<tr><td><b>View tables:</b></td><td><i>site</i></td></tr>\n"
              "<tr></tr>\n"
              "<tr><td><b>Table creation:</b></td><td><b><i>"
              "dbopen site<br/>dbsubset lat &lt; 50</i></b></td></tr>\n");
    EXPECT_EQ(sites.table("southern")->getTableToolTipString(), tip(view));
}

TEST_F(Tooltip, OfATableToWriteSaysSo)
{
    OvConfig config;
    OrvaneDatabaseModel model(config, sites.files.name(), "r+");
    EXPECT_TRUE(model.getTableModel("site")->getTableToolTipString().contains(
        "<tr><td><b>Unix permissions:</b></td><td>Read/Write</td></tr>\n"));
}

TEST_F(Tooltip, SaysOneRecordAndWhatATableDefines)
{
    sites.files.addTable("origin", {{"1.0", "2.0"}});
    const QString text = tip(table("origin"));
    EXPECT_TRUE(text.contains("<tr><td><b>Record count:</b></td><td>1 record</td></tr>\n"));
    EXPECT_TRUE(text.contains("<tr><td><b>Defines:</b></td><td><i>orid</i></td></tr>\n"));
    EXPECT_TRUE(text.contains("<tr><td><b>Foreign keys:</b></td><td><i>evid</i>, <i>commid</i></td></tr>\n"));
}

// The tooltip of a table of so many bytes: of two records, at its ends, and a hole between them.
QString tooltipOfTable(std::uintmax_t bytes, std::uintmax_t recordSize)
{
    TemporaryDatabase files(
        "text", "name: text\nattributes:\n  word: {type: string, width: " + std::to_string(recordSize - 1) +
                    ", format: \"%s\", null: \"-\"}\nrelations:\n  text: {fields: [word]}\n");
    files.addTable("text", {{"first"}});
    std::filesystem::resize_file(files.tablePath("text"), bytes);
    std::fstream file(files.tablePath("text"), std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(static_cast<std::streamoff>(bytes - recordSize));
    file << files.record("text", {"last"}) << "\n" << std::flush;
    OvConfig config;
    OrvaneDatabaseModel model(config, QString::fromStdString(files.path()), "r");
    return model.getTableModel("text")->getTableToolTipString();
}

TEST(ToolTipSizes, AreSaidInStepsOf1024)
{
    const struct {
        std::uintmax_t bytes, recordSize;
        const char *text;
    } sizes[] = {
        {1023, 33, "1023 bytes"},
        {1024, 8, "1.0 kilobytes"},
        {1536, 8, "1.5 kilobytes"},
        {1048576, 8, "1.0 megabytes"},
        {std::uintmax_t(1) << 30, 8, "1.0 gigabytes"},
        {std::uintmax_t(1) << 31, 8, "2.0 gigabytes"}, // beyond what an int holds
        {std::uintmax_t(1) << 42, 8, "4.0 gigabytes"}, // the number of terabytes
    };
    for (const auto &size : sizes) {
        const QString row = QString("<tr><td><b>Table size:</b></td><td>%1</td></tr>\n").arg(size.text);
        const QString tooltip = tooltipOfTable(size.bytes, size.recordSize);
        EXPECT_TRUE(tooltip.contains(row)) << size.text << " in " << tooltip.toStdString();
    }
}

TEST_F(Tooltip, OfAField)
{
    EXPECT_EQ(tip(field("site", "lat")),
              "<table>\n"
              "<tr><td width=160><b>Field:</b></td><td width=250><b><i>lat</i></b></td></tr>\n"
              "<tr><td><b>Description:</td><td>latitude</td></tr>\n"
              "\n"
              "<tr><td><b>Type:</td><td>real</td></tr>\n"
              "<tr><td><b>Size:</td><td>9 bytes</td></tr>\n"
              "<tr><td><b>Format:</td><td>%9.4f</td></tr>\n"
              "<tr><td><b>Position in row:</td><td>25-34 (zero offset)</td></tr>\n"
              "<tr><td><b>Range:</td><td>lat >= -90.0 && lat &lt;= 90.0</td></tr>\n"
              "<tr><td><b>Units:</td><td>degrees</td></tr>\n"
              "<tr><td><b>Null value:</td><td>-999.0000</td></tr>\n"
              "<tr><td><b>Defining for table:</td><td><i></i></td></tr>\n"
              "<tr><td><b>Key type for '<i>site</i>':</td><td></td></tr>\n"
              "<tr><td><b>Column empty:</td><td>No</td></tr>\n"
              "</table>\n"
              "<br/><br/>\n"
              "<b>Detailed description:</b>\n"
              "<pre>Geographic latitude, north positive.</pre>\n");
}

TEST_F(Tooltip, NamesTheTypesOfFields)
{
    const char *const fields[] = {"flag", "orid", "lat", "time", "jdate", "sta", "bundle"};
    const char *const types[] = {"boolean", "integer", "real", "time", "yearday", "string", "dbptr"};
    for (size_t i = 0; i < std::size(fields); ++i) {
        EXPECT_TRUE(tip(field("kinds", fields[i]))
                        .contains(QString("<tr><td><b>Type:</td><td>%1</td></tr>\n").arg(types[i])))
            << fields[i];
    }
}

TEST_F(Tooltip, SaysHowAFieldTakesPartInKeys)
{
    const struct {
        const char *table, *field, *text;
    } keys[] = {
        {"site", "sta", "Primary"},
        {"site", "ondate", "Primary (<i>ondate::offdate</i>)"},
        {"site", "offdate", "Primary (<i>ondate::offdate</i>)"},
        {"site", "elev", ""},
        {"origin", "orid", "Alternate"},
        {"origin", "evid", "Foreign"},
        {"assoc", "arid", "Primary"}, // foreign too
    };
    for (const auto &key : keys) {
        const QString row =
            QString("<tr><td><b>Key type for '<i>%1</i>':</td><td>%2</td></tr>\n").arg(key.table, key.text);
        EXPECT_TRUE(tip(field(key.table, key.field)).contains(row)) << key.field;
    }
}

TEST_F(Tooltip, SaysWhichTableDefinesAnId)
{
    EXPECT_TRUE(tip(field("assoc", "orid"))
                    .contains("<tr><td><b>Defining for table:</td><td><i>origin</i></td></tr>\n"));
}

TEST_F(Tooltip, SaysThatAColumnIsProbablyEmpty)
{
    EXPECT_TRUE(
        tip(field("origin", "lat")).contains("<tr><td><b>Column empty:</td><td>Probably</td></tr>\n"));
}

TEST_F(Tooltip, OfARecord)
{
    const QString size = QString::number(sites.files.record("site", {}).size() + 1);
    const auto line = [](const QString &name, const QString &value) {
        return "<tr><td><b>" + name + ":</b></td><td style='white-space: nowrap'>" + value +
               "</td><td></td></tr>\n";
    };
    EXPECT_EQ(tip(record("site", 0)), "<table>\n"
                                      "<tr><td><b>Record index:</b></td><td>0</td></tr>\n"
                                      "<tr><td><b>Record size:</b></td><td>" +
                                          size +
                                          " bytes</td></tr>\n"
                                          "</table>\n<hr/>\n<table>\n" +
                                          line("sta", "AAK") + line("ondate", "2008001") +
                                          line("offdate", "") + line("lat", "42.6390") +
                                          line("lon", "74.4940") + line("elev", "1.6450") +
                                          line("staname", "Ala Archa, Kyrgyzstan") +
                                          line("lddate", "1517961600.00000") + "</table>\n");
}

TEST_F(Tooltip, OfARecordShowsNullsAndTimesAsConfigured)
{
    OvConfig &config = sites.config;
    sites.table(); // sets the defaults
    const std::unique_ptr<QDbptr> first = record("site", 0);
    EXPECT_EQ(pair(tip(first, &config), "lddate"), "02/07/2018 (038) 00:00:00.000000 UTC");
    EXPECT_EQ(pair(tip(first, &config), "offdate"), "");
    config.configure("show_raw_nulls", true);
    EXPECT_EQ(pair(tip(first, &config), "offdate"), "-1");
    EXPECT_EQ(pair(tip(first), "offdate"), "");
    config.configure("time_string_format", QString("%H:%M"));
    config.configure("local_time_zone", QString("Asia/Bishkek"));
    EXPECT_EQ(pair(tip(first, &config), "lddate"), "00:00");
    config.configure("show_times_in_local_zone", true);
    EXPECT_EQ(pair(tip(first, &config), "lddate"), "06:00");
    config.configure("show_readable_times", false);
    EXPECT_EQ(pair(tip(first, &config), "lddate"), "1517961600.00000");

    OvConfig withoutFormat;
    withoutFormat.configure("show_readable_times", true);
    EXPECT_EQ(pair(tip(first, &withoutFormat), "lddate"), "1517961600.00000");
}

TEST_F(Tooltip, CutsLongTextsTo34Characters)
{
    const std::string text34 = "1234567890123456789012345678901234";
    sites.files.addTable(
        "site", {{"A", "1", "1", "1", "1", "1", text34}, {"A", "1", "1", "1", "1", "1", text34 + "5"}});
    EXPECT_EQ(pair(tip(record("site", 0)), "staname"), QString::fromStdString(text34));
    EXPECT_EQ(pair(tip(record("site", 1)), "staname"), "1234567890123456789012345678901...");
}

// A schema with one table of so many one-digit fields, f0 to fN, and one record in it.
struct ManyFields {
    static std::string schema(int count)
    {
        std::string attributes = "name: many\nattributes:\n", fields;
        for (int i = 0; i < count; ++i) {
            attributes +=
                "  f" + std::to_string(i) + ": {type: integer, width: 2, format: \"%2d\", null: \"-1\"}\n";
            fields += (i ? ", f" : "f") + std::to_string(i);
        }
        return attributes + "relations:\n  many: {fields: [" + fields + "]}\n";
    }

    explicit ManyFields(int count) : files("many", schema(count))
    {
        files.addTable("many", {TemporaryDatabase::Row(static_cast<size_t>(count), "7")});
        model = std::make_unique<OrvaneDatabaseModel>(config, QString::fromStdString(files.path()), "r");
        QDbptr *first = static_cast<QDbptr *>(model->getTableModel("many")->indexForRow(0).internalPointer());
        tooltip = qovutil_getToolTipString(first, nullptr);
    }

    TemporaryDatabase files;
    OvConfig config;
    std::unique_ptr<OrvaneDatabaseModel> model;
    QString tooltip;
};

QString cells(int number)
{
    return QString("<td><b>f%1:</b></td><td style='white-space: nowrap'>7</td>").arg(number);
}

TEST_F(Tooltip, OfARecordOf31FieldsHasTheLastOneBesideTheFirst)
{
    QString grid = "<hr/>\n<table>\n<tr>" + cells(0) + cells(30) + "</tr>\n";
    for (int i = 1; i < 30; ++i)
        grid += "<tr>" + cells(i) + "<td></td></tr>\n";
    const ManyFields many(31);
    EXPECT_TRUE(many.tooltip.endsWith(grid + "</table>\n")) << many.tooltip.toStdString();
}

TEST_F(Tooltip, OfARecordOf30FieldsHasAnEmptyColumnBeside)
{
    QString grid = "<hr/>\n<table>\n";
    for (int i = 0; i < 30; ++i)
        grid += "<tr>" + cells(i) + "<td></td></tr>\n";
    const ManyFields many(30);
    EXPECT_TRUE(many.tooltip.endsWith(grid + "</table>\n")) << many.tooltip.toStdString();
}

TEST_F(Tooltip, OfACellAndOfAnInvalidHandleIsEmpty)
{
    std::unique_ptr<QDbptr> cell(field("site", "lat")->lookupRecord(0));
    ASSERT_EQ(cell->getDbptrType(), DbptrCell);
    EXPECT_EQ(tip(cell), "");
    QDbptr invalid;
    EXPECT_EQ(qovutil_getToolTipString(&invalid, nullptr), "");
}

TEST_F(Tooltip, LetsTheErrorsOfRequestsThrough)
{
    std::unique_ptr<QDbptr> gone = record("site", 1000);
    elog_clear();
    EXPECT_THROW(tip(gone), std::runtime_error);
    EXPECT_EQ(elog_count(), 0);
}

TEST(ToolTipLists, AreInItalics)
{
    EXPECT_EQ(qovutil_stringList2QString({}), "<i></i>");
    EXPECT_EQ(qovutil_stringList2QString({"sta"}), "<i>sta</i>");
    EXPECT_EQ(qovutil_stringList2QString({"sta", "time"}), "<i>sta</i>, <i>time</i>");
}

TEST(ShowError, ShowsTheTextInABoxOfItsParentAndReturnsItsResult)
{
    QWidget parent;
    QString shown;
    QTimer::singleShot(0, [&] {
        auto *box = parent.findChild<QMessageBox *>();
        ASSERT_TRUE(box);
        shown = box->text();
        EXPECT_TRUE(box->isModal());
        EXPECT_EQ(box->textFormat(), Qt::PlainText);
        box->done(QMessageBox::Ok);
    });
    EXPECT_EQ(qovutil_showError("The table 'site' is gone", &parent), QMessageBox::Ok);
    EXPECT_EQ(shown, "The table 'site' is gone");
    EXPECT_TRUE(parent.findChild<QMessageBox *>());
}

} // namespace
