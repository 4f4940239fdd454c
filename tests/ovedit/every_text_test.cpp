// Every window, dialog and menu of the program speaks the language of the catalogue in all its texts.
#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QHeaderView>
#include <QInputDialog>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QProcess>
#include <QTabWidget>
#include <QTableView>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <orvanedatabasemodel.h>
#include <orvanedatabaseview.h>
#include <orvanerowview.h>
#include <orvanetablemodel.h>
#include <orvanetableview.h>
#include <qdbptr.h>
#include <qovconnection.h>
#include <qovutil.h>

#include "application.h"
#include "bracketing_catalogue.h"
#include "main_window.h"
#include "notice_bar.h"
#include "progress_dialog.h"
#include "untranslated_texts.h"

namespace {

// Entries that are data, or that end what the test looks at.
const QStringList leftAlone{"quit", "close"};
const QStringList dataMenus{"recentMenu", "windowsMenu", "tablesMenu", "newTableMenu"};

class EveryText : public testing::Test
{
protected:
    EveryText()
    {
        QCoreApplication::installTranslator(&catalogue);
        const QDir demo(ORVANE_SOURCE_DIR "/demo");
        for (const QString &name : demo.entryList({"quakes", "quakes.*"}, QDir::Files)) {
            QFile::copy(demo.filePath(name), folder.filePath(name));
            QFile::setPermissions(folder.filePath(name), QFile::ReadOwner | QFile::WriteOwner);
        }
        program = std::make_unique<Application>(settings);
    }

    ~EveryText() override { QCoreApplication::removeTranslator(&catalogue); }

    MainWindow &opened(const QString &table)
    {
        MainWindow *window = program->openDatabase(folder.filePath("quakes") + table, "r+", nullptr);
        if (window == nullptr) {
            throw std::runtime_error("the demo database was not opened");
        }
        return *window;
    }

    // Words of the data, as they stand in menus, titles, tabs and labels.
    QSet<QString> names()
    {
        QSet<QString> words{"ovedit", "Orvane",  "recno", "quakes",    "Deutsch", "English", "UTC",
                            "Etc",    "Etc/UTC", "http",  "dbsubset:", "css3.0",  "css"};
        const QStringList path = folder.path().split('/', Qt::SkipEmptyParts);
        words.unite(QSet<QString>(path.begin(), path.end()));
        words.unite({folder.path(), folder.filePath("quakes"), folder.filePath("quakes.origin")});
        OrvaneDatabaseModel *model = OrvaneDatabaseModel::uniqueOrvaneDatabaseModel(
            program->config(), folder.filePath("quakes"), "r+");
        const std::unique_ptr<OrvaneDatabaseModel> owned(model);
        // As it stands in the dialog for a new database, word by word.
        static const QRegularExpression word("\\w+");
        auto described = word.globalMatch(model->getQDbptr()->getSchemaDescription());
        while (described.hasNext()) {
            words.insert(described.next().captured());
        }
        for (const QString &table : model->getQDbptr()->getSchemaTables()) {
            words.insert(table);
            words.insert("quakes." + table);
            const std::unique_ptr<QDbptr> handle(model->getQDbptr()->lookupTable(table));
            for (const QString &field : handle->getTableFields()) {
                words.insert(field);
                words.insert(table + "." + field);
            }
        }
        return words;
    }

