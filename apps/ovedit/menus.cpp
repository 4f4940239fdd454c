#include "menus.h"

#include <QAction>
#include <QActionGroup>
#include <QFileInfo>
#include <QMenu>
#include <QMenuBar>
#include <QTabWidget>

#include <orvane/tr.h>
#include <orvanedatabasemodel.h>
#include <orvanedatabaseview.h>

#include "application.h"
#include "configuration.h"
#include "derive_menu.h"
#include "edit_menu.h"
#include "language_menu.h"
#include "main_window.h"
#include "rows_menu.h"

namespace {

const Command openCommand = {"open",         OvTranslation::noop("&Open..."),
                             "Ctrl+O",       OvTranslation::noop("Open a database"),
                             Needs::Nothing, &MainWindow::openDatabase};

const Command newCommand = {"newDatabase",  OvTranslation::noop("&New Database..."),
                            "Ctrl+N",       OvTranslation::noop("Make a new database, with no records yet"),
                            Needs::Nothing, &MainWindow::newDatabase};

const Command saveCommand = {
    "saveAs",
    OvTranslation::noop("Save &As..."),
    "Ctrl+S",
    OvTranslation::noop("Save the table shown as text, a spreadsheet, a picture, a view or a new database"),
    Needs::Table,
    &MainWindow::saveAs};

const Command fileCommands[] = {
    {"print", OvTranslation::noop("&Print..."), "Ctrl+P",
     OvTranslation::noop("Show the table shown as it will be printed, and print it"), Needs::Table,
     &MainWindow::printShown},
    {"close", OvTranslation::noop("&Close Window"), "Ctrl+W",
     OvTranslation::noop("Close this window and its database"), Needs::Nothing, &MainWindow::closeWindow},
    {"quit", OvTranslation::noop("&Quit"), "Ctrl+Q", OvTranslation::noop("Close all windows"), Needs::Nothing,
     &MainWindow::quit},
};

const Command fontCommands[] = {
    {"fontLarger", OvTranslation::noop("&Larger"), "Ctrl++", "", Needs::Nothing, &MainWindow::largerFont},
    {"fontSmaller", OvTranslation::noop("&Smaller"), "Ctrl+-", "", Needs::Nothing, &MainWindow::smallerFont},
    {"fontStandard", OvTranslation::noop("S&tandard"), "Ctrl+0", "", Needs::Nothing,
     &MainWindow::standardFont},
    {"fontChoose", OvTranslation::noop("S&et..."), "", "", Needs::Nothing, &MainWindow::chooseFontSize},
};

const Command viewCommands[] = {
    {"timeZone", OvTranslation::noop("Time &Zone..."), "",
     OvTranslation::noop("Choose the zone in which local times are shown"), Needs::Nothing,
     &MainWindow::chooseTimeZone},
    {"updateInterval", OvTranslation::noop("Update &Interval..."), "",
     OvTranslation::noop("Say how often to look for changed tables"), Needs::Nothing,
     &MainWindow::chooseUpdateInterval},
};

const Command tableCommands[] = {
    {"arrange", OvTranslation::noop("Arran&ge Columns..."), "Ctrl+Shift+A",
     OvTranslation::noop("Choose the columns shown and their order"), Needs::Table,
     &MainWindow::arrangeColumns},
    {"goToRow", OvTranslation::noop("Go to Ro&w..."), "Ctrl+G",
     OvTranslation::noop("Scroll to a row by its number"), Needs::Table, &MainWindow::goToRow},
    {"eventMap", OvTranslation::noop("Event &Map"), "Ctrl+M",
     OvTranslation::noop("Show the events of the database on a map"), Needs::Database,
     &MainWindow::showEventMap},
    {"lookForChanges", OvTranslation::noop("Look for &Changes"), "F5",
     OvTranslation::noop("Look now for changed tables"), Needs::Database, &MainWindow::lookForChanges},
};

const Command tabCommands[] = {
    {"nextTab", OvTranslation::noop("&Next Tab"), "Ctrl+PgDown", "", Needs::SeveralTabs,
     &MainWindow::nextTab},
    {"previousTab", OvTranslation::noop("P&revious Tab"), "Ctrl+PgUp", "", Needs::SeveralTabs,
     &MainWindow::previousTab},
    {"closeTab", OvTranslation::noop("&Close View"), "Ctrl+F4",
     OvTranslation::noop("Close the view or product shown"), Needs::ClosableTab, &MainWindow::closeTab},
};

const Command schemaCommand = {"schema",
                               OvTranslation::noop("&Schema Documentation"),
                               "F1",
                               OvTranslation::noop("Every table and field of the schema, described"),
                               Needs::Database,
                               &MainWindow::showSchema};

const Command problemsCommand = {"problems",
                                 OvTranslation::noop("&Problems..."),
                                 "",
                                 OvTranslation::noop("What the libraries have complained about"),
                                 Needs::Nothing,
                                 &MainWindow::showProblems};

const Command aboutCommand = {
    "about", OvTranslation::noop("&About ovedit"), "", "", Needs::Nothing, &MainWindow::showAbout};

struct Page {
    const char *name;
    const char *text;
    const char *keys;
};
// By index in the stack of the database window.
const Page pages[] = {
    {"pageTables", OvTranslation::noop("&Tables"), "Alt+1"},
    {"pageViews", OvTranslation::noop("&Views"), "Alt+2"},
    {"pageProducts", OvTranslation::noop("&Products"), "Alt+3"},
};

constexpr int tablesPage = 0;
constexpr int productsPage = 2;

// A path short enough for a menu, its end kept.
QString menuText(const QString &path)
{
    constexpr int longest = 70;
    QString text = path.size() <= longest ? path : QString::fromUtf8("\u2026") + path.right(longest - 1);
    return text.replace("&", "&&");
}

} // namespace

