// The program on a real disk that is full, and on one that is read-only: each way to change or save something
// tells why it fails, leaves what was there, and goes well once there is room.
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <filesystem>
#include <set>

#include <orvane/db.h>
#include <orvanerowview.h>

#include "running_program.h"
#include "support/small_disk.h"
#include "support/user.h"
#include "undo_history.h"

namespace {

constexpr char full[] = "No space left on device";
constexpr char readOnly[] = "Read-only file system";

class OnRealDisk : public RunningProgram
{
protected:
    static constexpr int events = 400;

    void SetUp() override
    {
        if (!disk.isThere()) {
            GTEST_SKIP() << disk.whyNot();
        }
        onDisk = disk.database();
        std::vector<TemporaryDatabase::Row> rows;
        for (int event = 1; event <= events; ++event) {
            rows.push_back({std::to_string(event), std::to_string(event)});
        }
        onDisk->addTable("event", rows);
        program.config().configure("allow_edits", true);
        program.config().configure("show_empty_columns", true);
        program.config().configure("ask_before_changing_rows", false);
        program.config().configure("update_interval_sec", 3600.0);
        before = content();
    }
    void TearDown() override
    {
        delete window;
        settle();
        if (disk.isThere()) {
            disk.setReadOnly(false);
        }
        onDisk.reset();
    }

    void open()
    {
        window = program.openDatabase(QString::fromStdString(onDisk->path()) + ".event", "r+", nullptr);
        ASSERT_NE(window, nullptr) << boxes.texts().join("; ").toStdString();
        window->show();
        QApplication::setActiveWindow(window);
        settle();
    }
    OrvaneTableView &view() { return *window->view()->getCurrentTableView(); }
    OrvaneTableModel &table() { return *view().model(); }
    OrvaneRowView &viewer(int row)
    {
        auto &found = *window->findChild<OrvaneRowView *>();
        found.setModel(&table(), row);
        found.mainWindow()->show();
        QApplication::setActiveWindow(found.mainWindow());
        return found;
    }
    std::string content() const { return TemporaryDatabase::readFile(onDisk->tablePath("event")); }
    std::set<std::string> names() const
    {
        std::set<std::string> found;
        for (const auto &entry : std::filesystem::directory_iterator(onDisk->folder())) {
            found.insert(entry.path().filename().string());
        }
        return found;
    }
    // The first record that lies on two pages: before it is changed, what it was is noted in a file.
    int recordOnTwoPages() const { return static_cast<int>(4096 / (before.size() / events)); }

    // Types into a cell and presses Enter; answers what is told beside it.
    QString enter(int row, const QString &field, const QString &text)
    {
        const QModelIndex cell = table().index(row, table().indexForColumn(field).column());
        view().setCurrentIndex(cell);
        view().edit(cell);
        view().viewport()->findChild<QLineEdit *>()->setText(text);
        return enterAgain();
    }
    QString enterAgain()
    {
        QTest::keyClick(view().viewport()->findChild<QLineEdit *>(), Qt::Key_Return);
        settle();
        const auto *label = view().viewport()->findChild<QLabel *>("refusal");
        return label == nullptr || label->isHidden() ? QString() : label->text();
    }
    // The last box, which is about this reason and leaves the table as it was.
    void expectBox(int count, const char *reason)
    {
        ASSERT_EQ(boxes.texts().size(), count) << boxes.texts().join("; ").toStdString();
        EXPECT_TRUE(boxes.texts().last().contains(reason)) << boxes.texts().last().toStdString();
        EXPECT_TRUE(content() == before);
    }
    void markAndRemember(int row)
    {
        view().selectRow(row);
        view().markSelected();
        EXPECT_EQ(boxes.texts(), QStringList());
        before = content();
    }
    QString saveAs(const QString &form, const char *name)
    {
        const QString path = QString::fromStdString(onDisk->folder() + "/" + name);
        const int told = boxes.texts().size();
        User user;
        user.meets<QFileDialog>([&](QFileDialog &dialog) {
            dialog.selectNameFilter(form);
            auto *edit = dialog.findChild<QLineEdit *>("fileNameEdit");
            edit->setText(path);
            QTest::keyClick(edit, Qt::Key_Return);
        });
        action(*window, "saveAs").trigger();
        settle();
        return boxes.texts().mid(told).join("; ");
    }

