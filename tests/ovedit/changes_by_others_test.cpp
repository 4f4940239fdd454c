// What the program does when other programs change, lock and delete the tables that it shows.
#include <QAbstractButton>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTest>

#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

#include <orvanedatabasemodel.h>
#include <ovconfig.h>

#include "progress_dialog.h"
#include "running_program.h"

namespace {

class ByOthers : public RunningProgram
{
protected:
    MainWindow &writable(const QString &table)
    {
        program.config().configure("update_interval_sec",
                                   3600.0); // what is noticed is not noticed by the timer
        program.config().configure("allow_edits", true);
        program.config().configure("show_empty_columns", true);
        MainWindow *window = program.openDatabase(path(table), "r+", nullptr);
        if (window == nullptr) {
            throw std::runtime_error("the database was not opened");
        }
        window->show();
        QApplication::setActiveWindow(window);
        settle();
        return *window;
    }
    static OrvaneTableView &view(MainWindow &window) { return *window.view()->getCurrentTableView(); }
    static int rows(MainWindow &window) { return view(window).verticalHeader()->count(); }
    std::string siteFile() const { return TemporaryDatabase::readFile(files.tablePath("site")); }

    static QLineEdit &typing(MainWindow &window, int row, const QString &field, const QString &text)
    {
        OrvaneTableView &table = view(window);
        const QModelIndex cell = table.model()->index(row, table.model()->indexForColumn(field).column());
        table.setCurrentIndex(cell);
        table.edit(cell);
        QLineEdit &editor = *table.viewport()->findChild<QLineEdit *>();
        editor.selectAll();
        QTest::keyClicks(&editor, text);
        settle();
        return editor;
    }
    static QString told(MainWindow &window)
    {
        const auto *label = view(window).viewport()->findChild<QLabel *>("refusal");
        return label == nullptr || label->isHidden() ? QString() : label->text();
    }
};

TEST_F(ByOthers, changesAreNoticedAtOnce)
{
    MainWindow &window = writable("site");
    ASSERT_EQ(rows(window), 2);
    files.appendRows("site", {{"PFO", "2000001"}});
    EXPECT_TRUE(QTest::qWaitFor([&] { return rows(window) == 3; }));
    std::filesystem::rename(files.tablePath("site"), files.tablePath("old"));
    files.addTable("site", {{"TLY", "2000001"}});
    EXPECT_TRUE(QTest::qWaitFor([&] { return rows(window) == 1; })) << "a file that takes its place";
    files.addTable("site", {{"TLZ", "2000001"}});
    EXPECT_TRUE(QTest::qWaitFor([&] { return view(window).model()->index(0, 1).data() == "TLZ"; }));
    files.appendRows("site", {{"PFO", "2000001"}});
    EXPECT_TRUE(QTest::qWaitFor([&] { return rows(window) == 2; })) << "the new file is watched, too";
    files.addTable("origin", {});
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return window.model()->getTableNames().contains("origin") && window.page(0)->count() == 4; }));
    EXPECT_EQ(boxes.texts(), QStringList());
}

TEST_F(ByOthers, changesAreLookedForWhenTheWindowComesToTheFront)
{
    MainWindow &window = writable("site");
    QSignalSpy checked(window.model(), SIGNAL(databaseChecked()));
    QEvent activate(QEvent::WindowActivate);
    QApplication::sendEvent(&window, &activate);
    EXPECT_EQ(checked.count(), 0) << "not from within the event";
    EXPECT_TRUE(QTest::qWaitFor([&] { return checked.count() > 0; }));
}

TEST_F(ByOthers, changesAreNotLookedForWhereNobodyWantsIt)
{
    MainWindow &window = writable("site");
    program.config().configure("update_interval_sec", 0.0);
    settle();
    QSignalSpy checked(window.model(), SIGNAL(databaseChecked()));
    files.appendRows("site", {{"PFO", "2000001"}});
    QEvent activate(QEvent::WindowActivate);
    QApplication::sendEvent(&window, &activate);
    QTest::qWait(500);
    EXPECT_EQ(checked.count(), 0);
    program.config().configure("update_interval_sec", 3600.0);
    files.appendRows("site", {{"PFO", "2000002"}});
    EXPECT_TRUE(QTest::qWaitFor([&] { return checked.count() > 0; }));
}

