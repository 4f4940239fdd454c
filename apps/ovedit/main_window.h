// The window of one database, or the start page of a window that has none yet.
#ifndef OVEDIT_MAIN_WINDOW_H
#define OVEDIT_MAIN_WINDOW_H

#include <memory>

#include <QHash>
#include <QList>
#include <QMainWindow>
#include <QPointer>
#include <QString>

class Application;
class EditingSign;
class Menus;
class NoticeBar;
class OrvaneDatabaseModel;
class OrvaneDatabaseView;
class OrvaneTableModel;
class SchemaWindow;
class StartPage;
class QTabWidget;
class UndoHistory;

class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(Application &application);
    ~MainWindow() override;

    // Takes an open database over, opened with `mode`, in place of the start page.
    void showDatabase(std::unique_ptr<OrvaneDatabaseModel> model, const QString &mode);

    bool hasDatabase() const { return m_view != nullptr; }
    bool shows(const OrvaneDatabaseModel &model) const { return m_model.get() == &model; }

    // What tells one database from another; empty without a database.
    QString databaseFile() const;
    static QString fileOf(OrvaneDatabaseModel &model);

    // "r" or "r+"; empty without a database.
    QString mode() const { return m_mode; }

    // Null without a database.
    OrvaneDatabaseModel *model() const { return m_model.get(); }
    OrvaneDatabaseView *view() const { return m_view; }
    UndoHistory *history() const { return m_history; }
    Application &application() const { return m_application; }

    // The tab widget of a page (0 tables, 1 views, 2 products); null without a database.
    QTabWidget *page(int index) const;

    // Raises the window, and a table's tab unless the name is empty.
    void bringToFront(const QString &table);

    // Shows a sentence above the tables for a while.
    void showMessage(const QString &text);

    // The commands of the menus.
    void openDatabase();
    void closeTab();
    void saveAs();
    void showEventMap();
    void arrangeColumns();
    void goToRow();
    void nextTab();
    void previousTab();
    void lookForChanges();
    void chooseFontSize();
    void largerFont();
    void smallerFont();
    void standardFont();
    void chooseTimeZone();
    void chooseUpdateInterval();
    void showProblems();
    void showSchema();
    void showAbout();
    void closeWindow() { close(); }
    void quit();

protected:
    void closeEvent(QCloseEvent *event) override;

private slots:
    void updateTitle();
    void configurationChanged();
    void problemsChanged();
    void menusChanged();
    void recordsChanged();
    void tableAdded(OrvaneTableModel *table);
    void tableRemoved(const QString &name);

private:
    void startHistory();
    void stepTab(int step);
    void setPoints(int points);
    void applyEmptyColumns();

    Application &m_application;
    std::unique_ptr<OrvaneDatabaseModel> m_model;
    // Every table model that there has been: those of tables that have vanished are no longer listed.
    QList<QPointer<OrvaneTableModel>> m_tables;
    QHash<QString, QString> m_vanished; // what was told of tables whose file is gone
    QString m_mode;
    bool m_emptyColumnsShown = false;
    StartPage *m_startPage = nullptr;
    NoticeBar *m_notice = nullptr;
    OrvaneDatabaseView *m_view = nullptr;
    QPointer<SchemaWindow> m_schemaWindow;
    Menus *m_menus = nullptr;
    UndoHistory *m_history = nullptr;
    EditingSign *m_editing = nullptr;
};

#endif