    SmallDisk disk{512};
    std::unique_ptr<TemporaryDatabase> onDisk;
    MainWindow *window = nullptr;
    std::string before;
};

TEST_F(OnRealDisk, aCellThatFindsNoRoomKeepsItsEditor)
{
    open();
    disk.fill();
    const int row = recordOnTwoPages();
    const QString told = enter(row, "auth", "A. Seismologist");
    EXPECT_TRUE(told.contains(full)) << told.toStdString();
    EXPECT_TRUE(content() == before);
    EXPECT_EQ(window->history()->count(), 0);
    EXPECT_EQ(view().viewport()->findChild<QLineEdit *>()->text(), "A. Seismologist");
    disk.makeRoom();
    EXPECT_EQ(enterAgain().toStdString(), "");
    EXPECT_EQ(view().viewport()->findChild<QLineEdit *>(), nullptr);
    EXPECT_EQ(table().data(table().indexForCell(row, "auth")).toString(), "A. Seismologist");
    EXPECT_EQ(window->history()->count(), 1);
}

TEST_F(OnRealDisk, aNewRecordThatFindsNoRoomIsStillPutTogether)
{
    open();
    OrvaneRowView &shown = viewer(dbSCRATCH);
    auto *field = shown.findChild<QLineEdit *>("evid");
    auto *add = shown.findChild<QPushButton *>("add");
    disk.fill();
    int number = 1000;
    for (; number < 1200 && boxes.texts().isEmpty(); ++number) {
        before = content(); // a last page may take some
        field->setFocus();
        field->setText(QString::number(number));
        QTest::keyClick(field, Qt::Key_Return);
        add->click();
    }
    expectBox(1, full);
    EXPECT_EQ(field->text(), QString::number(number - 1));
    const int rows = table().rowCount();
    disk.makeRoom();
    add->click();
    EXPECT_EQ(boxes.texts().size(), 1);
    EXPECT_EQ(table().rowCount(), rows + 1);
}

TEST_F(OnRealDisk, aTableThatFindsNoRoomIsNotCrunched)
{
    open();
    markAndRemember(0);
    disk.fill();
    const auto there = names();
    window->view()->crunch();
    expectBox(1, full);
    EXPECT_EQ(names(), there);
    EXPECT_EQ(table().rowCount(), events);
    disk.makeRoom();
    window->view()->crunch();
    EXPECT_EQ(boxes.texts().size(), 1);
    EXPECT_EQ(table().rowCount(), events - 1);
}

TEST_F(OnRealDisk, aSavedFileThatFindsNoRoomIsNotLeftHalf)
{
    struct Form {
        const char *filter;
        const char *name;
    };
    const Form forms[] = {{"Excel Spreadsheet (*.xlsx)", "saved.xlsx"},
                          {"Text File -- spaces (*.txt)", "saved.txt"},
                          {"Text File -- tabs (*.tsv)", "saved.tsv"},
                          {"Text File -- commas (*.csv)", "saved.csv"},
                          {"Image File (*.png)", "saved.png"}};
    open();
    for (const Form &form : forms) {
        SCOPED_TRACE(form.filter);
        disk.fill();
        const auto there = names();
        const QString told = saveAs(form.filter, form.name);
        EXPECT_TRUE(told.contains(full)) << told.toStdString();
        EXPECT_EQ(names(), there) << "nothing is left under the name, nor beside it";
        disk.makeRoom();
        EXPECT_EQ(saveAs(form.filter, form.name), "");
        EXPECT_EQ(names().count(form.name), 1u);
    }
    EXPECT_TRUE(content() == before);
}

TEST_F(OnRealDisk, aReadOnlyOneTakesNoChange)
{
    disk.setReadOnly(true);
    open();
    EXPECT_FALSE(table().tableIsWritable());
    EXPECT_FALSE(action(*window, "crunch").isEnabled());
    QString told = enter(0, "prefor", "77");
    EXPECT_TRUE(told.contains(readOnly)) << told.toStdString();
    QTest::keyClick(view().viewport()->findChild<QLineEdit *>(), Qt::Key_Escape);
    view().selectRow(0);
    view().markSelected();
    expectBox(1, readOnly);
    window->view()->crunch();
    expectBox(2, readOnly);
    OrvaneRowView &shown = viewer(0);
    shown.copyToScratchRow();
    auto *field = shown.findChild<QLineEdit *>("evid");
    field->setFocus();
    field->setText("9000");
    QTest::keyClick(field, Qt::Key_Return);
    shown.findChild<QPushButton *>("add")->click();
    expectBox(3, readOnly);
    told = saveAs("Text File -- tabs (*.tsv)", "saved.tsv");
    EXPECT_TRUE(told.contains(readOnly)) << told.toStdString();
    EXPECT_EQ(window->history()->count(), 0);
    disk.setReadOnly(false);
    shown.findChild<QPushButton *>("add")->click();
    EXPECT_EQ(table().rowCount(), events + 1);
}

} // namespace
