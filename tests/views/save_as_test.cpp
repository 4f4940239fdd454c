// Saving the table shown in every form, read again by other programs.
#include <orvanedatabaseview.h>

#include <QDir>
#include <QFileDialog>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QProcess>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <vector>

#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <orvane/db.h>

#include <orvanetableview.h>
#include <qdbptr.h>

#include "database_window.h"
#include "support/file_size_limit.h"
#include "support/user.h"

namespace {

using testing::StartsWith;

const char *const newDatabase = "New Database";
const char *const view = "View";
const char *const spreadsheet = "Excel Spreadsheet (*.xlsx)";
const char *const spaces = "Text File -- spaces (*.txt)";
const char *const tabs = "Text File -- tabs (*.tsv)";
const char *const commas = "Text File -- commas (*.csv)";
const char *const picture = "Image File (*.png)";

enum class Answer { No, Yes };

// Closes message boxes while it lives, keeps their texts, and answers questions.
class AnsweredBoxes
{
public:
    explicit AnsweredBoxes(Answer answer)
    {
        QObject::connect(&m_timer, &QTimer::timeout, [this, answer] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (box == nullptr) {
                return;
            }
            QAbstractButton *yes = box->button(QMessageBox::Yes);
            if (yes != nullptr && answer == Answer::Yes) {
                yes->click();
                return;
            }
            m_texts.append(box->text());
            box->reject();
        });
        m_timer.start(1);
    }

    QStringList texts() const { return m_texts; }

private:
    QTimer m_timer;
    QStringList m_texts;
};

class SavingAs : public DatabaseWindow
{
protected:
    SavingAs()
    {
        database.files.addTable(
            "site", {{"AAK", "2008001", "-1", "42.6390", "74.4940", "1.6800", "Ala \"Archa\", Kyrgyzstan"},
                     {"KONO", "2001001", "-1", "59.6491", "9.5982", "-999.0000", "Kongsberg"},
                     {"ANTO", "2001001", "2010001", "39.8680", "32.7934", "1.0900", "=1+1"}});
        database.files.addTable("arrival", {{"AAK", "1517875201.50000", "1", "2018037", "P"},
                                            {"KONO", "1517875101.25000", "2", "2018037", "S"}});
        window.resize(400, 300);
        window.setModel(&database.open());
    }

    // Runs the command, choosing a form and a file. Returns what message boxes said, of which those that ask
    // are answered as is told.
    QStringList save(const char *form, const QString &file, Answer answer = Answer::No)
    {
        const AnsweredBoxes boxes(answer);
        User user;
        user.meets<QFileDialog>([&](QFileDialog &dialog) {
            m_title = dialog.windowTitle();
            m_filters = dialog.nameFilters();
            m_selected = dialog.selectedNameFilter();
            m_proposed = dialog.selectedFiles().value(0);
            dialog.selectNameFilter(form);
            auto *name = dialog.findChild<QLineEdit *>("fileNameEdit");
            if (!file.isEmpty()) {
                name->setText(file);
            }
            QTest::keyClick(name, Qt::Key_Return);
            if (dialog.isVisible()) { // the file that is there shall stay
                dialog.reject();
            }
        });
        window.saveAs();
        return boxes.texts();
    }

