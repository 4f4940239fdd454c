// "Change Selected" and "Change All" through the window: all cells are changed, or none and one is told why.
#include <QAbstractButton>
#include <QHeaderView>
#include <QInputDialog>
#include <QItemSelectionModel>
#include <QLabel>
#include <QMenu>

#include <atomic>
#include <fcntl.h>
#include <filesystem>
#include <thread>
#include <unistd.h>

#include <orvanedatabasemodel.h>

#include "progress_dialog.h"
#include "running_program.h"
#include "support/user.h"
#include "undo_history.h"

namespace {

enum ColumnEntry { ChangeSelected = 1, ChangeAll };

class ManyCells : public RunningProgram
{
protected:
    ManyCells()
    {
        program.config().configure("request_view_names", false);
        program.config().configure("ask_before_changing_rows", false);
        program.config().configure("show_empty_columns", true);
        program.config().configure("update_interval_sec", 3600.0);
    }

    void open(const QString &table, const char *mode = "r+")
    {
        window = program.openDatabase(path(table), mode, nullptr);
        if (window == nullptr) {
            throw std::runtime_error("the database was not opened");
        }
        window->show();
        QApplication::setActiveWindow(window);
        settle();
    }

    OrvaneTableView &view() { return *window->view()->getCurrentTableView(); }
    OrvaneTableModel &table() { return *window->view()->getCurrentTableModel(); }
    int columnOf(const QString &field) { return table().indexForColumn(field).column(); }
    void select(int row, const QString &field)
    {
        view().selectionModel()->select(table().index(row, columnOf(field)), QItemSelectionModel::Select);
    }
    // The entry of the column's menu, the dialog for the value, and Enter.
    void change(const QString &field, ColumnEntry entry, const QString &value)
    {
        User user;
        user.choosesEntry(entry).meets<QInputDialog>([&value](QInputDialog &dialog) {
            dialog.setTextValue(value);
            QTest::keyClick(dialog.focusWidget(), Qt::Key_Return);
        });
        view().scrollToColumn(field);
        view().showColumnContextMenu(
            QPoint(view().horizontalHeader()->sectionViewportPosition(columnOf(field)) + 5, 5));
        settle();
    }
    std::string file(const char *name) const { return TemporaryDatabase::readFile(files.tablePath(name)); }
    // What is put back has a new timestamp, too, which is the last field.
    static std::string withoutTimestamps(std::string records, std::size_t count)
    {
        const std::size_t length = records.size() / count;
        for (std::size_t row = 0; row < count; ++row) {
            records.replace((row + 1) * length - 18, 17, 17, ' ');
        }
        return records;
    }
    QString notice() { return window->findChild<QLabel *>("noticeText")->text(); }
    QString undoText()
    {
        settle();
        return action(*window, "undo").text().remove('&');
    }

    MainWindow *window = nullptr;
};

// ---- What does not fit -------------------------------------------------------------------------------

struct Bad {
    const char *name;
    const char *field;
    QString text;
    const char *reason; // part of what is told
};

const Bad badValues[] = {
    {"too_long", "staname", QString(51, 'x'), "has room for 50"},
    {"too_long_in_bytes", "staname", QString(26, QChar(0xE4)), "has room for 50"},
    {"out_of_range", "lat", "95", "lat"},
    {"no_integer", "ondate", "abc", "doesn't convert to an integer"},
    {"no_number", "elev", "12..5", "doesn't convert to a double-precision number"},
    {"no_time", "lddate", "yesterday", "doesn't appear to be an epoch string"},
    {"half_a_character", "staname", QString("A") + QChar(0xD83D), "half"},
    {"line_feed", "staname", "A\nB", "line feed"},
    {"key_of_another", "ondate", "2001001", "same key (sta, ondate::offdate)"},
};

void PrintTo(const Bad &bad, std::ostream *out)
{
    *out << bad.name;
}

class RefusedInManyCells : public ManyCells, public testing::WithParamInterface<Bad>
{
protected:
    RefusedInManyCells()
    {
        files.addTable("site", {{"AAK", "2008001", "-1", "42.6390", "74.4940", "1.6450", "Ala Archa"},
                                {"AAK", "2001001", "-1", "42.6390", "74.4940", "1.6450", "Ala Archa"},
                                {"KONO", "2001001", "-1", "59.6491", "9.5982", "0.2160", "Kongsberg"}});
        open("site");
        before = file("site");
    }

    void expectNothingChanged()
    {
        ASSERT_EQ(boxes.texts().size(), 1);
        const QString told = boxes.texts().first();
        EXPECT_TRUE(told.startsWith("No cell was changed: '" + GetParam().text + "' can't be stored: "))
            << told.toStdString();
        EXPECT_TRUE(told.contains(GetParam().reason)) << told.toStdString();
        EXPECT_EQ(file("site"), before);
        EXPECT_EQ(window->history()->count(), 0);
        EXPECT_EQ(undoText(), "Undo");
        EXPECT_FALSE(action(*window, "undo").isEnabled());
    }