Menus::Menus(MainWindow &window) : QObject(&window), m_window(window)
{
    build();
    update();
}

void Menus::build()
{
    QMenuBar &bar = *m_window.menuBar();

    QMenu &file = *bar.addMenu(tr("&File"));
    addCommand(file, newCommand);
    addCommand(file, openCommand);
    m_recent = addListMenu(file, tr("Open &Recent"), "recentMenu", &Menus::fillRecent);
    file.addSeparator();
    addCommand(file, saveCommand);
    addSwitches(file, saveSwitches());
    file.addSeparator();
    for (const Command &command : fileCommands) {
        addCommand(file, command);
    }

    m_edit = new EditMenu(m_window, bar);

    QMenu &view = *bar.addMenu(tr("&View"));
    view.setToolTipsVisible(true);
    addSwitches(view, viewSwitches());
    view.addSeparator();
    addFontSize(view);
    for (const Command &command : viewCommands) {
        addCommand(view, command);
    }
    new LanguageMenu(m_window, view);
    view.addSeparator();
    for (const Command &command : tableCommands) {
        addCommand(view, command);
    }
    m_timeZone = m_window.findChild<QAction *>("timeZone");

    m_derive = new DeriveMenu(m_window, bar);
    m_rows = new RowsMenu(m_window, bar);

    QMenu &windowMenu = *bar.addMenu(tr("&Window"));
    addPages(windowMenu);
    windowMenu.addSeparator();
    m_tables = addListMenu(windowMenu, tr("&Go to Table"), "tablesMenu", &Menus::fillTables);
    for (const Command &command : tabCommands) {
        addCommand(windowMenu, command);
    }
    m_closeTab = m_window.findChild<QAction *>("closeTab");
    windowMenu.addSeparator();
    m_windows = addListMenu(windowMenu, tr("&Databases"), "windowsMenu", &Menus::fillWindows);

    QMenu &help = *bar.addMenu(tr("&Help"));
    addCommand(help, schemaCommand);
    addCommand(help, problemsCommand);
    help.addSeparator();
    addCommand(help, aboutCommand);
    m_problems = m_window.findChild<QAction *>("problems");
}

void Menus::addCommand(QMenu &menu, const Command &command)
{
    QAction *action = menu.addAction(OvTranslation::tr(command.text));
    action->setObjectName(command.name);
    action->setParent(&m_window);
    action->setShortcut(QKeySequence(command.keys, QKeySequence::PortableText));
    if (*command.tip != '\0') {
        action->setToolTip(OvTranslation::tr(command.tip));
    }
    MainWindow *window = &m_window;
    connect(action, &QAction::triggered, window, [window, run = command.run] { (window->*run)(); });
    m_needs.insert(action, command.needs);
}

void Menus::addSwitches(QMenu &menu, std::span<const Switch> switches)
{
    for (const Switch &known : switches) {
        QAction *action = menu.addAction(OvTranslation::tr(known.text));
        const QString key = known.key;
        action->setObjectName(key);
        action->setToolTip(OvTranslation::tr(known.tip));
        action->setCheckable(true);
        connect(action, &QAction::triggered, this, [this, key] { flip(key); });
        m_switches.insert(key, action);
    }
}

void Menus::addFontSize(QMenu &menu)
{
    QMenu &sizes = *menu.addMenu(tr("&Font Size"));
    for (const Command &command : fontCommands) {
        addCommand(sizes, command);
    }
    // On most keyboards the plus shares its key with the equals sign.
    m_window.findChild<QAction *>("fontLarger")
        ->setShortcuts({QKeySequence("Ctrl++", QKeySequence::PortableText),
                        QKeySequence("Ctrl+=", QKeySequence::PortableText)});
}

