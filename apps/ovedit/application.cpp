#include "application.h"

#include <memory>

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QScreen>

#include <orvane/tr.h>
#include <orvanedatabasemodel.h>
#include <orvanedatabaseview.h>
#include <orvanetablemodel.h>
#include <orvanetableview.h>
#include <qovutil.h>

#include "configuration.h"
#include "error_text.h"
#include "main_window.h"
#include "new_database_dialog.h"
#include "open_dialog.h"
#include "piped_view.h"
#include "undo_history.h"

namespace {

constexpr QSize preferredSize(1120, 720);
const QString historyKey = QStringLiteral("expression_history");
constexpr int cascadeStep = 32; // pixels between one window and the next
constexpr int titleBar = 30;    // about what a window manager adds above a window

QString openOtherwise(const QString &name)
{
    return OvTranslation::tr(
               "The database %1 is open for reading only, and stays so.\n\nTo open it for reading and "
               "writing, close its window first.")
        .arg(QDir::toNativeSeparators(name));
}

QString whyNotOpened(const OrvaneDatabaseModel &model, const QString &name)
{
    QString reason = reasonIn(model.openError(), "Failed to open database");
    if (reason.isEmpty()) {
        reason = OvTranslation::tr("The database library gave no reason.");
    }
    return OvTranslation::tr("The database %1 can't be opened.\n\n%2\n\nA database is opened by its "
                             "descriptor, or by one of its table files.")
        .arg(QDir::toNativeSeparators(name), reason);
}

} // namespace

Application::Application(Settings &settings)
    : m_settings(settings), m_progress([this] { return placeOfWork(); })
{
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget *, QWidget *now) { noteFocus(now); });
    connect(&m_progress, &OperationProgress::cancelled, this, &Application::tellCancelled);
    registerKnownKeys(m_config);
    m_settings.restore(m_config);
    OrvaneTableView::setChangeKeeper([this](OrvaneTableModel &table) { return keepChangesOf(table); });
    m_history = m_config[historyKey];
    connect(&m_config, &OvConfig::configurationChanged, this, &Application::rememberHistory);
}

Application::~Application()
{
    OrvaneTableView::setChangeKeeper({});
    for (const QPointer<MainWindow> &window : m_windows) {
        delete window;
    }
}

QList<MainWindow *> Application::windows() const
{
    QList<MainWindow *> open;
    for (const QPointer<MainWindow> &window : m_windows) {
        if (window != nullptr) {
            open.append(window);
        }
    }
    return open;
}

MainWindow *Application::windowInFront() const
{
    const QList<MainWindow *> open = windows();
    return m_inFront != nullptr || open.isEmpty() ? m_inFront.data() : open.last();
}

void Application::noteFocus(QWidget *focused)
{
    for (QWidget *widget = focused; widget != nullptr; widget = widget->parentWidget()) {
        if (auto *window = qobject_cast<MainWindow *>(widget)) {
            m_inFront = window;
            return;
        }
    }
}

OperationProgress::Place Application::placeOfWork() const
{
    MainWindow *window = windowInFront();
    if (window == nullptr || !window->hasDatabase()) {
        return {window, QString()};
    }
    OrvaneTableModel *table = window->view()->getCurrentTableModel();
    return {window, table == nullptr ? QString() : table->getTableName()};
}

// What was asked is no setting that somebody chooses; it is kept when it changes.
void Application::rememberHistory()
{
    if (m_config[historyKey] != m_history) {
        m_history = m_config[historyKey];
        m_settings.remember(m_config, historyKey);
    }
}

void Application::tellCancelled(QWidget *window, const QString &text)
{
    if (auto *asked = qobject_cast<MainWindow *>(window)) {
        asked->showMessage(text);
    }
}

// The history of the table's window has what was there before.
std::function<QString()> Application::keepChangesOf(OrvaneTableModel &table)
{
    for (MainWindow *window : windows()) {
        if (window->history() == nullptr ||
            window->model()->getDbptr().database != table.getDbptr().database) {
            continue;
        }
        const QPointer<MainWindow> kept = window;
        return [this, kept, name = table.getTableName(), since = window->history()->latestStep()] {
            if (kept == nullptr) {
                return QString();
            }
            m_progress.finish();
            const QString left = kept->history()->giveUpSince(since);
            if (left.isEmpty()) {
                kept->showMessage(tr("Nothing was changed: %1 is as it was.").arg(name));
            }
            return left;
        };
    }
    return {};
}

QStringList Application::problemsFor(const MainWindow &window) const
{
    QStringList wanted = m_problems.problems();
    const QStringList own = m_problems.problemsOf(window.databaseFile());
    for (MainWindow *other : windows()) {
        if (other != &window && other->hasDatabase() && other->databaseFile() != window.databaseFile()) {
            for (const QString &theirs : m_problems.problemsOf(other->databaseFile())) {
                if (!own.contains(theirs)) {
                    wanted.removeAll(theirs);
                }
            }
        }
    }
    return wanted;
}