    QString path(const char *name) { return QString::fromStdString(database.files.folder() + "/" + name); }
    static std::string content(const QString &file)
    {
        return TemporaryDatabase::readFile(file.toStdString());
    }
    static bool exists(const QString &file) { return std::filesystem::exists(file.toStdString()); }
    std::string tableFile(const char *table) { return content(path("quakes.") + table); }
    QStringList names()
    {
        return QDir(QString::fromStdString(database.files.folder()))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    // What a Python program prints, as JSON.
    static QJsonDocument python(const char *program, const QString &file)
    {
        QProcess process;
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(ORVANE_PYTHON, {"-c", program, file});
        EXPECT_TRUE(process.waitForFinished());
        EXPECT_EQ(process.exitCode(), 0);
        return QJsonDocument::fromJson(process.readAllStandardOutput());
    }

    // The table shown as rows of trimmed texts.
    QJsonArray shownTexts(bool hasHeader)
    {
        OrvaneTableModel &table = *window.getCurrentTableModel();
        QJsonArray rows;
        if (hasHeader) {
            rows.append(QJsonArray::fromStringList(table.getTableFields()));
        }
        for (int row = 0; row < table.rowCount(); ++row) {
            QJsonArray texts;
            for (int column = 1; column < table.columnCount(); ++column) {
                Dbptr field = table.getFacadeDbptr();
                field.field = column - 1;
                field.record = row;
                char text[256] = "";
                EXPECT_GE(dbget(field, text, sizeof text), 0);
                texts.append(QString(text).trimmed());
            }
            rows.append(texts);
        }
        return rows;
    }

    QString m_title;
    QStringList m_filters;
    QString m_selected;
    QString m_proposed;
};

const char *const readCommas = "import csv, json, sys\n"
                               "print(json.dumps(list(csv.reader(open(sys.argv[1], newline='')))))";
const char *const readTabs =
    "import csv, json, sys\n"
    "print(json.dumps(list(csv.reader(open(sys.argv[1], newline=''), delimiter='\\t'))))";
// The sheet as a stream: how many rows and cells, and the rows 1, 2, 1000 and the last as lists.
const char *const streamSheet = R"(
import json, sys, xml.parsers.expat, zipfile
rows, row, text, cells = [], None, None, 0
def begin(name, attributes):
    global row, text
    if name == 'row': row = []
    elif name in ('v', 't'): text = ''
def characters(more):
    global text
    if text is not None: text += more
def end(name):
    global text, cells
    if name in ('v', 't'):
        row.append(text)
        text = None
        cells += 1
    elif name == 'row':
        rows.append(row if len(rows) in (0, 1, 999) else None)
parser = xml.parsers.expat.ParserCreate()
parser.buffer_text = True
parser.StartElementHandler, parser.EndElementHandler, parser.CharacterDataHandler = begin, end, characters
parser.ParseFile(zipfile.ZipFile(sys.argv[1]).open('xl/worksheets/sheet1.xml'))
print(json.dumps({'rows': len(rows), 'cells': cells, 'some': [rows[0], rows[1], rows[999], row]}))
)";
const char *const readSheet =
    "import datetime, json, openpyxl, sys\n"
    "sheet = openpyxl.load_workbook(sys.argv[1]).active\n"
    "def cell(c):\n"
    "    v = c.value\n"
    "    if isinstance(v, datetime.datetime): v = v.isoformat(timespec='milliseconds')\n"
    "    return {'value': v, 'type': c.data_type, 'bold': c.font.b, 'format': c.number_format}\n"
    "print(json.dumps({'rows': [[cell(c) for c in row] for row in sheet.iter_rows()],\n"
    "                  'widths': [d.width for _, d in sorted(sheet.column_dimensions.items())]}))";

TEST_F(SavingAs, AsksForAFileBesideTheDatabase)
{
    window.addTable(window.getCurrentTableModel()->subset("lat > 40", "north"));
    window.setFocusTable("north");
    EXPECT_EQ(save(view, ""), QStringList()); // keeps what is proposed
    EXPECT_EQ(m_title, "Save As...");
    EXPECT_EQ(m_filters, QStringList({newDatabase, view, spreadsheet, spaces, tabs, commas, picture}));
    EXPECT_EQ(m_selected, view);
    EXPECT_EQ(m_proposed, path("quakes.north"));
}

TEST_F(SavingAs, CancelledWritesNothing)
{
    const QStringList before = names();
    User user;
    user.cancels();
    window.saveAs();
    EXPECT_EQ(names(), before);
}

