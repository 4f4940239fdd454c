#include "derive_menu.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>

#include <orvane/db.h>
#include <orvane/tr.h>
#include <orvanedatabasemodel.h>
#include <orvanedatabaseview.h>
#include <orvanetablemodel.h>

#include "main_window.h"

// A command that needs nothing but the table.
struct DeriveCommand {
    const char *name; // object name of the action
    const char *text;
    const char *keys; // portable text of the shortcut
    const char *tip;
    bool needsBundles;
    void (OrvaneDatabaseView::*run)();
};

enum class Offers { Joinable, AnyOther, Members };

// A command that takes another table, which is chosen from a list.
struct DeriveList {
    const char *name; // object name of the menu
    const char *text;
    const char *tip;      // of the menu
    const char *entryTip; // of an entry; %1 the table shown, %2 the one chosen
    Offers offers;
    int leastMembers; // of the table shown; 0: it may be a base table
    void (OrvaneDatabaseView::*run)(QAction *);
};

namespace {

const DeriveCommand commands[] = {
    {"subset", OvTranslation::noop("&Subset..."), "Ctrl+Shift+S",
     OvTranslation::noop("The rows for which an expression is true"), false, &OrvaneDatabaseView::showSubset},
    {"sort", OvTranslation::noop("S&ort..."), "Ctrl+Shift+O",
     OvTranslation::noop("All rows in the order of some fields"), false, &OrvaneDatabaseView::showSort},
    {"group", OvTranslation::noop("&Group..."), "Ctrl+Shift+G",
     OvTranslation::noop("One row for all rows that are equal in some fields"), false,
     &OrvaneDatabaseView::showGroup},
    {"ungroup", OvTranslation::noop("&Ungroup"), "Ctrl+Shift+U",
     OvTranslation::noop("The rows that the groups are made of"), true, &OrvaneDatabaseView::showUngroup},
};

const DeriveList lists[] = {
    {"joinMenu", OvTranslation::noop("&Join"),
     OvTranslation::noop("Each row beside the rows of another table that belong to it"),
     OvTranslation::noop("The rows of %1 beside those of %2 that belong to them"), Offers::Joinable, 0,
     &OrvaneDatabaseView::showJoin},
    {"outerJoinMenu", OvTranslation::noop("Ou&ter Join"),
     OvTranslation::noop("As a join; rows without a match stay, beside a row of nulls"),
     OvTranslation::noop("All rows of %1, beside those of %2 that belong to them or a row of nulls"),
     Offers::Joinable, 0, &OrvaneDatabaseView::showOuterJoin},
    {"leftJoinMenu", OvTranslation::noop("&Left Join"),
     OvTranslation::noop("As a join, with the other table first: in the order of its rows"),
     OvTranslation::noop("The rows of %2, in order, beside those of %1 that belong to them"),
     Offers::Joinable, 0, &OrvaneDatabaseView::showLeftJoin},
    {"noJoinMenu", OvTranslation::noop("&No Join"),
     OvTranslation::noop("The rows that have no match in another table"),
     OvTranslation::noop("The rows of %1 that have no match in %2"), Offers::Joinable, 0,
     &OrvaneDatabaseView::showNoJoin},
    {"thetaJoinMenu", OvTranslation::noop("T&heta Join"),
     OvTranslation::noop("The pairs of rows for which an expression is true"),
     OvTranslation::noop("The pairs of rows of %1 and %2 for which an expression is true"), Offers::AnyOther,
     0, &OrvaneDatabaseView::showThetaJoin},
    {"severMenu", OvTranslation::noop("Se&ver"), OvTranslation::noop("The view without one of its tables"),
     OvTranslation::noop("%1 without %2"), Offers::Members, 2, &OrvaneDatabaseView::showSever},
    {"separateMenu", OvTranslation::noop("Se&parate"),
     OvTranslation::noop("The rows of one table that occur in the view"),
     OvTranslation::noop("The rows of %2 that occur in %1"), Offers::Members, 1,
     &OrvaneDatabaseView::showSeparate},
};

// The base tables that a table is made of: those of a view, or itself.
QStringList membersOf(OrvaneTableModel &table)
{
    return table.tableIsView() ? QStringList(table.getViewTables()) : QStringList{table.getTableName()};
}

bool hasBundles(OrvaneTableModel &table)
{
    if (!table.tableIsView()) {
        return false;
    }
    for (int column = table.columnCount() - 1; column > 0; --column) {
        if (table.getColumnType(column) == dbDBPTR) {
            return true;
        }
    }
    return false;
}

bool overlap(const QStringList &some, const QStringList &others)
{
    return std::any_of(some.begin(), some.end(), [&](const QString &name) { return others.contains(name); });
}

// "arid", or "time = ondate::offdate" where the sides differ.
QString keysText(const QList<QStringList> &sides)
{
    QStringList texts;
    for (int key = 0; sides.size() == 2 && key < qMin(sides[0].size(), sides[1].size()); ++key) {
        const QString &left = sides[0][key];
        const QString &right = sides[1][key];
        texts.append(left == right ? left : left + " = " + right);
    }
    return texts.join(", ");
}

} // namespace

