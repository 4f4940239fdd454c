#include "edit_menu.h"

#include <exception>

#include <QAction>
#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>

#include <orvane/tr.h>

#include <orvanedatabaseview.h>
#include <orvanetablemodel.h>
#include <orvanetableview.h>
#include <ovconfig.h>
#include <qovutil.h>

#include "application.h"
#include "cell_copying.h"
#include "cell_pasting.h"
#include "main_window.h"

EditMenu::EditMenu(MainWindow &window, QMenuBar &bar)
    : QObject(&window), m_window(window), m_menu(bar.addMenu(OvTranslation::tr("&Edit"))), m_finding(window)
{
    m_menu->setObjectName("editMenu");
    m_menu->setToolTipsVisible(true);
    m_copy = addCommand("copy", OvTranslation::tr("&Copy"), QKeySequence("Ctrl+C"),
                        OvTranslation::tr("Copy the selected cells as tab-separated text"), &EditMenu::copy);
    m_copyWithNames = addCommand(
        "copyWithNames", OvTranslation::tr("Copy &With Column Names"), QKeySequence("Ctrl+Shift+C"),
        OvTranslation::tr("Copy the selected cells below a line with the names of their columns"),
        &EditMenu::copyWithNames);
    m_paste =
        addCommand("paste", OvTranslation::tr("&Paste"), QKeySequence("Ctrl+V"), QString(), &EditMenu::paste);
    m_menu->addSeparator();
    m_selectAll = addCommand("selectAll", OvTranslation::tr("Select &All"), QKeySequence("Ctrl+A"),
                             OvTranslation::tr("Select every cell of the table"), &EditMenu::selectAll);
    m_menu->addSeparator();
    m_finds = {
        addCommand("find", OvTranslation::tr("&Find..."), QKeySequence("Ctrl+F"),
                   OvTranslation::tr("Go to the first row from here on for which an expression is true"),
                   &EditMenu::find),
        addCommand("findNext", OvTranslation::tr("Find &Next"), QKeySequence("F3"), QString(),
                   &EditMenu::findNext),
        addCommand("findPrevious", OvTranslation::tr("Find Pre&vious"), QKeySequence("Shift+F3"), QString(),
                   &EditMenu::findPrevious)};
    connect(m_menu, &QMenu::aboutToShow, this, &EditMenu::update);
}

QAction *EditMenu::addCommand(const char *name, const QString &text, const QKeySequence &keys,
                              const QString &tip, void (EditMenu::*command)())
{
    QAction *action = m_menu->addAction(text);
    action->setObjectName(name);
    action->setShortcut(keys);
    if (!tip.isEmpty()) {
        action->setToolTip(tip);
    }
    connect(action, &QAction::triggered, this, command);
    return action;
}

OrvaneTableView *EditMenu::table() const
{
    OrvaneDatabaseView *view = m_window.view();
    return view == nullptr || view->getCurrentTableModel() == nullptr ? nullptr : view->getCurrentTableView();
}

void EditMenu::update()
{
    OrvaneTableView *shown = table();
    for (QAction *action : QList<QAction *>{m_copy, m_copyWithNames, m_selectAll} + m_finds) {
        action->setEnabled(shown != nullptr);
    }
    const bool isWritable = shown != nullptr && shown->model()->tableIsWritable();
    const bool isEditable = isWritable && m_window.application().config()["allow_edits"].toBool();
    m_paste->setEnabled(isEditable);
    m_paste->setToolTip(
        isEditable
            ? OvTranslation::tr("Put tab-separated text into the cells from the first selected one on; a "
                                "single value into all selected cells")
        : isWritable ? OvTranslation::tr("Cells are changed only while Rows, Allow Edits is on.")
                     : OvTranslation::tr("The table can't be changed."));
    if (shown != nullptr && !shown->actions().contains(m_copy)) {
        shown->addActions({m_copy, m_paste}); // which its cell menu offers
    }
}

template <class Command>
void EditMenu::run(Command command)
{
    OrvaneTableView *shown = table();
    if (shown == nullptr) {
        return;
    }
    try {
        command(*shown);
    } catch (const std::exception &error) {
        qovutil_showError(QString::fromUtf8(error.what()), &m_window);
    }
}

void EditMenu::copy()
{
    run([this](OrvaneTableView &view) { copySelectedCells(view, false, &m_window); });
}

void EditMenu::copyWithNames()
{
    run([this](OrvaneTableView &view) { copySelectedCells(view, true, &m_window); });
}

void EditMenu::paste()
{
    update(); // the setting may have changed, too, since the menu was looked at
    if (m_paste->isEnabled()) {
        run([this](OrvaneTableView &view) { pasteCells(view, &m_window); });
    }
}

void EditMenu::selectAll()
{
    run([](OrvaneTableView &view) { view.selectAll(); });
}

void EditMenu::find()
{
    run([this](OrvaneTableView &) { m_finding.ask(); });
}

void EditMenu::findNext()
{
    run([this](OrvaneTableView &) { m_finding.next(); });
}

void EditMenu::findPrevious()
{
    run([this](OrvaneTableView &) { m_finding.previous(); });
}
