// The menu of commands on cells: taking them along, selecting and finding them.
#ifndef OVEDIT_EDIT_MENU_H
#define OVEDIT_EDIT_MENU_H

#include <QObject>

#include "finding.h"

class MainWindow;
class OrvaneTableView;
class QAction;
class QKeySequence;
class QMenu;
class QMenuBar;

class EditMenu : public QObject
{
    Q_OBJECT

public:
    // Adds the menu to a window's menu bar; lives as the window's child.
    EditMenu(MainWindow &window, QMenuBar &bar);

public slots:
    // Enables the commands that can work on the table shown now, and offers them in its cell menu.
    void update();

private:
    QAction *addCommand(const char *name, const QString &text, const QKeySequence &keys, const QString &tip,
                        void (EditMenu::*command)());
    void copy();
    void copyWithNames();
    void paste();
    void selectAll();
    void find();
    void findNext();
    void findPrevious();
    template <class Command>
    void run(Command command);
    OrvaneTableView *table() const;

    MainWindow &m_window;
    QMenu *m_menu;
    QAction *m_copy;
    QAction *m_copyWithNames;
    QAction *m_paste;
    QAction *m_selectAll;
    QList<QAction *> m_finds;
    Finding m_finding;
};

#endif
