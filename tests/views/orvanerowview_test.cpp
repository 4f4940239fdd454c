#include <orvanerowview.h>

#include <QApplication>
#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QPushButton>
#include <QTest>
#include <QToolButton>

#include <gtest/gtest.h>

#include <orvane/db.h>
#include <qfieldedit.h>

#include "shown_database.h"
#include "support/message_boxes.h"

namespace {

class RowView : public testing::Test
{
protected:
    RowView()
    {
        database.permissions = "r+";
        database.setFontPoints(10);
        window.setCentralWidget(form);
    }

    void show(const QString &table, int row)
    {
        form->setModel(&database.table(table), row);
        window.show();
        QApplication::setActiveWindow(&window); // so that fields gain and lose the focus
    }

    template <typename Widget>
    Widget &part(const char *name)
    {
        return *window.findChild<Widget *>(name);
    }
    QLineEdit &field(const char *name) { return part<QLineEdit>(name); }
    QString rowEntry() { return part<QLineEdit>("rowEntry").text(); }
    QString header() { return part<QLabel>("header").text(); }
    bool enabled(const char *button) { return part<QWidget>(button).isEnabled(); }

    QList<bool> controls()
    {
        return {enabled("scratchRow"), enabled("nullRow"), enabled("copyToScratchRow")};
    }

    void typeRow(const QString &text)
    {
        QLineEdit &entry = part<QLineEdit>("rowEntry");
        entry.setFocus();
        entry.selectAll();
        QTest::keyClicks(&entry, text);
        QTest::keyClick(&entry, Qt::Key_Return);
    }

    void type(const char *name, const QString &text)
    {
        field(name).setFocus();
        field(name).selectAll();
        if (text.isEmpty()) {
            QTest::keyClick(&field(name), Qt::Key_Delete);
        }
        QTest::keyClicks(&field(name), text);
        QTest::keyClick(&field(name), Qt::Key_Return);
    }

    // The columns of the grid, by the number of editors in each.
    QList<int> layout()
    {
        QList<int> columns;
        for (const QFieldEdit *editor : window.findChildren<QFieldEdit *>()) {
            auto *grid = static_cast<QGridLayout *>(editor->parentWidget()->layout());
            int row = 0;
            int column = 0;
            int rowSpan = 0;
            int columnSpan = 0;
            grid->getItemPosition(grid->indexOf(const_cast<QFieldEdit *>(editor)), &row, &column, &rowSpan,
                                  &columnSpan);
            while (columns.size() <= column) {
                columns.append(0);
            }
            ++columns[column];
        }
        return columns;
    }

