// Buttons in the menu bar that go between the pages of a database: its tables, views of them, products.
#ifndef OVEDIT_PAGE_SWITCH_H
#define OVEDIT_PAGE_SWITCH_H

#include <QList>
#include <QWidget>

class QAction;
class QMenuBar;

// A view appears on a page of its own, and the tables are gone from sight then: the buttons say where they
// are. Not shown while there are tables only.
class PageSwitch : public QWidget
{
    Q_OBJECT

public:
    // The actions stay their owner's; a button looks as its action is.
    explicit PageSwitch(const QList<QAction *> &pages);

private:
    void refresh();

    QList<QAction *> m_pages;
};

// Holds widgets at the end of a menu bar, which by itself doesn't follow when one of several changes its
// size.
class MenuBarCorner : public QWidget
{
    Q_OBJECT

public:
    // Takes the widgets over, and belongs to the bar.
    MenuBarCorner(QMenuBar &bar, const QList<QWidget *> &widgets);

    bool event(QEvent *event) override;

private:
    QMenuBar &m_bar;
};

#endif
