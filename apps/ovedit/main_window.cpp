#include "main_window.h"

#include <QAction>
#include <QCloseEvent>
#include <QDir>
#include <QFileInfo>
#include <QInputDialog>
#include <QMenuBar>
#include <QMessageBox>
#include <QTabWidget>
#include <QVBoxLayout>

#include <orvanedatabasemodel.h>
#include <orvanedatabaseview.h>
#include <orvanetablemodel.h>
#include <orvanetableview.h>
#include <qdbptr.h>
#include <qovutil.h>

#include "application.h"
#include "change_watch.h"
#include "command_line.h"
#include "configuration.h"
#include "editing_sign.h"
#include "map_selection.h"
#include "menus.h"
#include "notice_bar.h"
#include "page_switch.h"
#include "printing.h"
#include "problems_dialog.h"
#include "schema_window.h"
#include "start_page.h"
#include "time_zone_dialog.h"
#include "undo_history.h"

namespace {

constexpr double longestInterval = 86400; // seconds

} // namespace

MainWindow::MainWindow(Application &application) : m_application(application)
{
    m_startPage = new StartPage(application.settings());
    connect(m_startPage, &StartPage::openRequested, this, &MainWindow::openDatabase);
    connect(m_startPage, &StartPage::databaseChosen, this,
            [this](const QString &path) { m_application.openDatabase(path, "r", this); });
    m_notice = new NoticeBar;
    connect(m_notice, &NoticeBar::detailsRequested, this, &MainWindow::showProblems);

    auto *middle = new QWidget;
    auto *column = new QVBoxLayout(middle);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_notice);
    column->addWidget(m_startPage, 1);
    setCentralWidget(middle);

    m_editing = new EditingSign(*this);
    m_menus = new Menus(*this);
    new MenuBarCorner(*menuBar(), QList<QWidget *>{new PageSwitch(m_menus->pageActions()), m_editing});
    connect(&application.config(), &OvConfig::configurationChanged, this, &MainWindow::configurationChanged);
    connect(&application.problems(), &ProblemLog::changed, this, &MainWindow::problemsChanged);
    problemsChanged();
    updateTitle();
}

MainWindow::~MainWindow()
{
    m_application.problems().remove(m_vanished.values()); // nobody else's concern
    m_watch.reset();
    delete m_schemaWindow;
    // The view points to the models, so it goes first. Table models outlive their database model, for others
    // who may still show them; here nobody does.
    delete m_history;
    m_history = nullptr;
    delete m_view;
    m_view = nullptr;
    if (m_model == nullptr) {
        return;
    }
    m_model.reset();
    for (const QPointer<OrvaneTableModel> &table : m_tables) {
        delete table;
    }
}

QString MainWindow::fileOf(OrvaneDatabaseModel &model)
{
    return QDir::cleanPath(QFileInfo(model.getQDbptr()->getDatabaseAbspath()).absoluteFilePath());
}

QString MainWindow::databaseFile() const
{
    return m_model == nullptr ? QString() : fileOf(*m_model);
}

QTabWidget *MainWindow::page(int index) const
{
    static const char *const names[] = {"tablesTabs", "viewsTabs", "productsTabs"};
    return m_view == nullptr ? nullptr : m_view->findChild<QTabWidget *>(names[index]);
}

void MainWindow::showDatabase(std::unique_ptr<OrvaneDatabaseModel> model, const QString &mode)
{
    m_model = std::move(model);
    m_mode = mode;
    m_emptyColumnsShown = m_application.config()["show_empty_columns"].toBool();

    m_view = new OrvaneDatabaseView(m_application.config());
    new MapSelection(*m_view);
    centralWidget()->layout()->addWidget(m_view);
    delete m_startPage;
    m_startPage = nullptr;
    connect(m_model.get(), &OrvaneDatabaseModel::tableAdded, this, &MainWindow::tableAdded);
    connect(m_model.get(), &OrvaneDatabaseModel::tableRemoved, this, &MainWindow::tableRemoved);
    connect(m_view, &OrvaneDatabaseView::focusTableChanged, this, &MainWindow::updateTitle);
    connect(m_view, &OrvaneDatabaseView::focusTableChanged, this, &MainWindow::menusChanged);
    connect(m_view, &OrvaneDatabaseView::stackItemChanged, this, &MainWindow::menusChanged);
    m_view->setModel(m_model.get());
    startHistory();
    m_watch = std::make_unique<ChangeWatch>(*m_model, m_application.config(), nullptr);
    menusChanged();
    updateTitle();
    problemsChanged();
    if (OrvaneTableView *table = m_view->getCurrentTableView()) {
        table->setFocus();
    }
}