TEST_F(ByOthers, aTableDeletedUnderAnEditorIsTold)
{
    MainWindow &window = writable("site");
    const int tabs = window.page(0)->count();
    QLineEdit &editor = typing(window, 0, "sta", "NEW");
    std::filesystem::remove(files.tablePath("site"));
    QTest::keyClick(&editor, Qt::Key_Return);
    EXPECT_TRUE(told(window).startsWith("Not stored: ")) << told(window).toStdString();
    EXPECT_TRUE(QTest::qWaitFor([&] { return window.page(0)->count() == tabs - 1; }));
    EXPECT_TRUE(QTest::qWaitFor([&] { return !boxes.texts().isEmpty(); }));
    EXPECT_TRUE(boxes.texts().first().endsWith("NEW")) << boxes.texts().first().toStdString();
    EXPECT_TRUE(program.problems().problems().join('\n').contains("the file of table site is gone"));
    EXPECT_FALSE(std::filesystem::exists(files.tablePath("site")));
    files.addTable("site", {{"TLY", "2000001"}});
    EXPECT_TRUE(QTest::qWaitFor([&] { return window.page(0)->count() == tabs; })) << "the tab comes back";
}

// ---- Locks ---------------------------------------------------------------------------------------

class HeldLock
{
public:
    explicit HeldLock(const std::string &path) : m_file(::open(path.c_str(), O_RDWR | O_CLOEXEC))
    {
        struct flock lock = {};
        lock.l_type = F_WRLCK;
        lock.l_len = off_t{1} << 62;
        EXPECT_EQ(::fcntl(m_file, F_OFD_SETLK, &lock), 0);
    }
    ~HeldLock() { ::close(m_file); }

private:
    int m_file;
};

// Cancels what waits for a lock, once the dialog has said so.
class GivesUp : public QObject
{
public:
    GivesUp() { qApp->installEventFilter(this); }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Show && qobject_cast<ProgressDialog *>(watched) != nullptr) {
            look(static_cast<ProgressDialog *>(watched));
        }
        return false;
    }

    QString what;
    bool painted = false;

private:
    // Timers wait while the library works.
    void look(ProgressDialog *dialog)
    {
        QMetaObject::invokeMethod(
            dialog,
            [this, dialog] {
                what = dialog->findChild<QLabel *>("what")->text();
                if (what.contains("is locked by")) {
                    painted = !dialog->grab().isNull();
                    dialog->findChild<QAbstractButton *>("cancel")->click();
                } else {
                    look(dialog);
                }
            },
            Qt::QueuedConnection);
    }
};

TEST_F(ByOthers, aLockIsWaitedForAndCanBeGivenUpWithWhatWasTyped)
{
    MainWindow &window = writable("site");
    const std::string before = siteFile();
    auto lock = std::make_unique<HeldLock>(files.tablePath("site"));
    QLineEdit &editor = typing(window, 0, "sta", "NEW");
    {
        GivesUp user;
        QTest::keyClick(&editor, Qt::Key_Return);
        EXPECT_TRUE(user.what.startsWith("Storing a value in site\n\n")) << user.what.toStdString();
        EXPECT_TRUE(user.what.contains("quakes.site: is locked by this program itself (process "));
        EXPECT_TRUE(user.what.contains("waiting until it is free"));
        EXPECT_TRUE(user.painted);
    }
    settle();
    EXPECT_EQ(siteFile(), before);
    EXPECT_EQ(editor.text(), "NEW");
    EXPECT_TRUE(told(window).contains("was locked by")) << told(window).toStdString();
    EXPECT_EQ(boxes.texts(), QStringList());
    lock.reset();
    QTest::keyClick(&editor, Qt::Key_Space);
    QTest::keyClick(&editor, Qt::Key_Backspace); // it is tried again when something was typed
    QTest::keyClick(&editor, Qt::Key_Return);
    EXPECT_EQ(view(window).model()->index(0, 1).data(), QVariant("NEW"));
}

TEST_F(ByOthers, aMarkThatWaitsForALockCanBeGivenUp)
{
    MainWindow &window = writable("site");
    const std::string before = siteFile();
    const HeldLock lock(files.tablePath("site"));
    view(window).selectRow(0);
    GivesUp user;
    view(window).markSelected();
    settle();
    EXPECT_TRUE(user.what.contains("is locked by"));
    EXPECT_EQ(siteFile(), before);
}

} // namespace