    ShownDatabase database;
    QMainWindow window;
    OrvaneRowView *form = new OrvaneRowView(database.config, &window);
};

TEST_F(RowView, namesItsWindowAndBeginsWithoutATable)
{
    EXPECT_EQ(window.windowTitle(), "ovedit Row Viewer");
    EXPECT_EQ(form->mainWindow(), &window);
    EXPECT_EQ(form->model(), nullptr);
    EXPECT_EQ(header(), "in table '' (?? total rows)");
    EXPECT_EQ(rowEntry(), "INVALID");
    EXPECT_EQ(controls(), (QList<bool>{true, true, false}));
    EXPECT_FALSE(enabled("add"));
}

TEST_F(RowView, showsTheFieldsOfARecord)
{
    show("site", 1);
    EXPECT_EQ(form->model(), &database.table("site"));
    EXPECT_EQ(field("sta").text(), "KONO");
    EXPECT_EQ(field("lat").text(), "59.6491");
    EXPECT_EQ(field("elev").text(), ""); // null
    EXPECT_EQ(rowEntry(), "1");
    EXPECT_EQ(header(), "in table 'site' (2 total rows)");
    EXPECT_TRUE(enabled("previousRow"));
    EXPECT_FALSE(enabled("nextRow"));
    EXPECT_EQ(controls(), (QList<bool>{true, true, true}));
    EXPECT_FALSE(enabled("add"));
}

TEST_F(RowView, coloursNullsAndTheNamesOfKeys)
{
    show("origin", 0);
    const auto labelColour = [this](const char *name) {
        const auto *label =
            field(name).parentWidget()->findChild<QLabel *>(QString(), Qt::FindDirectChildrenOnly);
        return label->autoFillBackground() ? label->palette().color(QPalette::Window) : QColor();
    };
    EXPECT_EQ(labelColour("lat"), QColor("light blue"));
    EXPECT_EQ(labelColour("orid"), QColor("light green"));
    EXPECT_EQ(labelColour("evid"), QColor("violet"));
    EXPECT_EQ(labelColour("mb"), QColor());

    show("site", 0);
    EXPECT_EQ(field("elev").palette().color(QPalette::Base), QColor("light gray"));
    EXPECT_EQ(field("sta").palette().brush(QPalette::Base).style(), Qt::NoBrush);
}

TEST_F(RowView, showsTheNamesOfFieldsWhole)
{
    database.setFontPoints(24);
    show("site", 0);
    for (const QFieldEdit *editor : window.findChildren<QFieldEdit *>()) {
        const auto *label = editor->findChild<QLabel *>(QString(), Qt::FindDirectChildrenOnly);
        EXPECT_GE(label->width(), label->fontMetrics().horizontalAdvance(label->text()))
            << label->text().toStdString();
    }
}

TEST_F(RowView, stepsThroughTheRows)
{
    show("site", 0);
    QTest::mouseClick(&part<QToolButton>("nextRow"), Qt::LeftButton);
    EXPECT_EQ(rowEntry(), "1");
    QTest::mouseClick(&part<QToolButton>("previousRow"), Qt::LeftButton);
    EXPECT_EQ(rowEntry(), "0");
    EXPECT_EQ(field("sta").text(), "AAK");
}

TEST_F(RowView, stepsFromTheNullRecordOverTheScratchRecordToTheFirst)
{
    show("site", dbNULL);
    EXPECT_EQ(rowEntry(), "NULL");
    form->incrementRow();
    EXPECT_EQ(rowEntry(), "SCRATCH");
    form->incrementRow();
    EXPECT_EQ(rowEntry(), "0");
}

TEST_F(RowView, stepsBackFromTheNullRecordToTheFirst)
{
    show("site", dbNULL);
    form->decrementRow();
    EXPECT_EQ(rowEntry(), "0");
    form->showScratchRow();
    form->decrementRow();
    EXPECT_EQ(rowEntry(), "NULL");
}

TEST_F(RowView, goesToTheRowThatIsTyped)
{
    show("site", 0);
    const std::pair<const char *, const char *> rows[] = {
        {"999", "1"}, {"-7", "0"}, {"1", "1"}, {"nonsense", "0"}, {"NULL", "NULL"}, {"SCRATCH", "SCRATCH"}};
    for (const auto &[typed, shown] : rows) {
        typeRow(typed);
        EXPECT_EQ(rowEntry(), shown) << typed;
    }
}

TEST_F(RowView, anEmptyTableHasNoRowToShow)
{
    show("event", 0);
    EXPECT_EQ(header(), "in table 'event' (0 total rows)");
    EXPECT_EQ(rowEntry(), "**ILLEGAL VALUE**");
    typeRow("-7");
    EXPECT_EQ(rowEntry(), "0") << "meant: a negative number is the first row, also where there is none";
    EXPECT_FALSE(enabled("previousRow"));
    EXPECT_FALSE(enabled("nextRow"));
}

TEST_F(RowView, theNullRecordCannotBeWritten)
{
    database.config.configure("allow_edits", true);
    show("site", dbNULL);
    EXPECT_TRUE(field("sta").isReadOnly());
    EXPECT_EQ(controls(), (QList<bool>{true, false, true}));
    form->showScratchRow();
    EXPECT_FALSE(field("sta").isReadOnly());
    EXPECT_EQ(controls(), (QList<bool>{false, true, false}));
}

// Meant: showing a row leaves it as the row before had it.
TEST_F(RowView, aRowIsWritableAsTheOneBeforeItWas)
{
    database.config.configure("allow_edits", true);
    show("site", 0);
    EXPECT_FALSE(field("lat").isReadOnly());
    form->showNullRow();
    form->setRow(0);
    EXPECT_TRUE(field("lat").isReadOnly());
    form->reconfigure();
    EXPECT_FALSE(field("lat").isReadOnly());
    database.config.configure("allow_edits", false);
    form->showScratchRow();
    form->setRow(1);
    EXPECT_FALSE(field("lat").isReadOnly());
    type("lat", "12");
    EXPECT_EQ(field("lat").text(), "59.6491") << "and yet nothing is stored";
}

TEST_F(RowView, aConfigurationThatChangesSaysWhatIsWritable)
{
    show("site", dbSCRATCH);
    EXPECT_FALSE(field("lat").isReadOnly());
    EXPECT_FALSE(enabled("add"));
    database.config.configure("allow_edits", true);
    EXPECT_TRUE(enabled("add"));
    EXPECT_FALSE(field("lat").isReadOnly());
    form->showNullRow();
    EXPECT_FALSE(enabled("add"));
    form->reconfigure();
    EXPECT_TRUE(field("lat").isReadOnly());
}

TEST_F(RowView, editsOnlyWhereThatIsAllowed)
{
    show("site", 0);
    EXPECT_TRUE(field("lat").isReadOnly());
    QTest::mouseClick(&part<QCheckBox>("allowEdits"), Qt::LeftButton, Qt::NoModifier, QPoint(5, 5));
    EXPECT_TRUE(database.config["allow_edits"].toBool());
    EXPECT_FALSE(field("lat").isReadOnly());
    type("lat", "12.5");
    EXPECT_EQ(field("lat").text(), "12.5000");
    OrvaneTableModel &site = database.table("site");
    EXPECT_EQ(site.data(site.indexForCell(0, "lat")).toString(), "12.5000");
}

TEST_F(RowView, tellsWhyAValueIsRefusedAndTakesItUpAgain)
{
    database.config.configure("allow_edits", true);
    show("site", 0);
    type("lat", "abc");
    EXPECT_EQ(field("lat").text(), "42.6390");
    auto *refusal = field("lat").parentWidget()->findChild<QLabel *>("refusal");
    ASSERT_TRUE(refusal->isVisible());
    EXPECT_TRUE(refusal->text().contains("abc")) << refusal->text().toStdString();
    emit refusal->linkActivated("again");
    EXPECT_EQ(field("lat").text(), "abc");

    type("lat", "91");
    EXPECT_EQ(field("lat").text(), "42.6390");
    EXPECT_TRUE(refusal->text().contains("lat <= 90.0") || refusal->text().contains("&lt;="))
        << refusal->text().toStdString();
    type("lat", "45");
    EXPECT_FALSE(refusal->isVisible());
    EXPECT_EQ(field("lat").text(), "45.0000");
}

TEST_F(RowView, aTimeIsStoredAsItIsShownWithoutLosingADigit)
{
    database.config.configure("allow_edits", true);
    show("arrival", 0);
    const QString shown = field("time").text();
    ASSERT_TRUE(shown.startsWith("02/06/2018")) << shown.toStdString();
    type("time", "02/06/2018 (037) 00:00:02.123450 UTC");
    EXPECT_EQ(field("time").text(), "02/06/2018 (037) 00:00:02.123450 UTC");
    type("time", shown);
    EXPECT_EQ(field("time").text(), shown);
}

TEST_F(RowView, addsTheScratchRecord)
{
    database.config.configure("allow_edits", true);
    show("site", dbSCRATCH);
    EXPECT_EQ(rowEntry(), "SCRATCH");
    ASSERT_TRUE(enabled("add"));
    EXPECT_EQ(field("sta").text(), "");
    type("sta", "BFO");
    type("ondate", "1991001");
    field("lat").setFocus();
    QTest::keyClicks(&field("lat"), "48.3319"); // not finished: adding finishes it
    QTest::mouseClick(&part<QPushButton>("add"), Qt::LeftButton);
    EXPECT_EQ(header(), "in table 'site' (3 total rows)");
    typeRow("2");
    EXPECT_EQ(field("sta").text(), "BFO");
    EXPECT_EQ(field("lat").text(), "48.3319");
}

TEST_F(RowView, refusesARecordThatIsThereAlready)
{
    database.config.configure("allow_edits", true);
    show("site", 1);
    QTest::mouseClick(&part<QPushButton>("copyToScratchRow"), Qt::LeftButton);
    EXPECT_EQ(field("sta").text(), "KONO");
    const MessageBoxes boxes;
    QTest::mouseClick(&part<QPushButton>("add"), Qt::LeftButton);
    EXPECT_EQ(boxes.texts(), QStringList{"Row would be identical to row 1 -- duplicate row not added"});
    EXPECT_EQ(header(), "in table 'site' (2 total rows)");
}

TEST_F(RowView, saysWhyARecordOfNullsIsNotAdded)
{
    database.config.configure("allow_edits", true);
    show("site", dbSCRATCH);
    const MessageBoxes boxes;
    QTest::mouseClick(&part<QPushButton>("add"), Qt::LeftButton);
    ASSERT_EQ(boxes.texts().size(), 1);
    EXPECT_TRUE(boxes.texts().first().contains("null")) << boxes.texts().first().toStdString();
    EXPECT_EQ(header(), "in table 'site' (2 total rows)");
}

TEST_F(RowView, aNewScratchRecordBeginsWithNulls)
{
    database.config.configure("allow_edits", true);
    show("site", dbSCRATCH);
    type("sta", "BFO");
    EXPECT_EQ(field("sta").text(), "BFO");
    form->setRow(0);
    form->showScratchRow();
    EXPECT_EQ(field("sta").text(), "BFO") << "it is kept while other rows are looked at";
    show("site", dbSCRATCH);
    EXPECT_EQ(field("sta").text(), "");
}

TEST_F(RowView, addsNothingToAView)
{
    database.config.configure("allow_edits", true);
    OrvaneTableModel *view = database.table("site").subset("lat > 0", "");
    form->setModel(view, 0);
    form->showScratchRow();
    EXPECT_FALSE(enabled("add"));
}

TEST_F(RowView, laysFieldsOutInColumns)
{
    show("site", 0); // 8 fields
    EXPECT_EQ(layout(), (QList<int>{8}));
    show("origin", 0); // 10 fields
    EXPECT_EQ(layout(), (QList<int>{10}));
    OrvaneTableModel *joined = database.table("site").thetaJoinTo("event", "1 == 1", "");
    form->setModel(joined, 0); // 12 fields
    EXPECT_EQ(layout(), (QList<int>{6, 6}));
}

TEST_F(RowView, anOddNumberOfFieldsLeavesOneForAThirdColumn)
{
    std::string attributes;
    std::string fields;
    for (const char name : std::string("abcdefghijk")) { // 11 fields
        attributes +=
            std::string("  ") + name + ": {type: integer, width: 4, format: \"%4d\", null: \"-1\"}\n";
        fields += std::string(fields.empty() ? "" : ", ") + name;
    }
    const TemporaryDatabase files("odd", "name: odd\nattributes:\n" + attributes +
                                             "relations:\n  numbers: {fields: [" + fields + "]}\n");
    files.addTable("numbers", {{"1"}});
    OrvaneDatabaseModel odd(database.config, QString::fromStdString(files.path()), "r");
    form->setModel(odd.getTableModel("numbers"), 0);
    EXPECT_EQ(layout(), (QList<int>{5, 5, 1}));
    form->clearFieldEditors(); // before their model goes
}

TEST_F(RowView, survivesItsModel)
{
    show("site", 0);
    const MessageBoxes boxes; // the database is closed; the table's model may live on without it
    database.model.reset();
    form->incrementRow();
    form->copyToScratchRow();
    form->addRow();
    type("lat", "1");
    form->editorDismissed();
    EXPECT_FALSE(window.isVisible());
    EXPECT_EQ(header(), "in table '' (0 total rows)");
}

TEST_F(RowView, itsSwitchesFollowTheConfiguration)
{
    show("site", 0);
    QCheckBox &box = part<QCheckBox>("allowEdits");
    EXPECT_FALSE(box.isChecked());
    database.config.configure("allow_edits", true);
    EXPECT_TRUE(box.isChecked());
    EXPECT_FALSE(field("lat").isReadOnly());
}

// Meant: they store the state of the box, of which the configuration makes what the key was before.
TEST_F(RowView, itsSwitchesStoreTheStateOfTheirBoxes)
{
    const std::pair<const char *, const char *> switches[] = {{"allowEdits", "allow_edits"},
                                                              {"readableTimes", "show_readable_times"},
                                                              {"localTimezone", "show_times_in_local_zone"}};
    OvConfig numbers;
    for (const auto &[box, key] : switches) {
        numbers.configure(key, 0);
    }
    QMainWindow other;
    const OrvaneRowView viewer(numbers, &other);
    for (const auto &[box, key] : switches) {
        auto *shown = viewer.findChild<QCheckBox *>(box);
        EXPECT_FALSE(shown->isChecked()) << key;
        shown->setChecked(true);
        EXPECT_EQ(numbers[key], QVariant(2)) << key;
        shown->setChecked(false);
        EXPECT_EQ(numbers[key], QVariant(0)) << key;
    }
}

TEST_F(RowView, fillsItsColumnsDownward)
{
    show("site", 0);
    int last = -1;
    for (const QString &name : database.table("site").getTableFields()) {
        const int top = field(qPrintable(name)).mapTo(&window, QPoint()).y();
        EXPECT_GT(top, last) << name.toStdString();
        last = top;
    }
}

TEST_F(RowView, tellsHowManyRowsThereAreWhenTheTableChanges)
{
    database.config.configure("allow_edits", true);
    show("site", 0);
    database.files.appendRows("site", {{"BFO", "1991001"}});
    OrvaneTableModel &site = database.table("site");
    emit site.modelReset();
    ASSERT_TRUE(site.setData(site.indexForCell(0, "elev"), "1"));
    EXPECT_EQ(header(), "in table 'site' (3 total rows)");
    EXPECT_TRUE(enabled("nextRow"));
}

TEST_F(RowView, dismissHidesTheWindow)
{
    show("site", 0);
    field("sta").setText("typed");
    QTest::mouseClick(&part<QPushButton>("dismiss"), Qt::LeftButton);
    EXPECT_FALSE(window.isVisible());
    EXPECT_EQ(field("sta").text(), "AAK") << "the record is read again";
}

} // namespace