void MainWindow::startHistory()
{
    m_history = new UndoHistory(m_model->getDbptr().database, this);
    connect(m_history, &UndoHistory::changed, this, &MainWindow::menusChanged);
    connect(m_history, &UndoHistory::recordsChanged, this, &MainWindow::recordsChanged);
    connect(m_history, &UndoHistory::message, this, &MainWindow::showMessage);
    connect(m_model.get(), &OrvaneDatabaseModel::databaseChecked, m_history, &UndoHistory::lookForNewNumbers);
    // The row viewer is a window of its own, with the same keys.
    if (auto *viewer = m_view->findChild<QMainWindow *>("rowViewWindow")) {
        viewer->addActions({findChild<QAction *>("undo"), findChild<QAction *>("redo")});
    }
}

void MainWindow::menusChanged()
{
    m_menus->update();
    m_editing->refresh();
}

// Undone and done again: the numbers of rows stay, what they hold is read anew.
void MainWindow::recordsChanged()
{
    for (const QPointer<OrvaneTableModel> &table : m_tables) {
        if (table != nullptr && table->rowCount() > 0) {
            emit table->dataChanged(table->index(0, 0),
                                    table->index(table->rowCount() - 1, table->columnCount() - 1));
        }
    }
    m_view->updateStatusLabels();
}

void MainWindow::tableAdded(OrvaneTableModel *table)
{
    if (table == nullptr) {
        return;
    }
    m_tables.removeAll(nullptr);
    if (!m_tables.contains(table)) {
        m_tables.append(table);
    }
    m_application.problems().remove({m_vanished.take(table->getTableName())});
}

void MainWindow::tableRemoved(const QString &name)
{
    QString file;
    try {
        OrvaneTableModel *table = m_model->getTableModel(name);
        file = table == nullptr ? QString() : table->getQDbptr()->getTableFilename();
    } catch (const std::exception &) {
        file.clear(); // then the notice does without it
    }
    // The database is named because its tables may lie in other folders than the descriptor.
    const QString notice =
        tr("%1: the file of table %2 is gone (%3), and so is its tab. Put the file back, and "
           "the tab comes back.")
            .arg(databaseFile(), name, file);
    m_vanished.insert(name, notice);
    m_application.problems().add(notice);
}

void MainWindow::bringToFront(const QString &table)
{
    if (isMinimized()) {
        showNormal();
    } else {
        show();
    }
    raise();
    activateWindow();
    if (m_view != nullptr && !table.isEmpty()) {
        m_view->setFocusTable(table);
    }
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    // An operation that is under way works with the models of this window; it is cancelled first.
    if (m_application.progress().isRunning()) {
        event->ignore();
        return;
    }
    m_application.settings().setWindowGeometry(saveGeometry());
    event->accept();
}

bool MainWindow::event(QEvent *event)
{
    // Who comes back from another program wants to see what that has done.
    if (event->type() == QEvent::WindowActivate && m_watch != nullptr) {
        m_watch->lookSoon();
    }
    return QMainWindow::event(event);
}

void MainWindow::showMessage(const QString &text)
{
    m_notice->showMessage(text);
}

void MainWindow::updateTitle()
{
    if (m_view == nullptr) {
        setWindowTitle("ovedit");
        return;
    }
    QString title = QFileInfo(databaseFile()).fileName();
    if (OrvaneTableModel *table = m_view->getCurrentTableModel()) {
        title += "." + table->getTableName();
    }
    setWindowTitle(tr("%1 \u2013 ovedit").arg(title));
    setWindowFilePath(QString());
}

void MainWindow::configurationChanged()
{
    applyEmptyColumns();
    menusChanged();
}

// The table views look at this key only when they get their model.
void MainWindow::applyEmptyColumns()
{
    const bool wanted = m_application.config()["show_empty_columns"].toBool();
    if (m_view == nullptr || wanted == m_emptyColumnsShown) {
        return;
    }
    m_emptyColumnsShown = wanted;
    for (OrvaneTableView *table : m_view->findChildren<OrvaneTableView *>()) {
        if (OrvaneTableModel *model = table->model()) {
            table->setFieldNamesVisible(wanted ? model->getTableFields() : model->getNonNullTableFields());
        }
    }
}

void MainWindow::problemsChanged()
{
    m_notice->setProblems(m_application.problemsFor(*this).size());
    m_menus->update();
}

// ---- Commands
// ----------------------------------------------------------------------------------------------------

void MainWindow::openDatabase()
{
    m_application.chooseDatabase(this);
}

void MainWindow::newDatabase()
{
    m_application.createDatabase(this);
}

void MainWindow::quit()
{
    m_application.quit();
}