// As by a dialog that knows other forms than the window does.
TEST_F(SavingAs, AnUnknownFormIsSaidToBeOne)
{
    const AnsweredBoxes boxes(Answer::No);
    const QStringList before = names();
    User user;
    user.meets<QFileDialog>([&](QFileDialog &dialog) {
        dialog.setNameFilter("Clay Tablet");
        auto *name = dialog.findChild<QLineEdit *>("fileNameEdit");
        name->setText(path("tablet"));
        QTest::keyClick(name, Qt::Key_Return);
    });
    window.saveAs();
    EXPECT_EQ(boxes.texts(),
              QStringList("Unexpected internal logic error -- unknown format from SaveAs Dialog"));
    EXPECT_EQ(names(), before);
}

TEST_F(SavingAs, WithoutADatabaseDoesNothing)
{
    OrvaneDatabaseView empty(database.config);
    empty.saveAs();
    empty.mapCurrent();
}

// ---- Text ----------------------------------------------------------------------------------------------

TEST_F(SavingAs, SpacesWriteFieldsAsTheyStand)
{
    database.config.configure("saveas_includes_headers", false);
    EXPECT_EQ(save(spaces, path("all.txt")), QStringList());
    EXPECT_EQ(content(path("all.txt")), tableFile("site"));
    database.config.configure("saveas_includes_headers", true);
    EXPECT_EQ(save(spaces, path("header.txt")), QStringList());
    const std::string text = content(path("header.txt"));
    EXPECT_THAT(text, StartsWith("sta"));
    EXPECT_EQ(text.substr(text.find('\n') + 1), tableFile("site"));
}

TEST_F(SavingAs, CommasAndTabsAreReadByOthers)
{
    // All fields, whatever columns are shown.
    window.getCurrentTableView()->setFieldNamesVisible({"sta"});
    EXPECT_EQ(save(commas, path("all.csv")), QStringList());
    EXPECT_EQ(python(readCommas, path("all.csv")).array(), shownTexts(true));
    EXPECT_EQ(save(tabs, path("all.tsv")), QStringList());
    EXPECT_EQ(python(readTabs, path("all.tsv")).array(), shownTexts(true));
    database.config.configure("saveas_includes_headers", false);
    EXPECT_EQ(save(commas, path("bare.csv")), QStringList());
    EXPECT_EQ(python(readCommas, path("bare.csv")).array(), shownTexts(false));
}

TEST_F(SavingAs, WritesTheRowsInTheOrderShown)
{
    database.config.configure("saveas_includes_headers", false);
    window.getCurrentTableModel()->sort(1, Qt::DescendingOrder);
    EXPECT_EQ(save(commas, path("sorted.csv")), QStringList());
    const QJsonArray rows = python(readCommas, path("sorted.csv")).array();
    EXPECT_EQ(rows, shownTexts(false));
    EXPECT_EQ(rows[0][0].toString(), "KONO");
    EXPECT_EQ(save(newDatabase, path("sorted")), QStringList());
    EXPECT_THAT(content(path("sorted.site")), StartsWith("KONO"));
}

// ---- Failures ------------------------------------------------------------------------------------------

TEST_F(SavingAs, TellsWhyAFileCannotBeWritten)
{
    for (const char *form : {spaces, tabs, commas}) {
        const QStringList said = save(form, "/nowhere/file.txt");
        ASSERT_EQ(said.size(), 1);
        EXPECT_THAT(said[0].toStdString(), StartsWith("dbselect failed:\n\n"));
        EXPECT_TRUE(said[0].endsWith("No such file or directory")) << said[0].toStdString();
    }
    QStringList said = save(view, "/nowhere/file");
    ASSERT_EQ(said.size(), 1);
    EXPECT_THAT(said[0].toStdString(), StartsWith("dbwrite_view failed:\n\n"));
    EXPECT_EQ(save(spreadsheet, "/nowhere/file.xlsx"),
              QStringList("/nowhere/file.xlsx: cannot be written: No such file or directory"));
    EXPECT_EQ(save(picture, "/nowhere/file.png"),
              QStringList("/nowhere/file.png: cannot be written: No such file or directory"));
}

