// The running program: its configuration, its settings, and a window for each open database.
#ifndef OVEDIT_APPLICATION_H
#define OVEDIT_APPLICATION_H

#include <functional>

#include <QList>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QVariant>

#include <ovconfig.h>

#include "error_boxes.h"
#include "operation_progress.h"
#include "problem_log.h"
#include "settings.h"

class MainWindow;
class OrvaneTableModel;
class QWidget;

class Application : public QObject
{
    Q_OBJECT

public:
    // `settings` must outlive the application.
    explicit Application(Settings &settings);
    ~Application() override;

    OvConfig &config() { return m_config; }
    Settings &settings() { return m_settings; }
    ProblemLog &problems() { return m_problems; }
    OperationProgress &progress() { return m_progress; }

    // The open windows, oldest first. A window deletes itself when it is closed.
    QList<MainWindow *> windows() const;

    // The one that the user works in, or did last; null when there is none.
    MainWindow *windowInFront() const;

    // The problems that a window should tell of: those about its database, and those about no database that
    // is open.
    QStringList problemsFor(const MainWindow &window) const;

    // A window without a database, which offers to open one.
    MainWindow *showStartPage();

    // Opens DATABASE or DATABASE.TABLE with the mode "r" or "r+" and returns its window: the one that shows
    // this database already, with TABLE in front, else `from` if it shows none yet, else a new one. When it
    // can't be opened, tells why in a box over `from` (may be null) and returns null. A window that is there
    // already keeps its mode; a box says so when it only reads and "r+" was asked for.
    // "-" is the text of a saved view on standard input, and opens the database that it is of.
    MainWindow *openDatabase(const QString &name, const QString &mode, MainWindow *from);

    // Opens each of the databases, or the start page where that leaves no window. False when a database
    // couldn't be opened.
    bool openAll(const QStringList &names, const QString &mode);

    // Asks for a database and opens it.
    void chooseDatabase(MainWindow *from);
    // Asks the user for a new database, makes it, and opens it to be written.
    void createDatabase(MainWindow *from);

public slots:
    // Does nothing while the database library works: an operation is cancelled first.
    void quit();

private:
    MainWindow *openPipedView(const QString &mode);
    MainWindow *newWindow();
    MainWindow *showAgain(MainWindow &window, const QString &table, const QString &mode);
    MainWindow *windowOf(const QString &databaseFile) const;
    void placeWindow(MainWindow &window) const;
    void noteFocus(QWidget *focused);
    OperationProgress::Place placeOfWork() const;
    void rememberHistory();
    std::function<QString()> keepChangesOf(OrvaneTableModel &table);
    void tellCancelled(QWidget *window, const QString &text);

    Settings &m_settings;
    OvConfig m_config;
    ProblemLog m_problems;
    QList<QPointer<MainWindow>> m_windows;
    QPointer<MainWindow> m_inFront;
    QVariant m_history; // the expressions that are in the settings
    ErrorBoxes m_errorBoxes;
    OperationProgress m_progress; // behind the boxes, so that it sees them first and with the whole text
};

#endif