void MainWindow::closeTab()
{
    if (m_view == nullptr) {
        return;
    }
    const int tab = m_view->getCurrentTabIndex();
    switch (m_view->getCurrentStackIndex()) {
    case 1:
        m_view->closeViewsTab(tab);
        break;
    case 2:
        m_view->closeProductsTab(tab);
        break;
    default:
        break; // tables stay
    }
    m_menus->update();
}

void MainWindow::saveAs()
{
    if (m_view != nullptr) {
        m_view->saveAs();
    }
}

void MainWindow::printShown()
{
    OrvaneTableView *table = m_view == nullptr ? nullptr : m_view->getCurrentTableView();
    if (m_view == nullptr || m_view->getCurrentTableModel() == nullptr || table == nullptr) {
        return;
    }
    try {
        printTable(*table, QFileInfo(databaseFile()).fileName() + "." + table->model()->getTableName(), this);
    } catch (const std::exception &error) {
        qovutil_showError(QString::fromUtf8(error.what()), this);
    }
}

void MainWindow::showEventMap()
{
    if (m_view != nullptr) {
        m_view->mapCurrent();
        m_menus->update();
    }
}

void MainWindow::arrangeColumns()
{
    if (m_view != nullptr) {
        m_view->arrange();
    }
}

void MainWindow::goToRow()
{
    if (m_view != nullptr) {
        m_view->goToRow();
    }
}

void MainWindow::nextTab()
{
    stepTab(1);
}

void MainWindow::previousTab()
{
    stepTab(-1);
}

void MainWindow::stepTab(int step)
{
    if (m_view == nullptr) {
        return;
    }
    const int tabs = page(m_view->getCurrentStackIndex())->count();
    if (tabs > 0) {
        m_view->setCurrentTabIndex((m_view->getCurrentTabIndex() + step + tabs) % tabs);
    }
}

void MainWindow::lookForChanges()
{
    if (m_model != nullptr) {
        m_model->checkForUpdates();
        m_application.problems().collect();
    }
}

void MainWindow::setPoints(int points)
{
    setFontSize(m_application.config(), points);
    m_application.settings().remember(m_application.config(), "font_size_points");
}

void MainWindow::largerFont()
{
    setPoints(m_application.config()["font_size_points"].toInt() + 1);
}

void MainWindow::smallerFont()
{
    setPoints(m_application.config()["font_size_points"].toInt() - 1);
}

void MainWindow::standardFont()
{
    setPoints(defaultFontSize);
}

void MainWindow::chooseFontSize()
{
    bool chosen = false;
    const int points = QInputDialog::getInt(this, tr("Font Size"), tr("Size of the table font in points:"),
                                            m_application.config()["font_size_points"].toInt(),
                                            smallestFontSize, largestFontSize, 1, &chosen);
    if (chosen) {
        setPoints(points);
    }
}

void MainWindow::chooseTimeZone()
{
    OvConfig &config = m_application.config();
    TimeZoneDialog dialog(config["local_time_zone"].toString(), this);
    if (dialog.exec() != QDialog::Accepted) {
        return;
    }
    config.configure("local_time_zone", dialog.zone());
    config.configure("show_times_in_local_zone", true); // who chooses a zone wants to see times in it
    m_application.settings().remember(config, "local_time_zone");
    m_application.settings().remember(config, "show_times_in_local_zone");
}

void MainWindow::chooseUpdateInterval()
{
    OvConfig &config = m_application.config();
    bool chosen = false;
    const double seconds = QInputDialog::getDouble(
        this, tr("Update Interval"), tr("Seconds between looks for changed tables (0: don't look):"),
        config["update_interval_sec"].toDouble(), 0, longestInterval, 1, &chosen);
    if (chosen) {
        config.configure("update_interval_sec", seconds);
        m_application.settings().remember(config, "update_interval_sec");
    }
}

void MainWindow::showProblems()
{
    ProblemsDialog dialog(m_application.problems(), m_application.problemsFor(*this), this);
    dialog.exec();
}

void MainWindow::showSchema()
{
    if (m_model == nullptr) {
        return;
    }
    if (m_schemaWindow == nullptr) {
        m_schemaWindow = new SchemaWindow(*m_model, this);
        m_schemaWindow->setAttribute(Qt::WA_DeleteOnClose);
    }
    if (OrvaneTableModel *table = m_view->getCurrentTableModel()) {
        m_schemaWindow->showTable(table->getTableName());
    }
    m_schemaWindow->show();
    m_schemaWindow->raise();
    m_schemaWindow->activateWindow();
}

void MainWindow::showAbout()
{
    QMessageBox::about(
        this, tr("About ovedit"),
        tr("<h3>ovedit %1</h3><p>Looks at the tables of flat-file scientific databases: every table a "
           "tab, every field and record with its description.</p><p>Part of Orvane.</p>")
            .arg(programVersion()));
}