TEST_F(SavingAs, TellsThatTheDiskIsFull)
{
    ASSERT_EQ(symlink("/dev/full", path("full").toLocal8Bit().constData()), 0);
    for (const char *form : {spaces, tabs, commas, view}) {
        const QStringList said = save(form, path("full"), Answer::Yes);
        ASSERT_EQ(said.size(), 1) << form;
        EXPECT_TRUE(said[0].contains("No space left on device")) << said[0].toStdString();
    }
}

TEST_F(SavingAs, ThatADiskHasNoRoomForLeavesTheFileThatWasThere)
{
    std::vector<TemporaryDatabase::Row> rows(3000, {"AAK", "1517875201.50000", "1", "2018037", "P"});
    database.files.addTable("arrival", rows);
    database.config.configure("request_view_names", false);
    window.setModel(nullptr);
    window.setModel(&database.open());
    window.setFocusTable("arrival");
    OrvaneTableModel *some = window.getCurrentTableModel()->subset("arid > 0", "some");
    for (const char *table : {"arrival", "some"}) {
        if (table == some->getTableName()) {
            window.addTable(some);
        }
        window.setFocusTable(table);
        const bool isBaseTable = !window.getCurrentTableModel()->tableIsView();
        for (const char *form : {newDatabase, view, spreadsheet, spaces, tabs, commas, picture}) {
            const std::string name = std::string("full") + (form == newDatabase ? "db" : "");
            database.files.writeFile(form == newDatabase ? name + ".arrival" : name, "precious\n");
            const QStringList before = names();
            QStringList said;
            {
                const FileSizeLimit limit(2048);
                said = save(form, path(name.c_str()), Answer::Yes);
            }
            EXPECT_EQ(names(), before) << form;
            EXPECT_EQ(content(path(name.c_str()) + (form == newDatabase ? ".arrival" : "")), "precious\n")
                << form;
            if (form == newDatabase && isBaseTable) {
                EXPECT_EQ(said, QStringList()); // its reason is in the error log
                continue;
            }
            ASSERT_EQ(said.size(), 1) << form;
            EXPECT_TRUE(said[0].contains("File too large") || form == newDatabase) << said[0].toStdString();
        }
    }
    // A new database, and a view that belongs to the database.
    const QStringList before = names();
    for (const char *form : {newDatabase, view}) {
        const FileSizeLimit limit(2048);
        const QStringList said = save(form, form == view ? QString() : path("new"));
        ASSERT_EQ(said.size(), 1) << form;
        EXPECT_THAT(said[0].toStdString(),
                    StartsWith(form == view ? "dbsave_view failed:\n\n" : "dbunjoin failed:\n\n"));
        EXPECT_TRUE(said[0].contains("File too large")) << said[0].toStdString();
        EXPECT_EQ(names(), before) << form;
    }
}

TEST_F(SavingAs, AFileThatIsThereIsReplacedOnlyIfTheUserSaysSo)
{
    for (const char *form : {view, spreadsheet, spaces, tabs, commas, picture}) {
        database.files.writeFile("mine", "precious\n");
        const QStringList said = save(form, path("mine"), Answer::No);
        ASSERT_EQ(said.size(), 1) << form;
        EXPECT_TRUE(said[0].contains("mine already exists")) << said[0].toStdString();
        EXPECT_EQ(content(path("mine")), "precious\n") << form;
        EXPECT_EQ(save(form, path("mine"), Answer::Yes), QStringList()) << form;
        EXPECT_NE(content(path("mine")), "precious\n") << form;
    }
}