MainWindow *Application::newWindow()
{
    auto *window = new MainWindow(*this);
    window->setAttribute(Qt::WA_DeleteOnClose);
    placeWindow(*window);
    m_windows.removeAll(nullptr);
    m_windows.append(window);
    return window;
}

void Application::placeWindow(MainWindow &window) const
{
    const QRect screen = QApplication::primaryScreen()->availableGeometry();
    if (!window.restoreGeometry(m_settings.windowGeometry())) {
        window.resize(preferredSize.boundedTo(screen.size() * 0.92));
        window.move(screen.center() - QRect(QPoint(), window.size()).center());
    }
    const QPoint wanted = window.pos() + QPoint(cascadeStep, cascadeStep) * windows().size();
    const QPoint last = screen.bottomRight() - QPoint(window.width(), window.height() + titleBar);
    window.move(qMax(screen.left(), qMin(wanted.x(), last.x())),
                qMax(screen.top(), qMin(wanted.y(), last.y())));
}

MainWindow *Application::showStartPage()
{
    MainWindow *window = newWindow();
    window->show();
    return window;
}

MainWindow *Application::windowOf(const QString &databaseFile) const
{
    for (MainWindow *window : windows()) {
        if (window->hasDatabase() && window->databaseFile() == databaseFile) {
            return window;
        }
    }
    return nullptr;
}

MainWindow *Application::openPipedView(const QString &mode)
{
    try {
        PipedView piped(stdin);
        MainWindow *window = openDatabase(piped.database(), mode, nullptr);
        if (window != nullptr) {
            piped.showIn(*window);
        }
        return window;
    } catch (const std::exception &error) {
        qovutil_showError(QString::fromUtf8(error.what()), nullptr);
        return nullptr;
    }
}

MainWindow *Application::openDatabase(const QString &name, const QString &mode, MainWindow *from)
{
    if (name == QLatin1String("-")) {
        return openPipedView(mode);
    }
    // By the absolute path, so that one database has one name whatever folder the program was started in.
    const QString path = QDir::cleanPath(QFileInfo(name).absoluteFilePath());
    m_problems.collect(); // what is in the error log now is not about this opening
    OrvaneDatabaseModel *model = OrvaneDatabaseModel::uniqueOrvaneDatabaseModel(m_config, path, mode);
    for (MainWindow *window : windows()) {
        if (window->shows(*model)) {
            return showAgain(*window, model->getInitialTableName(), mode);
        }
    }
    std::unique_ptr<OrvaneDatabaseModel> opened(model);
    if (!opened->isOpen() && opened->openError().isEmpty()) {
        opened->open(); // the configuration may say that models don't open by themselves
    }
    if (!opened->isOpen()) {
        const QString reason = whyNotOpened(*opened, path);
        opened.reset();
        takeErrorLog(); // it is told in the box
        qovutil_showError(reason, from);
        return nullptr;
    }
    if (MainWindow *window = windowOf(MainWindow::fileOf(*opened))) {
        return showAgain(*window, opened->getInitialTableName(), mode);
    }
    MainWindow *window = from != nullptr && !from->hasDatabase() ? from : newWindow();
    window->showDatabase(std::move(opened), mode);
    window->bringToFront(QString());
    m_settings.addRecentDatabase(path);
    m_problems.collect();
    return window;
}

MainWindow *Application::showAgain(MainWindow &window, const QString &table, const QString &mode)
{
    const QPointer<MainWindow> shown(&window); // the box has an event loop
    window.bringToFront(table);
    if (mode == "r+" && window.mode() != mode) {
        qovutil_showError(openOtherwise(window.databaseFile()), &window);
    }
    return shown;
}

bool Application::openAll(const QStringList &names, const QString &mode)
{
    bool all = true;
    for (const QString &name : names) {
        all = openDatabase(name, mode, nullptr) != nullptr && all;
    }
    if (windows().isEmpty()) {
        showStartPage();
    }
    return all;
}

void Application::chooseDatabase(MainWindow *from)
{
    OpenDialog dialog(m_settings, from);
    if (dialog.exec() == QDialog::Accepted) {
        openDatabase(dialog.database(), dialog.mode(), from);
    }
}

void Application::createDatabase(MainWindow *from)
{
    NewDatabaseDialog dialog(m_settings, from);
    if (dialog.exec() == QDialog::Accepted) {
        openDatabase(dialog.database(), "r+", from);
    }
}

// The event loop ends with the last window.
void Application::quit()
{
    if (!m_progress.isRunning()) {
        QApplication::closeAllWindows();
    }
}