    std::string before;
};

TEST_P(RefusedInManyCells, ofAllRows)
{
    change(GetParam().field, ChangeAll, GetParam().text);
    expectNothingChanged();
}

// Of two columns, of which the first would take some of the values.
TEST_P(RefusedInManyCells, ofSelectedCellsOfTwoColumns)
{
    for (const int row : {0, 1}) {
        select(row, "sta");
        select(row, GetParam().field);
    }
    change(GetParam().field, ChangeSelected, GetParam().text);
    ASSERT_EQ(boxes.texts().size(), 1);
    EXPECT_TRUE(boxes.texts().first().startsWith("No cell was changed: ")) << boxes.texts()[0].toStdString();
    EXPECT_EQ(file("site"), before);
    EXPECT_EQ(window->history()->count(), 0);
    EXPECT_EQ(undoText(), "Undo");
}

INSTANTIATE_TEST_SUITE_P(Values, RefusedInManyCells, testing::ValuesIn(badValues),
                         [](const auto &given) { return std::string(given.param.name); });

// ---- Keys --------------------------------------------------------------------------------------------

TEST_F(ManyCells, getNoKeyThatAnotherRecordHas)
{
    files.addTable("arrival", {{"AAK", "1517875201.50000", "1", "2018037", "P"},
                               {"KONO", "1517875202.50000", "2", "2018037", "P"},
                               {"ARU", "1517875203.50000", "3", "2018037", "P"}});
    open("arrival");
    change("sta", ChangeAll, "OBN"); // their times differ
    EXPECT_EQ(boxes.texts(), QStringList());
    EXPECT_EQ(undoText(), "Undo Change of arrival.sta in 3 records");
    const std::string before = file("arrival");
    select(2, "time");
    change("time", ChangeSelected, "1517875202.50000"); // that of the second one
    ASSERT_EQ(boxes.texts().size(), 1);
    EXPECT_TRUE(boxes.texts()[0].contains("records would have the same key (sta, time)"))
        << boxes.texts()[0].toStdString();
    EXPECT_EQ(withoutTimestamps(file("arrival"), 3), withoutTimestamps(before, 3));
    EXPECT_EQ(undoText(), "Undo Change of arrival.sta in 3 records") << "what was done before can be undone";
    EXPECT_EQ(notice(), "Nothing was changed: arrival is as it was.");
}

TEST_F(ManyCells, getNoKeyThatAllOfThemWouldHave)
{
    files.addTable("event", {{"1", "1"}, {"2", "2"}, {"3", "3"}});
    open("event");
    const std::string before = file("event");
    change("evid", ChangeAll, "7");
    ASSERT_EQ(boxes.texts().size(), 1);
    EXPECT_TRUE(boxes.texts()[0].contains("same key (evid)")) << boxes.texts()[0].toStdString();
    EXPECT_EQ(file("event"), before);
    change("prefor", ChangeAll, "7");
    EXPECT_EQ(boxes.texts().size(), 1) << "which is no key";
    EXPECT_EQ(undoText(), "Undo Change of event.prefor in 3 records");
}

TEST_F(ManyCells, ofAViewGetNoKeyThatAnotherRecordOfTheTableHas)
{
    files.addTable("event", {{"1", "1"}, {"2", "2"}, {"3", "3"}});
    open("event");
    const std::string before = file("event");
    {
        User user;
        user.types("evid == 3");
        action(*window, "subset").trigger();
    }
    ASSERT_EQ(table().rowCount(), 1);
    change("evid", ChangeAll, "2");
    ASSERT_EQ(boxes.texts().size(), 1);
    EXPECT_TRUE(boxes.texts()[0].contains("same key (evid)")) << boxes.texts()[0].toStdString();
    EXPECT_EQ(withoutTimestamps(file("event"), 3), withoutTimestamps(before, 3));
    EXPECT_EQ(window->history()->count(), 0);
    change("evid", ChangeAll, "9");
    EXPECT_EQ(boxes.texts().size(), 1);
    EXPECT_EQ(window->history()->count(), 1);
}

// ---- What can't be written ---------------------------------------------------------------------------

TEST_F(ManyCells, ofADatabaseThatIsReadAreNotChanged)
{
    const std::string before = file("site");
    open("site", "r");
    change("sta", ChangeAll, "X");
    ASSERT_EQ(boxes.texts().size(), 1);
    EXPECT_TRUE(boxes.texts()[0].startsWith("No cell was changed: ")) << boxes.texts()[0].toStdString();
    EXPECT_TRUE(boxes.texts()[0].contains("quakes")) << boxes.texts()[0].toStdString();
    EXPECT_EQ(file("site"), before);
    EXPECT_EQ(window->history()->count(), 0);
}

TEST_F(ManyCells, ofAReadOnlyFileAreNotChanged)
{
    namespace fs = std::filesystem;
    const fs::perms readable = fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read;
    fs::permissions(files.tablePath("site"), readable);
    fs::permissions(files.folder(),
                    fs::perms::owner_all | readable | fs::perms::group_exec | fs::perms::others_exec);
    const bool isAdministrator = ::geteuid() == 0; // who may write it all the same
    if (isAdministrator) {
        ASSERT_EQ(::seteuid(65534), 0);
    }
    const std::string before = file("site");
    open("site");
    change("sta", ChangeAll, "X");
    view().selectRow(0);
    action(*window, "markSelected").setEnabled(true);
    view().markSelected();
    if (isAdministrator) {
        ASSERT_EQ(::seteuid(0), 0);
    }
    ASSERT_EQ(boxes.texts().size(), 2);
    EXPECT_TRUE(boxes.texts()[0].startsWith("No cell was changed: ")) << boxes.texts()[0].toStdString();
    EXPECT_TRUE(boxes.texts()[0].contains("Permission denied")) << boxes.texts()[0].toStdString();
    EXPECT_TRUE(boxes.texts()[1].startsWith("No row was marked: ")) << boxes.texts()[1].toStdString();
    EXPECT_EQ(file("site"), before);
    EXPECT_EQ(window->history()->count(), 0);
}

// ---- Stopping half way -------------------------------------------------------------------------------

// Another program, which takes the table's lock as soon as the first record is changed.
class Intruder
{
public:
    explicit Intruder(const std::string &path)
        : m_file(::open(path.c_str(), O_RDWR | O_CLOEXEC)), m_first(firstByte())
    {
        m_waits = std::thread([this] {
            while (!m_ended && firstByte() == m_first) {
                std::this_thread::yield();
            }
            while (!m_ended && !takes(F_WRLCK)) {
            }
            m_hasLock = !m_ended;
        });
    }
    ~Intruder()
    {
        m_ended = true;
        m_waits.join();
        ::close(m_file);
    }
    bool hasLock() const { return m_hasLock; }
    void letGo() { EXPECT_TRUE(takes(F_UNLCK)); }

private:
    char firstByte() const
    {
        char byte = 0;
        return ::pread(m_file, &byte, 1, at) == 1 ? byte : '\0';
    }
    bool takes(short kind) const
    {
        struct flock lock = {};
        lock.l_type = kind;
        lock.l_len = off_t{1} << 62;
        return ::fcntl(m_file, F_OFD_SETLK, &lock) == 0;
    }

