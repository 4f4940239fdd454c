// The menu of commands that make a view of the table shown.
#ifndef OVEDIT_DERIVE_MENU_H
#define OVEDIT_DERIVE_MENU_H

#include <QHash>
#include <QList>
#include <QObject>
#include <QStringList>

class MainWindow;
class OrvaneTableModel;
class QAction;
class QMenu;
class QMenuBar;
struct DeriveCommand;
struct DeriveList;

class DeriveMenu : public QObject
{
    Q_OBJECT

public:
    // Adds the menu to a window's menu bar; lives as the window's child.
    DeriveMenu(MainWindow &window, QMenuBar &bar);

public slots:
    // Enables the commands that can work on the table shown now.
    void update();

private:
    // Another table that a list offers.
    struct Candidate {
        QString name;
        QString keys; // by which it joins, for people; may be empty
    };

    void addCommand(const DeriveCommand &command);
    void addList(const DeriveList &list);
    void fillLists();
    void fill(QMenu &menu, const DeriveList &list, const QString &table, const QList<Candidate> &candidates);
    QList<Candidate> candidatesFor(const DeriveList &list, OrvaneTableModel &table) const;
    QList<Candidate> joinable(OrvaneTableModel &table) const;
    QStringList others(OrvaneTableModel &table) const;
    OrvaneTableModel *table() const;

    MainWindow &m_window;
    QMenu *m_menu = nullptr;
    QHash<const DeriveCommand *, QAction *> m_commands;
    QHash<const DeriveList *, QMenu *> m_lists;
};

#endif