TEST_F(SavingAs, LeavesNothingBesideTheFile)
{
    const QStringList before = names();
    save(commas, path("a.csv"));
    save(picture, path("a.png"));
    save(spreadsheet, path("a.xlsx"));
    EXPECT_EQ(names().size(), before.size() + 3);
}

TEST_F(SavingAs, ThatIsCancelledLeavesTheFileThatWasThere)
{
    std::vector<TemporaryDatabase::Row> rows(400000, {"AAK", "1517875201.50000", "1", "2018037", "P"});
    database.files.addTable("arrival", rows);
    window.setModel(nullptr);
    window.setModel(&database.open());
    window.setFocusTable("arrival");
    dbset_progress_hook([](double, void *) { return 1; }, nullptr);
    const QStringList before = names();
    const QStringList said = save(spreadsheet, path("a.xlsx"));
    dbset_progress_hook(nullptr, nullptr);
    EXPECT_EQ(said, QStringList("spreadsheet: cancelled"));
    EXPECT_EQ(names(), before);
}

// Where all rows are with the writer, which then works by itself.
TEST_F(SavingAs, ThatIsCancelledAtTheEndLeavesNothingEither)
{
    std::vector<TemporaryDatabase::Row> rows(100000, {"AAK", "1517875201.50000", "1", "2018037", "P"});
    database.files.addTable("arrival", rows);
    window.setModel(nullptr);
    window.setModel(&database.open());
    window.setFocusTable("arrival");
    const QStringList before = names();
    dbset_progress_hook([](double fraction, void *) { return fraction >= 0.6 ? 1 : 0; }, nullptr);
    const QStringList said = save(spreadsheet, path("a.xlsx"));
    dbset_progress_hook(nullptr, nullptr);
    EXPECT_EQ(said, QStringList("spreadsheet: cancelled"));
    EXPECT_FALSE(QFile::exists(path("a.xlsx")));
    // What the writer still writes goes when it is done.
    for (int i = 0; i < 300 && names() != before; ++i) {
        QTest::qWait(100);
    }
    EXPECT_EQ(names(), before);
}

// The table of a view vanishes under it: an error and no file, in every form that has rows.
TEST_F(SavingAs, OfAViewWhoseRecordsAreGoneWritesNothing)
{
    database.config.configure("request_view_names", false);
    window.setFocusTable("arrival");
    {
        User user;
        user.types("arid > 0");
        window.showSubset();
    }
    ASSERT_TRUE(window.getCurrentTableModel()->tableIsView());
    const int rows = window.getCurrentTableModel()->rowCount();
    ASSERT_EQ(rows, 2);
    QFile::remove(path("quakes.arrival"));
    QTest::qWait(200); // until then what was read just now stands for the file
    const QStringList before = names();
    for (const char *form : {spaces, tabs, commas, spreadsheet, newDatabase}) {
        const QStringList said = save(form, path("gone"), Answer::Yes);
        EXPECT_EQ(said.size(), 1) << form;
        EXPECT_EQ(names(), before) << form;
    }
}

TEST_F(SavingAs, OfTextsThatNeedQuotesIsReadByOthers)
{
    database.files.addTable("remark",
                            {{"1", "1", "a,b \"c\""}, {"2", "1", "tab\tand"}, {"3", "1", "'x' ; y"}});
    window.setModel(nullptr);
    window.setModel(&database.open());
    window.setFocusTable("remark");
    const QJsonArray wanted{"a,b \"c\"", "tab\tand", "'x' ; y"};
    for (const char *separator : {",", "\t"}) {
        const QString file = path(*separator == ',' ? "r.csv" : "r.tsv");
        EXPECT_EQ(save(*separator == ',' ? commas : tabs, file), QStringList());
        const std::string read = std::string("import csv, json, sys\nprint(json.dumps([row[2] for row in "
                                             "csv.reader(open(sys.argv[1], newline=''), delimiter='") +
                                 (*separator == ',' ? "," : "\\t") + "')][1:]))";
        EXPECT_EQ(python(read.c_str(), file).array(), wanted) << separator;
    }
}