    static constexpr off_t at = 43; // where the phase begins
    const int m_file;
    const char m_first;
    std::thread m_waits;
    std::atomic<bool> m_ended{false};
    std::atomic<bool> m_hasLock{false};
};

class Stopped : public ManyCells
{
protected:
    static constexpr int records = 1'000'000;

    Stopped()
    {
        const std::string line =
            files.record("arrival", {"AAK", "1517875201.50000", "1", "2018037", "Qn"}) + "\n";
        std::string lines;
        for (int row = 0; row < records; ++row) {
            lines += line;
        }
        files.writeFile("quakes.arrival", lines);
        open("arrival");
        before = content();
    }

    std::string content() const { return withoutTimestamps(file("arrival"), records); }

    // Changes something while another program takes the lock half way, and cancels in the dialog that shows
    // it.
    template <typename Change>
    void stopHalfWay(Change change)
    {
        Intruder intruder(files.tablePath("arrival"));
        struct Hands : QObject {
            std::function<void(ProgressDialog &)> act;
            bool eventFilter(QObject *watched, QEvent *event) override
            {
                auto *dialog = qobject_cast<ProgressDialog *>(watched);
                if (dialog != nullptr && event->type() == QEvent::Show && !done) {
                    done = true;
                    QMetaObject::invokeMethod(
                        dialog, [this, dialog] { act(*dialog); }, Qt::QueuedConnection);
                }
                return false;
            }
            bool done = false;
        } hands;
        hands.act = [&](ProgressDialog &dialog) {
            EXPECT_TRUE(intruder.hasLock());
            changedThen = content();
            if (intruder.hasLock()) {
                intruder.letGo();
            }
            dialog.findChild<QAbstractButton *>("cancel")->click();
        };
        qApp->installEventFilter(&hands);
        change();
        EXPECT_TRUE(hands.done) << "no progress was shown";
        settle();
        EXPECT_FALSE(changedThen == before) << "some records were changed";
        EXPECT_EQ(changedThen.substr(changedThen.size() - 4096), before.substr(before.size() - 4096));
        EXPECT_TRUE(content() == before);
        EXPECT_EQ(boxes.texts(), QStringList());
        EXPECT_EQ(notice(), "Nothing was changed: arrival is as it was.");
        EXPECT_EQ(window->history()->count(), 0);
        EXPECT_EQ(undoText(), "Undo");
    }

    std::string before;
    std::string changedThen;
};

TEST_F(Stopped, changeAllLeavesTheTableAsItWas)
{
    stopHalfWay([this] { change("phase", ChangeAll, "Pn"); });
    EXPECT_EQ(table().data(table().index(0, columnOf("phase"))).toString(), "Qn");
    EXPECT_EQ(table().data(table().index(records - 1, columnOf("phase"))).toString(), "Qn");
}

TEST_F(Stopped, markingLeavesTheTableAsItWas)
{
    view().selectAll();
    stopHalfWay([this] { view().markSelected(); });
    EXPECT_EQ(table().data(table().index(0, columnOf("phase"))).toString(), "Qn");
}

} // namespace