    static void settle()
    {
        for (int i = 0; i < 5; ++i) {
            QCoreApplication::processEvents();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
    }

    // Chooses every entry of a menu and of the menus in it, each with the same table in front.
    static void chooseAll(MainWindow &window, QMenu &menu, const QString &table)
    {
        emit menu.aboutToShow();
        const QList<QAction *> entries = menu.actions();
        QList<QPointer<QAction>> actions(entries.begin(), entries.end());
        for (const QPointer<QAction> &action : actions) {
            if (!table.isEmpty()) {
                window.view()->setFocusTable(table);
                settle();
            }
            if (action == nullptr || !action->isEnabled() || leftAlone.contains(action->objectName())) {
                continue;
            }
            if (action->menu() == nullptr) {
                action->trigger();
            } else if (!dataMenus.contains(action->menu()->objectName())) {
                chooseAll(window, *action->menu(), table);
            } else {
                emit action->menu()->aboutToShow();
            }
            settle();
        }
    }

    static void chooseAll(MainWindow &window, const QString &table)
    {
        for (QAction *action : window.menuBar()->actions()) {
            if (action->menu() != nullptr) {
                chooseAll(window, *action->menu(), table);
            }
        }
    }

    QTemporaryDir folder;
    Settings settings{folder.filePath("ovedit.conf")};
    BracketingCatalogue catalogue;
    std::unique_ptr<Application> program;
    QString expression = "lat > 1000"; // given wherever one is asked for

    // Takes lists whole, gives the expression, and closes everything else.
    void answer(QWidget &window)
    {
        if (auto *asked = qobject_cast<QInputDialog *>(&window)) {
            const bool wantsExpression = asked->labelText().contains("expression");
            asked->setTextValue(wantsExpression ? expression : QString());
            if (asked->inputMode() == QInputDialog::TextInput) {
                asked->accept();
            }
        } else if (auto *all = window.findChild<QAbstractButton *>("chooseAll")) {
            all->click();
            static_cast<QDialog &>(window).accept();
        }
    }
};

QStringList withoutRepeats(QStringList texts)
{
    texts.removeDuplicates();
    return texts;
}

#define EXPECT_ALL_TRANSLATED(looker)                                                                        \
    EXPECT_EQ((looker).found().join('\n').toStdString(), "")                                                 \
        << "seen:\n"                                                                                         \
        << withoutRepeats((looker).seen()).join('\n').toStdString()

TEST_F(EveryText, ofTheStartPage)
{
    UntranslatedTexts texts(names(), [](QWidget &) {});
    MainWindow &window = *program->showStartPage();
    settle();
    chooseAll(window, QString());
    texts.look(window);
    EXPECT_ALL_TRANSLATED(texts);
}

TEST_F(EveryText, ofTheMenusAndTheDialogsBehindThem)
{
    UntranslatedTexts texts(names(), [this](QWidget &window) { answer(window); });
    MainWindow &window = opened(".origin");
    settle();
    chooseAll(window, "origin");
    texts.look(window);
    const QString seen = texts.seen().join('\n');
    for (const char *dialog :
         {"OpenDialog", "QFileDialog", "TimeZoneDialog", "SchemaWindow", "QListChooserDialog", "QInputDialog",
          "«result has no records»", "<h3>ovedit", "«Update Interval»", "«Font Size»"}) {
        EXPECT_TRUE(seen.contains(dialog)) << dialog << " was not opened; seen:\n" << seen.toStdString();
    }
    EXPECT_ALL_TRANSLATED(texts);
}

TEST_F(EveryText, ofTheMenusOverAView)
{
    expression = "lat < 1000";
    UntranslatedTexts texts(names(), [this](QWidget &window) { answer(window); });
    MainWindow &window = opened(".origin");
    window.view()->showSubset();
    settle();
    ASSERT_NE(window.view()->getCurrentTableModel(), nullptr);
    ASSERT_TRUE(window.view()->getCurrentTableModel()->tableIsView());
    expression = "lat > 1000";
    const QString view = window.view()->getCurrentTableModel()->getTableName();
    window.view()->getCurrentTableView()->selectRow(1);
    chooseAll(window, view);
    texts.look(window);
    EXPECT_ALL_TRANSLATED(texts);
}

TEST_F(EveryText, ofRowsThatAreChanged)
{
    UntranslatedTexts texts(names(), [this](QWidget &window) { answer(window); });
    MainWindow &window = opened(".origin");
    program->config().configure("allow_edits", true);
    window.view()->getCurrentTableView()->selectRow(1);
    settle();
    chooseAll(window, *window.findChild<QMenu *>("rowsMenu"), "origin");
    texts.look(window);
    EXPECT_TRUE(texts.seen().join('\n').contains("«Remove the empty records"))
        << texts.seen().join('\n').toStdString();
    EXPECT_ALL_TRANSLATED(texts);
}

TEST_F(EveryText, ofTheMenusOfCellsRowsAndColumns)
{
    UntranslatedTexts texts(names(), [](QWidget &) {});
    OrvaneTableView &table = *opened(".origin").view()->getCurrentTableView();
    settle();
    program->config().configure("allow_edits", true);
    for (int round = 0; round < 2; ++round) {
        table.showCellContextMenu(table.visualRect(table.model()->index(1, 2)).center());
        table.showRowContextMenu(QPoint(5, 60));
        table.showColumnContextMenu(QPoint(60, 5));
        table.selectAll();
    }
    EXPECT_GE(texts.seen().filter("QMenu").size(), 6) << texts.seen().join('\n').toStdString();
    EXPECT_ALL_TRANSLATED(texts);
}

TEST_F(EveryText, ofTheRowViewer)
{
    UntranslatedTexts texts(names(), [](QWidget &) {});
    MainWindow &window = opened(".origin");
    window.view()->addRows();
    settle();
    int viewers = 0;
    for (QWidget *other : QApplication::topLevelWidgets()) {
        if (other->findChild<OrvaneRowView *>() != nullptr) {
            texts.look(*other);
            ++viewers;
        }
    }
    EXPECT_GE(viewers, 1);
    EXPECT_ALL_TRANSLATED(texts);
}

TEST_F(EveryText, ofNoticesAndProgress)
{
    UntranslatedTexts texts(names(), [](QWidget &) {});
    NoticeBar bar;
    for (int problems = 1; problems < 3; ++problems) {
        bar.setProblems(problems);
        texts.look(bar);
    }
    ProgressDialog progress(QString(), nullptr);
    progress.tell(0.1, 0);
    progress.tell(0.2, 5000);
    texts.look(progress);
    for (const double seconds : {1., 30., 60., 300., 3600., 7200., 1e6}) {
        EXPECT_EQ(untranslatedPart(timeLeftText(seconds), {}), "") << seconds;
    }
    EXPECT_ALL_TRANSLATED(texts);
}

// The labels in the left column of what tables, fields and records tell about themselves.
TEST_F(EveryText, ofTooltips)
{
    MainWindow &window = opened(".origin");
    QDbptr &database = *window.model()->getQDbptr();
    const std::unique_ptr<QDbptr> whole(database.getConnection()->getQDbptr());
    const std::unique_ptr<QDbptr> table(database.lookupTable("origin"));
    const std::unique_ptr<QDbptr> field(table->lookupField("lat"));
    const std::unique_ptr<QDbptr> record(table->lookupRecord(3));
    const std::unique_ptr<QDbptr> view(table->subset("lat < 1000", QString()));
    // Theirs stay as they are.
    const QSet<QString> known = names() + QSet<QString>{"Dblocks", "Dbidserver", "Size"};
    static const QRegularExpression label("<tr><td[^>]*><b>(.*?)(?:</b>)?</td>");
    int labels = 0;
    for (QDbptr *handle : {whole.get(), table.get(), field.get(), record.get(), view.get()}) {
        const QString text = qovutil_getToolTipString(handle, &program->config());
        auto found = label.globalMatch(text);
        while (found.hasNext()) {
            const QString caption = found.next().captured(1);
            EXPECT_EQ(untranslatedPart(caption, known).toStdString(), "") << caption.toStdString();
            ++labels;
        }
    }
    EXPECT_GT(labels, 25);
}

// ---- That the looking finds what it is there for --------------------------------------------------------

TEST_F(EveryText, isFoundWhereItPassesTheTranslationBy)
{
    UntranslatedTexts texts({"quakes"}, [](QWidget &) {});
    QWidget window;
    window.setWindowTitle("quakes");
    new QLabel("Rows of " + BracketingCatalogue().translate("", "the table", nullptr, 0), &window);
    auto *menu = new QMenu(BracketingCatalogue().translate("", "File", nullptr, 0), &window);
    menu->addAction("Open")->setToolTip("A tip");
    QTabWidget tabs(&window);
    tabs.addTab(new QWidget, "Tab");
    texts.look(window);
    const QString found = texts.found().join('\n');
    for (const char *part : {"Rows of", "Open", "tip", "Tab"}) {
        EXPECT_TRUE(found.contains(part)) << part << " in:\n" << found.toStdString();
    }
    EXPECT_FALSE(found.contains("quakes\":"));
    EXPECT_EQ(texts.found().size(), 4) << found.toStdString();
}

TEST(UntranslatedPart, isWhatStandsOutsideOfBrackets)
{
    EXPECT_EQ(untranslatedPart("«Rows of %1» <b>«x «y» z»</b> 12 – ...", {}), "");
    EXPECT_EQ(untranslatedPart("«Rows» of origin", {"origin"}), "of");
    EXPECT_EQ(untranslatedPart("&Open", {}), "Open");
    EXPECT_EQ(untranslatedPart("«Row» arrival.time", {"arrival.time"}), "");
}

} // namespace