// ---- Spreadsheets --------------------------------------------------------------------------------------

TEST_F(SavingAs, SpreadsheetsAreReadByOthers)
{
    window.setFocusTable("arrival");
    EXPECT_EQ(save(spreadsheet, path("arrival.xlsx")), QStringList());
    const QJsonObject sheet = python(readSheet, path("arrival.xlsx")).object();
    const QJsonArray rows = sheet["rows"].toArray();
    const QList<QString> fields = window.getCurrentTableView()->getFieldNamesVisible();
    ASSERT_EQ(rows.size(), 3);
    ASSERT_EQ(rows[0].toArray().size(), fields.size());
    ASSERT_EQ(sheet["widths"].toArray().size(), fields.size());
    for (int i = 0; i < fields.size(); ++i) {
        EXPECT_TRUE(rows[0][i]["bold"].toBool());
        EXPECT_EQ(rows[0][i]["value"].toString(), fields[i]);
    }
    const int time = fields.indexOf("time");
    EXPECT_EQ(rows[1][time]["type"].toString(), "d");
    EXPECT_EQ(rows[1][time]["value"].toString(), "2018-02-06T00:00:01.500");
    EXPECT_EQ(rows[1][time]["format"].toString(), "m/d/yy h:mm:ss.00");
    const int arid = fields.indexOf("arid");
    EXPECT_EQ(rows[1][arid]["type"].toString(), "n");
    EXPECT_EQ(rows[2][arid]["value"].toInt(), 2);
    EXPECT_EQ(rows[1][fields.indexOf("sta")]["value"].toString(), "AAK");
}

TEST_F(SavingAs, SpreadsheetsHoldWhatIsShown)
{
    database.config.configure("saveas_includes_headers", false);
    window.getCurrentTableView()->setFieldNamesVisible({"staname", "elev"});
    EXPECT_EQ(save(spreadsheet, path("two.xlsx")), QStringList());
    const QJsonArray rows = python(readSheet, path("two.xlsx")).object()["rows"].toArray();
    const QList<QString> fields = window.getCurrentTableView()->getFieldNamesVisible();
    ASSERT_EQ(fields.size(), 2);
    ASSERT_EQ(rows.size(), 3);
    EXPECT_EQ(rows[0].toArray().size(), 2);
    const int name = fields.indexOf("staname");
    EXPECT_EQ(rows[0][name]["value"].toString(), "Ala \"Archa\", Kyrgyzstan");
    EXPECT_EQ(rows[2][name]["value"].toString(), "=1+1");
    EXPECT_EQ(rows[2][name]["type"].toString(), "s"); // and no formula
    EXPECT_TRUE(rows[1][1 - name]["value"].isNull());
}

// What the hook of progress is told.
struct Told {
    std::vector<double> fractions;

    Told()
    {
        dbset_progress_hook(
            [](double fraction, void *told) {
                static_cast<Told *>(told)->fractions.push_back(fraction);
                return 0;
            },
            this);
    }
    ~Told() { dbset_progress_hook(nullptr, nullptr); }
};

// The most memory that there was since it was forgotten, in mebibytes.
void forgetPeak()
{
    std::ofstream("/proc/self/clear_refs") << "5";
}

long peakMebibytes()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmHWM:", 0) == 0) {
            return std::stol(line.substr(6)) / 1024;
        }
    }
    ADD_FAILURE() << "the system does not tell";
    return 0;
}