DeriveMenu::DeriveMenu(MainWindow &window, QMenuBar &bar)
    : QObject(&window), m_window(window), m_menu(bar.addMenu(tr("&Derive")))
{
    m_menu->setObjectName("deriveMenu");
    m_menu->setToolTipsVisible(true);
    for (const DeriveCommand &command : commands) {
        addCommand(command);
    }
    const DeriveList *before = nullptr;
    for (const DeriveList &list : lists) {
        if (before == nullptr || before->offers != list.offers) {
            m_menu->addSeparator();
        }
        addList(list);
        before = &list;
    }
    connect(m_menu, &QMenu::aboutToShow, this, &DeriveMenu::fillLists);
}

void DeriveMenu::addCommand(const DeriveCommand &command)
{
    QAction *action = m_menu->addAction(OvTranslation::tr(command.text));
    action->setObjectName(command.name);
    action->setParent(&m_window);
    action->setShortcut(QKeySequence(command.keys, QKeySequence::PortableText));
    action->setToolTip(OvTranslation::tr(command.tip));
    connect(action, &QAction::triggered, this, [this, run = command.run] {
        if (OrvaneDatabaseView *view = m_window.view()) {
            (view->*run)();
        }
    });
    m_commands.insert(&command, action);
}

void DeriveMenu::addList(const DeriveList &list)
{
    QMenu *menu = m_menu->addMenu(OvTranslation::tr(list.text));
    menu->setObjectName(list.name);
    menu->setToolTipsVisible(true);
    menu->menuAction()->setToolTip(OvTranslation::tr(list.tip));
    connect(menu, &QMenu::triggered, this, [this, run = list.run](QAction *chosen) {
        if (OrvaneDatabaseView *view = m_window.view()) {
            (view->*run)(chosen);
        }
    });
    m_lists.insert(&list, menu);
}

OrvaneTableModel *DeriveMenu::table() const
{
    OrvaneDatabaseView *view = m_window.view();
    return view == nullptr ? nullptr : view->getCurrentTableModel();
}

void DeriveMenu::update()
{
    OrvaneTableModel *shown = table();
    for (auto command = m_commands.cbegin(); command != m_commands.cend(); ++command) {
        command.value()->setEnabled(shown != nullptr && (!command.key()->needsBundles || hasBundles(*shown)));
    }
    if (m_menu->isVisible()) {
        fillLists();
    }
}

// When the menu is opened, so that turning tabs costs nothing and what is offered is always what there is.
void DeriveMenu::fillLists()
{
    OrvaneTableModel *shown = table();
    QHash<int, QList<Candidate>> candidates; // the same for several lists
    for (const DeriveList &list : lists) {
        const int offers = static_cast<int>(list.offers);
        if (shown != nullptr && !candidates.contains(offers)) {
            candidates.insert(offers, candidatesFor(list, *shown));
        }
        const bool fits = shown != nullptr && membersOf(*shown).size() >= list.leastMembers &&
                          (list.leastMembers == 0 || shown->tableIsView());
        fill(*m_lists[&list], list, shown == nullptr ? QString() : shown->getTableName(),
             fits ? candidates[offers] : QList<Candidate>());
    }
}

void DeriveMenu::fill(QMenu &menu, const DeriveList &list, const QString &table,
                      const QList<Candidate> &candidates)
{
    menu.clear();
    menu.menuAction()->setEnabled(!candidates.isEmpty());
    for (const Candidate &candidate : candidates) {
        QString text = candidate.name;
        text.replace('&', "&&");
        QAction *action = menu.addAction(candidate.keys.isEmpty() ? text : text + "\t" + candidate.keys);
        action->setData(candidate.name);
        QString tip = OvTranslation::tr(list.entryTip).arg(table, candidate.name);
        action->setToolTip(candidate.keys.isEmpty() ? tip : tip + tr(", by %1").arg(candidate.keys));
    }
}

QList<DeriveMenu::Candidate> DeriveMenu::candidatesFor(const DeriveList &list, OrvaneTableModel &table) const
{
    if (list.offers == Offers::Joinable) {
        return joinable(table);
    }
    QList<Candidate> candidates;
    const QStringList names = list.offers == Offers::Members ? membersOf(table) : others(table);
    for (const QString &name : names) {
        candidates.append({name, QString()});
    }
    return candidates;
}

// Tables that are there, in the order of the schema, then views of them.
QList<DeriveMenu::Candidate> DeriveMenu::joinable(OrvaneTableModel &table) const
{
    const QMap<QString, QList<QStringList>> present = table.findJoinTablesPresent();
    QList<Candidate> candidates;
    for (const QString &name : table.findJoinTables()) {
        if (present.contains(name)) {
            candidates.append({name, keysText(present[name])});
        }
    }
    for (const QString &name : others(table)) {
        OrvaneTableModel *other = m_window.model()->getTableModel(name);
        if (other != nullptr && other->tableIsView() && overlap(membersOf(*other), present.keys())) {
            candidates.append({name, QString()});
        }
    }
    return candidates;
}

// The tables and views that share no member with this one: a table can be in a view only once.
QStringList DeriveMenu::others(OrvaneTableModel &table) const
{
    const QStringList members = membersOf(table);
    QStringList names;
    for (const QString &name :
         m_window.model()->getTableNames() + m_window.model()->getViewNamesSkipFacades()) {
        OrvaneTableModel *other = m_window.model()->getTableModel(name);
        if (other != nullptr && !overlap(membersOf(*other), members)) {
            names.append(name);
        }
    }
    return names;
}
