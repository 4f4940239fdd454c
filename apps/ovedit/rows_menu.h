// The menu of commands that change the rows of the table shown.
#ifndef OVEDIT_ROWS_MENU_H
#define OVEDIT_ROWS_MENU_H

#include <QHash>
#include <QObject>

class MainWindow;
class OrvaneTableModel;
class QAction;
class QMenu;
class QMenuBar;
struct RowCommand;

class RowsMenu : public QObject
{
    Q_OBJECT

public:
    // Adds the menu to a window's menu bar; lives as the window's child.
    RowsMenu(MainWindow &window, QMenuBar &bar);

public slots:
    // Enables the commands that can work on the table shown now.
    void update();

private:
    void addCommand(const RowCommand &command);
    void fillNewTables();
    void allowEdits(bool allowed);
    void addHistory();
    void undo();
    void redo();
    void updateHistory();
    QString whyNot(const RowCommand &command) const;
    void run(const RowCommand &command);
    bool isWanted(const RowCommand &command);
    int selectedRows() const;
    OrvaneTableModel *table() const;
    bool databaseIsWritable() const;

    MainWindow &m_window;
    QMenu *m_menu = nullptr;
    QAction *m_undo = nullptr;
    QAction *m_redo = nullptr;
    QAction *m_allowEdits = nullptr;
    QMenu *m_newTables = nullptr;
    QHash<const RowCommand *, QAction *> m_commands;
};

#endif
