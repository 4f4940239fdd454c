#include "main_window.h"

#include <cstdio>
#include <memory>

#include <QFileDialog>
#include <QLineEdit>
#include <QTabWidget>

#include <orvane/db.h>
#include <orvane/plot.h>

#include <orvanedatabasemodel.h>
#include <orvanetablemodel.h>

#include "piped_view.h"
#include "running_program.h"
#include "support/user.h"

namespace {

TEST_F(RunningProgram, savesTheTableShown)
{
    EXPECT_FALSE(action(*program.showStartPage(), "saveAs").isEnabled());
    MainWindow &window = opened();
    const QString file = QString::fromStdString(files.folder()) + "/saved.txt";
    User user;
    user.meets<QFileDialog>([&](QFileDialog &dialog) {
        dialog.selectNameFilter("Text File -- spaces (*.txt)");
        auto *name = dialog.findChild<QLineEdit *>("fileNameEdit");
        name->setText(file);
        QTest::keyClick(name, Qt::Key_Return);
    });
    EXPECT_TRUE(action(window, "saveas_includes_headers").isChecked());
    action(window, "saveas_includes_headers").trigger();
    EXPECT_FALSE(program.config()["saveas_includes_headers"].toBool());
    action(window, "saveAs").trigger();
    EXPECT_EQ(TemporaryDatabase::readFile(file.toStdString()),
              TemporaryDatabase::readFile(files.tablePath("site")));
}

TEST_F(RunningProgram, showsTheEventMapAndClosesIt)
{
    files.addTable("origin", {{"10.0000", "20.0000", "5.0000", "100.00000", "1", "1"}});
    MainWindow &window = opened();
    action(window, "eventMap").trigger();
    ASSERT_EQ(window.page(2)->count(), 1);
    EXPECT_NE(window.page(2)->widget(0)->findChild<OvEventMap *>(), nullptr);
    EXPECT_TRUE(action(window, "pageProducts").isChecked());
    EXPECT_FALSE(action(window, "saveAs").isEnabled());
    action(window, "closeTab").trigger();
    EXPECT_EQ(window.page(2)->count(), 0);
    EXPECT_TRUE(action(window, "pageTables").isChecked());
}

TEST_F(RunningProgram, showsAViewThatComesByAStream)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> stream(std::tmpfile(), &std::fclose);
    Dbptr pointer{};
    ASSERT_EQ(dbopen_database(files.path().c_str(), "r", &pointer), 0);
    const Dbptr view = dbsubset(dblookup(pointer, "", "site", "", ""), "sta == 'KONO'", "north");
    ASSERT_EQ(dbwrite_view(view, stream.get()), 0);
    OVdbclose(pointer);
    std::rewind(stream.get());

    PipedView piped(stream.get());
    EXPECT_EQ(piped.database(), path());
    MainWindow &window = opened();
    piped.showIn(window);
    EXPECT_EQ(window.page(1)->count(), 1);
    EXPECT_EQ(window.page(1)->tabText(0), "north");
    EXPECT_TRUE(action(window, "pageViews").isChecked());
}

TEST_F(RunningProgram, saysWhatIsWrongWithAStreamThatIsNoView)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> stream(std::tmpfile(), &std::fclose);
    std::fputs("lat lon\n", stream.get());
    std::rewind(stream.get());
    try {
        PipedView piped(stream.get());
        FAIL() << "it was taken for a view";
    } catch (const std::runtime_error &error) {
        EXPECT_NE(std::string(error.what()).find("is no saved view"), std::string::npos) << error.what();
    }
}

} // namespace
