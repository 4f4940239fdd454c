// Values and records that can't be stored, through each way in: an error with its reason where one types, and
// the table byte for byte as it was.
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <csignal>
#include <filesystem>
#include <sys/resource.h>
#include <unistd.h>

#include <orvane/db.h>
#include <orvanedatabasemodel.h>
#include <orvanerowview.h>
#include <ovconfig.h>
#include <qfieldedit.h>

#include "running_program.h"

namespace {

struct Bad {
    const char *name;
    const char *field;
    QString text;
    const char *reason; // part of what is told
};

const Bad badValues[] = {
    {"too_long", "sta", "TOOLONGNAME", "has room for 6"},
    {"too_long_in_bytes", "sta", QString::fromUtf8("äöüß"), "has room for 6"},
    {"out_of_range", "lat", "95", "lat"},
    {"no_integer", "ondate", "abc", "doesn't convert to an integer"},
    {"fraction_for_an_integer", "ondate", "2001001.5", "doesn't convert to an integer"},
    {"no_such_day", "ondate", "2001366", "2001366"},
    {"no_number", "lat", "12..5", "doesn't convert to a double-precision number"},
    {"not_finite", "lat", "inf", "inf"},
    {"no_time", "lddate", "yesterday", "doesn't appear to be an epoch string"},
    {"half_a_character", "sta", QString(QChar(0xD83D)), "half"},
    {"line_feed", "sta", "A\nB", "line feed"},
    {"zero_byte", "sta", QString("A") + QChar(0) + "B", "zero byte"},
};

void PrintTo(const Bad &bad, std::ostream *out)
{
    *out << bad.name;
}

class Refused : public RunningProgram
{
protected:
    Refused()
    {
        files.addTable(
            "site",
            {{"AAK", "2008001", "-1", "42.6390", "74.4940", "1.6450", "Ala Archa", "1517961600.00000"},
             {"KONO", "2001001", "-1", "59.6491", "9.5982", "0.2160", "Kongsberg", "1517961600.00000"}});
        program.config().configure("allow_edits", true);
        program.config().configure("show_empty_columns", true);
        program.config().configure("show_readable_times", false);
    }

    void open()
    {
        window = program.openDatabase(path("site"), "r+", nullptr);
        if (window == nullptr) {
            throw std::runtime_error("the database was not opened: " +
                                     boxes.texts().join("; ").toStdString());
        }
        window->show();
        QApplication::setActiveWindow(window);
        settle();
        before = siteFile();
    }
    OrvaneTableView &view() { return *window->view()->getCurrentTableView(); }
    OrvaneTableModel &model() { return *view().model(); }
    std::string siteFile() const { return TemporaryDatabase::readFile(files.tablePath("site")); }
    OrvaneRowView &viewer(int row)
    {
        auto &found = *window->findChild<OrvaneRowView *>();
        found.setModel(&model(), row);
        found.mainWindow()->show();
        QApplication::setActiveWindow(found.mainWindow());
        return found;
    }

    // Types into a cell and presses Enter; answers the editor, null where it was closed.
    QLineEdit *enter(int row, const QString &field, const QString &text)
    {
        const QModelIndex cell = model().index(row, model().indexForColumn(field).column());
        view().setCurrentIndex(cell);
        view().edit(cell);
        auto *editor = view().viewport()->findChild<QLineEdit *>();
        editor->setText(text);
        QTest::keyClick(editor, Qt::Key_Return);
        settle();
        return view().viewport()->findChild<QLineEdit *>();
    }
    QString told()
    {
        const auto *label = view().viewport()->findChild<QLabel *>("refusal");
        return label == nullptr || label->isHidden() ? QString() : label->text();
    }
    // The same with a field of the row viewer; answers what is told below it.
    static QString enterField(OrvaneRowView &viewer, const QString &field, const QString &text)
    {
        auto *editor = viewer.findChild<QLineEdit *>(field);
        editor->setFocus();
        editor->setText(text);
        QTest::keyClick(editor, Qt::Key_Return);
        const auto *label = editor->parentWidget()->findChild<QLabel *>("refusal");
        return label->isHidden() ? QString() : label->text();
    }