TEST_F(SavingAs, ManyRowsAsASpreadsheetTakeLittleMemoryAndTellHowFarTheyAre)
{
    constexpr int many = 150000;
    std::vector<TemporaryDatabase::Row> rows;
    for (int i = 1; i <= many; ++i) {
        rows.push_back({"AAK", std::to_string(1517875200 + i) + ".50000", std::to_string(i), "2018037", "P"});
    }
    database.files.addTable("arrival", rows);
    rows = {};
    database.config.configure("show_empty_columns", true);
    window.setModel(nullptr);
    window.setModel(&database.open());
    window.setFocusTable("arrival");
    const int columns = window.getCurrentTableView()->getFieldNamesVisible().size();
    ASSERT_EQ(columns, 8);
    forgetPeak();
    [[maybe_unused]] const long before = peakMebibytes();
    const Told told;
    EXPECT_EQ(save(spreadsheet, path("many.xlsx")), QStringList());
#ifndef __SANITIZE_ADDRESS__ // which keeps what is freed
    EXPECT_LT(peakMebibytes() - before, 64) << "in memory the cells are well over a hundred";
#endif
    EXPECT_TRUE(std::is_sorted(told.fractions.begin(), told.fractions.end()));
    EXPECT_GT(std::count_if(told.fractions.begin(), told.fractions.end(), [](double f) { return f < 0.5; }),
              1);
    // Also while the writer works, which is half of the time.
    std::vector<double> later(std::lower_bound(told.fractions.begin(), told.fractions.end(), 0.5),
                              told.fractions.end());
    later.erase(std::unique(later.begin(), later.end()), later.end());
    EXPECT_GT(later.size(), 3U);

    const QJsonObject read = python(streamSheet, path("many.xlsx")).object();
    EXPECT_EQ(read["rows"].toInt(), many + 1);
    EXPECT_GT(read["cells"].toInt(), 5 * many);
    const QJsonArray names = read["some"][0].toArray();
    EXPECT_EQ(names.size(), columns);
    EXPECT_EQ(names[0].toString(), "sta");
    EXPECT_EQ(names[2].toString(), "arid");
    EXPECT_EQ(read["some"][1][2].toString(), "1");
    EXPECT_EQ(read["some"][2][2].toString(), "999");
    EXPECT_EQ(read["some"][3][2].toString(), QString::number(many));
    EXPECT_EQ(read["some"][3][0].toString(), "AAK");
}

TEST_F(SavingAs, MoreRowsThanASheetHoldsIsSaidBeforeWriting)
{
    const std::string record = database.files.record("event", {"1", "1"}) + "\n";
    std::string records;
    for (int row = 0; row < 1048576; ++row) { // and a header
        records += record;
    }
    database.files.writeFile("quakes.event", records);
    window.setModel(nullptr);
    window.setModel(&database.open());
    window.setFocusTable("event");
    const QStringList said = save(spreadsheet, path("event.xlsx"));
    ASSERT_EQ(said.size(), 1);
    EXPECT_TRUE(said[0].startsWith("'event' has 1048576 rows; a spreadsheet holds no more than 1048575."))
        << said[0].toStdString();
    EXPECT_FALSE(exists(path("event.xlsx")));
}

// ---- Pictures ------------------------------------------------------------------------------------------

TEST_F(SavingAs, PicturesHaveTheSizeOfTheWindow)
{
    EXPECT_EQ(save(picture, path("window.png")), QStringList());
    QProcess process;
    process.start("identify", {"-format", "%m %w %h", path("window.png")});
    ASSERT_TRUE(process.waitForFinished());
    EXPECT_EQ(process.readAllStandardOutput(),
              QStringLiteral("PNG %1 %2").arg(window.width()).arg(window.height()).toLatin1());
}

// ---- Databases and views -------------------------------------------------------------------------------

TEST_F(SavingAs, ABaseTableAsNewDatabaseIsItsFile)
{
    EXPECT_EQ(save(newDatabase, path("copy")), QStringList());
    EXPECT_EQ(content(path("copy.site")), tableFile("site"));
    EXPECT_FALSE(exists(path("copy")));
}