void Menus::addPages(QMenu &menu)
{
    auto *group = new QActionGroup(this);
    for (const Page &known : pages) {
        QAction *action = menu.addAction(OvTranslation::tr(known.text));
        const int index = m_pages.size();
        action->setObjectName(known.name);
        action->setShortcut(QKeySequence(known.keys, QKeySequence::PortableText));
        action->setCheckable(true);
        group->addAction(action);
        connect(action, &QAction::triggered, this, [this, index] {
            if (OrvaneDatabaseView *view = m_window.view()) {
                view->showStackItem(index);
            }
        });
        m_pages.append(action);
    }
}

// A menu whose entries are made when it is opened.
QMenu *Menus::addListMenu(QMenu &menu, const QString &text, const char *name, void (Menus::*fill)())
{
    QMenu *list = menu.addMenu(text);
    list->setObjectName(name);
    connect(list, &QMenu::aboutToShow, this, fill);
    return list;
}

bool Menus::isMet(Needs needs) const
{
    OrvaneDatabaseView *view = m_window.view();
    switch (needs) {
    case Needs::Nothing:
        return true;
    case Needs::Database:
        return view != nullptr;
    case Needs::SeveralTabs:
        return view != nullptr && m_window.page(view->getCurrentStackIndex())->count() > 1;
    case Needs::Table:
        return view != nullptr && view->getCurrentTableModel() != nullptr;
    case Needs::ClosableTab:
        return view != nullptr && view->getCurrentStackIndex() != tablesPage &&
               view->getCurrentTabIndex() >= 0;
    }
    return false;
}

void Menus::update()
{
    for (auto entry = m_needs.cbegin(); entry != m_needs.cend(); ++entry) {
        entry.key()->setEnabled(isMet(entry.value()));
    }
    OvConfig &config = m_window.application().config();
    for (auto entry = m_switches.cbegin(); entry != m_switches.cend(); ++entry) {
        entry.value()->setChecked(config[entry.key()].toBool());
    }
    OrvaneDatabaseView *view = m_window.view();
    for (int index = 0; index < m_pages.size(); ++index) {
        QTabWidget *page = m_window.page(index);
        m_pages[index]->setEnabled(page != nullptr && (index == 0 || page->count() > 0));
        m_pages[index]->setChecked(view != nullptr && view->getCurrentStackIndex() == index);
    }
    m_closeTab->setText(view != nullptr && view->getCurrentStackIndex() == productsPage ? tr("&Close Product")
                                                                                        : tr("&Close View"));
    m_edit->update();
    m_derive->update();
    m_rows->update();
    m_tables->setEnabled(isMet(Needs::Database));
    m_recent->setEnabled(!m_window.application().settings().recentDatabases().isEmpty());
    m_problems->setEnabled(!m_window.application().problemsFor(m_window).isEmpty());
    const QString zone = config["local_time_zone"].toString();
    m_timeZone->setText(tr("Time &Zone (%1)...").arg(zone.isEmpty() ? "UTC" : zone));
}

void Menus::flip(const QString &key)
{
    Application &application = m_window.application();
    application.config().toggle(key);
    application.settings().remember(application.config(), key);
    update();
}

void Menus::fillRecent()
{
    m_recent->clear();
    Application &application = m_window.application();
    for (const QString &path : application.settings().recentDatabases()) {
        QAction *action = m_recent->addAction(menuText(path));
        connect(action, &QAction::triggered, this,
                [this, path] { m_window.application().openDatabase(path, "r", &m_window); });
    }
    m_recent->addSeparator();
    connect(m_recent->addAction(tr("&Clear List")), &QAction::triggered, this, [this] {
        m_window.application().settings().clearRecentDatabases();
        update();
    });
}

void Menus::fillTables()
{
    m_tables->clear();
    if (m_window.view() == nullptr) {
        return;
    }
    for (int index = 0; index < productsPage; ++index) {
        QTabWidget &page = *m_window.page(index);
        if (index > 0 && page.count() > 0) {
            m_tables->addSeparator();
        }
        for (int tab = 0; tab < page.count(); ++tab) {
            const QString name = page.tabText(tab);
            QAction *action = m_tables->addAction(name);
            action->setCheckable(true);
            action->setChecked(m_window.view()->getCurrentStackIndex() == index &&
                               page.currentIndex() == tab);
            connect(action, &QAction::triggered, this,
                    [this, name] { m_window.view()->setFocusTable(name); });
        }
    }
}

void Menus::fillWindows()
{
    m_windows->clear();
    for (MainWindow *window : m_window.application().windows()) {
        QAction *action = m_windows->addAction(
            menuText(window->hasDatabase() ? window->databaseFile() : tr("(no database)")));
        action->setCheckable(true);
        action->setChecked(window == &m_window);
        connect(action, &QAction::triggered, window, [window] { window->bringToFront(QString()); });
    }
}
