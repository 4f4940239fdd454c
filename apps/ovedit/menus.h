// The menu bar of a window, built from tables: a new command is a new row.
#ifndef OVEDIT_MENUS_H
#define OVEDIT_MENUS_H

#include <span>

#include <QHash>
#include <QList>
#include <QObject>
#include <QString>

class DeriveMenu;
class EditMenu;
class MainWindow;
class QAction;
class QMenu;
class RowsMenu;
struct Switch;

// What a command needs to be of use; where that is missing its entry is disabled.
enum class Needs { Nothing, Database, Table, SeveralTabs, ClosableTab };

struct Command {
    const char *name; // object name of the action
    const char *text;
    const char *keys; // portable text of the shortcut, or ""
    const char *tip;
    Needs needs;
    void (MainWindow::*run)();
};

class Menus : public QObject
{
    Q_OBJECT

public:
    // Fills the window's menu bar; lives as its child.
    explicit Menus(MainWindow &window);

    // Those that go to the pages of the database, by index in its stack.
    const QList<QAction *> &pageActions() const { return m_pages; }

public slots:
    // Enables and checks the entries as the window stands now.
    void update();

private:
    void build();
    void addCommand(QMenu &menu, const Command &command);
    void addSwitches(QMenu &menu, std::span<const Switch> switches);
    void addFontSize(QMenu &menu);
    void addPages(QMenu &menu);
    QMenu *addListMenu(QMenu &menu, const QString &text, const char *name, void (Menus::*fill)());
    void fillRecent();
    void fillTables();
    void fillWindows();
    void flip(const QString &key);
    bool isMet(Needs needs) const;

    MainWindow &m_window;
    QHash<QAction *, Needs> m_needs;
    QHash<QString, QAction *> m_switches;
    QList<QAction *> m_pages;
    QMenu *m_recent = nullptr;
    QMenu *m_tables = nullptr;
    QMenu *m_windows = nullptr;
    QAction *m_problems = nullptr;
    QAction *m_timeZone = nullptr;
    QAction *m_closeTab = nullptr;
    EditMenu *m_edit = nullptr;
    DeriveMenu *m_derive = nullptr;
    RowsMenu *m_rows = nullptr;
};

#endif