TEST_F(SavingAs, ATableFileThatIsThereIsReplacedOnlyIfTheUserSaysSo)
{
    database.files.writeFile("copy.site", "mine\n");
    const QStringList said = save(newDatabase, path("copy"));
    ASSERT_EQ(said.size(), 1); // and the box is closed without a yes
    EXPECT_TRUE(said[0].contains("copy.site already exists"));
    EXPECT_EQ(content(path("copy.site")), "mine\n");
    EXPECT_EQ(save(newDatabase, path("copy"), Answer::Yes), QStringList());
    EXPECT_EQ(content(path("copy.site")), tableFile("site"));
}

TEST_F(SavingAs, ABaseTableAsViewOfItsNameLeavesItsFile)
{
    const std::string before = tableFile("site");
    EXPECT_EQ(save(view, path("quakes.site"), Answer::Yes), QStringList());
    EXPECT_EQ(tableFile("site"), before);
    EXPECT_THAT(content(path("quakes.site_view1")), StartsWith("saved-view: 1\n"));
}

TEST_F(SavingAs, AViewAsNewDatabaseOpensAndEqualsItsSource)
{
    OrvaneTableModel *joined = window.getCurrentTableModel()->joinTo("arrival", "joined");
    window.addTable(joined);
    window.setFocusTable("joined");
    EXPECT_EQ(save(newDatabase, path("copy")), QStringList());
    OvConfig config;
    OrvaneDatabaseModel copy(config, path("copy"), "r");
    ASSERT_TRUE(copy.isOpen()) << copy.openError().toStdString();
    EXPECT_EQ(copy.getTableModel("arrival")->rowCount(), 2);
    EXPECT_EQ(copy.getTableModel("site")->rowCount(), 2); // one station has no arrival
    OrvaneTableModel *again = copy.getTableModel("site")->joinTo("arrival", "again");
    ASSERT_EQ(again->rowCount(), joined->rowCount());
    for (int row = 0; row < again->rowCount(); ++row) {
        for (int column = 1; column < again->columnCount(); ++column) {
            EXPECT_EQ(again->data(again->index(row, column), Qt::DisplayRole),
                      joined->data(joined->index(row, column), Qt::DisplayRole));
        }
    }
    const QStringList said = save(newDatabase, path("other"));
    EXPECT_EQ(said, QStringList());
    database.files.writeFile("third.site", "mine\n");
    const QStringList refused = save(newDatabase, path("third"));
    ASSERT_EQ(refused.size(), 1);
    EXPECT_THAT(refused[0].toStdString(), StartsWith("dbunjoin failed:\n\n"));
}

TEST_F(SavingAs, AViewUnderTheNameProposedBelongsToTheDatabase)
{
    window.addTable(window.getCurrentTableModel()->subset("lat > 40", "north"));
    window.setFocusTable("north");
    EXPECT_EQ(save(view, ""), QStringList());
    EXPECT_EQ(m_proposed, path("quakes.north"));
    EXPECT_THAT(content(path("quakes.north")), StartsWith("saved-view: 1\n"));
    OrvaneDatabaseModel &reopened = database.open();
    OrvaneDatabaseView other(database.config);
    other.setModel(&reopened);
    EXPECT_EQ(tabTexts(*other.findChild<QTabWidget *>("viewsTabs")), QStringList("north"));
    EXPECT_EQ(reopened.getTableModel("north")->rowCount(), 2);
}

TEST_F(SavingAs, AViewUnderAnotherNameIsAFileOfItsOwn)
{
    EXPECT_EQ(save(view, path("stations.view")), QStringList());
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> stream(
        std::fopen(path("stations.view").toLocal8Bit().constData(), "r"), &std::fclose);
    Dbptr pointer = window.getCurrentTableModel()->getDbptr();
    pointer.table = dbALL;
    const Dbptr read = dbread_view(pointer, stream.get(), "again");
    int64_t rows = 0;
    EXPECT_EQ(dbquery(read, dbRECORD_COUNT, &rows), 0);
    EXPECT_EQ(rows, 3);
}

} // namespace