    MainWindow *window = nullptr;
    std::string before;
};

class RefusedValue : public Refused, public testing::WithParamInterface<Bad>
{
};

TEST_P(RefusedValue, ofACellKeepsItsEditorWithTheReasonBesideIt)
{
    open();
    QLineEdit *editor = enter(1, GetParam().field, GetParam().text);
    ASSERT_NE(editor, nullptr) << "the editor was closed";
    EXPECT_EQ(editor->text(), GetParam().text);
    EXPECT_TRUE(told().startsWith("Not stored: ")) << told().toStdString();
    EXPECT_TRUE(told().contains(GetParam().reason)) << told().toStdString();
    EXPECT_EQ(siteFile(), before);
    QTest::keyClick(editor, Qt::Key_Escape);
    settle();
    EXPECT_EQ(view().viewport()->findChild<QLineEdit *>(), nullptr);
    EXPECT_EQ(siteFile(), before);
    EXPECT_EQ(boxes.texts(), QStringList());
}

TEST_P(RefusedValue, ofAFieldOfTheRowViewerIsToldBelowIt)
{
    open();
    OrvaneRowView &shown = viewer(1);
    const QString told = enterField(shown, GetParam().field, GetParam().text);
    EXPECT_TRUE(told.contains("was not stored: ")) << told.toStdString();
    EXPECT_TRUE(told.contains(QString(GetParam().reason).toHtmlEscaped())) << told.toStdString();
    EXPECT_EQ(siteFile(), before);
    EXPECT_EQ(boxes.texts(), QStringList());
}

TEST_P(RefusedValue, ofTheScratchRecordIsToldAndNotAdded)
{
    open();
    OrvaneRowView &shown = viewer(dbSCRATCH);
    const QString told = enterField(shown, GetParam().field, GetParam().text);
    EXPECT_TRUE(told.contains("was not stored: ")) << told.toStdString();
    EXPECT_TRUE(told.contains(QString(GetParam().reason).toHtmlEscaped())) << told.toStdString();
    shown.findChild<QPushButton *>("add")->click(); // a record of nothing but nulls
    settle();
    ASSERT_EQ(boxes.texts().size(), 1);
    EXPECT_TRUE(boxes.texts()[0].contains("null")) << boxes.texts()[0].toStdString();
    EXPECT_EQ(siteFile(), before);
}

INSTANTIATE_TEST_SUITE_P(Values, RefusedValue, testing::ValuesIn(badValues),
                         [](const auto &given) { return std::string(given.param.name); });

TEST_F(Refused, aRecordWithAKeyThatIsThereIsNotAdded)
{
    open();
    OrvaneRowView &shown = viewer(1);
    shown.copyToScratchRow();
    shown.findChild<QPushButton *>("add")->click();
    EXPECT_EQ(boxes.texts(), QStringList{"Row would be identical to row 1 -- duplicate row not added"});
    EXPECT_EQ(siteFile(), before);
}

// ---- What the system refuses ---------------------------------------------------------------------

using std::filesystem::perms;
constexpr perms readable = perms::owner_read | perms::group_read | perms::others_read;
constexpr perms writable = perms::owner_write | perms::group_write | perms::others_write;
constexpr perms searchable = perms::owner_exec | perms::group_exec | perms::others_exec;

// The administrator may write what is read-only, so that these tests go on as nobody.
class AsNobody
{
public:
    AsNobody()
    {
        if (::geteuid() == 0) {
            EXPECT_EQ(::seteuid(65534), 0);
            m_changed = true;
        }
    }
    ~AsNobody()
    {
        if (m_changed) {
            EXPECT_EQ(::seteuid(0), 0);
        }
    }

private:
    bool m_changed = false;
};

TEST_F(Refused, aReadOnlyFileIsNotChanged)
{
    namespace fs = std::filesystem;
    fs::permissions(files.folder(), readable | searchable | perms::owner_write);
    fs::permissions(files.tablePath("site"), readable);
    const AsNobody nobody;
    open();
    EXPECT_FALSE(model().tableIsWritable());
    QLineEdit *editor = enter(1, "sta", "NEW");
    ASSERT_NE(editor, nullptr);
    EXPECT_EQ(editor->text(), "NEW");
    EXPECT_TRUE(told().contains("quakes.site") && told().contains("Permission denied"))
        << told().toStdString();
    EXPECT_EQ(siteFile(), before);
    const QString below = enterField(viewer(1), "sta", "NEW");
    EXPECT_TRUE(below.contains("Permission denied")) << below.toStdString();
    model().copyToScratchRow(1);
    EXPECT_TRUE(enterField(viewer(dbSCRATCH), "sta", "NEW").isEmpty()) << "the scratch record is in memory";
    window->findChild<OrvaneRowView *>()->findChild<QPushButton *>("add")->click();
    ASSERT_EQ(boxes.texts().size(), 1);
    EXPECT_TRUE(boxes.texts()[0].contains("Permission denied")) << boxes.texts()[0].toStdString();
    view().selectRow(0);
    view().markSelected();
    ASSERT_EQ(boxes.texts().size(), 2);
    EXPECT_TRUE(boxes.texts()[1].contains("Permission denied")) << boxes.texts()[1].toStdString();
    EXPECT_EQ(siteFile(), before);
}

TEST_F(Refused, aReadOnlyFolderGetsNoTableAndNoCrunchedOne)
{
    namespace fs = std::filesystem;
    fs::permissions(files.tablePath("site"), readable | writable);
    fs::permissions(files.folder(), readable | searchable);
    {
        const AsNobody nobody;
        open();
        view().selectRow(0);
        view().markSelected(); // in place
        EXPECT_EQ(boxes.texts(), QStringList());
        before = siteFile();
        window->view()->crunch();
        ASSERT_EQ(boxes.texts().size(), 1);
        EXPECT_TRUE(boxes.texts()[0].contains("Permission denied")) << boxes.texts()[0].toStdString();
        EXPECT_EQ(siteFile(), before);
        OrvaneTableModel &origin = *window->model()->getTableModel("origin");
        OrvaneRowView &shown = *window->findChild<OrvaneRowView *>();
        shown.setModel(&origin, dbSCRATCH);
        enterField(shown, "orid", "7");
        shown.addRow();
        ASSERT_EQ(boxes.texts().size(), 2);
        EXPECT_TRUE(boxes.texts()[1].contains("Permission denied")) << boxes.texts()[1].toStdString();
        EXPECT_FALSE(fs::exists(files.tablePath("origin")));
    }
    fs::permissions(files.folder(), fs::perms::owner_all);
}

// A disk that takes no more bytes.
class FullDisk
{
public:
    explicit FullDisk(const std::string &file)
    {
        m_signal = std::signal(SIGXFSZ, SIG_IGN);
        EXPECT_EQ(::getrlimit(RLIMIT_FSIZE, &m_before), 0);
        rlimit limit = m_before;
        limit.rlim_cur = std::filesystem::file_size(file);
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    }
    ~FullDisk()
    {
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &m_before), 0);
        std::signal(SIGXFSZ, m_signal);
    }

private:
    rlimit m_before{};
    void (*m_signal)(int) = nullptr;
};

TEST_F(Refused, aFullDiskTakesNoRecord)
{
    open();
    OrvaneRowView &shown = viewer(dbSCRATCH);
    EXPECT_EQ(enterField(shown, "sta", "NEW"), "");
    {
        const FullDisk full(files.tablePath("site"));
        shown.findChild<QPushButton *>("add")->click();
    }
    ASSERT_EQ(boxes.texts().size(), 1);
    EXPECT_TRUE(boxes.texts()[0].contains("quakes.site") && boxes.texts()[0].contains("File too large"))
        << boxes.texts()[0].toStdString();
    EXPECT_EQ(siteFile(), before);
    EXPECT_EQ(shown.findChild<QLineEdit *>("sta")->text(), "NEW") << "what was put together is still there";
    shown.findChild<QPushButton *>("add")->click();
    EXPECT_EQ(boxes.texts().size(), 1);
    EXPECT_EQ(siteFile().size(), before.size() / 2 * 3);
}

} // namespace
