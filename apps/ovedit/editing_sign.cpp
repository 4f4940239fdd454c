#include "editing_sign.h"

#include <orvanedatabaseview.h>
#include <orvanetablemodel.h>
#include <ovconfig.h>

#include "application.h"
#include "main_window.h"

EditingSign::EditingSign(MainWindow &window) : m_window(window)
{
    setObjectName("editingSign");
    setFocusPolicy(Qt::NoFocus); // the key that turns editing on is the menu's
    setAutoRaise(true);
    setToolButtonStyle(Qt::ToolButtonTextOnly);
    connect(this, &QToolButton::clicked, this, &EditingSign::toggleEditing);
    refresh();
}

void EditingSign::say(const QString &text, const QString &tip, bool isOn)
{
    setText(text);
    setToolTip(tip);
    // The colour of what is selected, which every palette has and in which text is legible.
    setStyleSheet(isOn ? QStringLiteral("QToolButton { background: palette(highlight); color: "
                                        "palette(highlighted-text); border-radius: 3px; padding: 2px 8px; }")
                       : QStringLiteral("QToolButton { padding: 2px 8px; border: none; }"));
    setVisible(!text.isEmpty());
}

void EditingSign::refresh()
{
    OrvaneDatabaseView *view = m_window.view();
    OrvaneTableModel *table = view == nullptr ? nullptr : view->getCurrentTableModel();
    if (table == nullptr) {
        say(QString(), QString(), false);
    } else if (m_window.mode() != "r+") {
        say(tr("Read Only"),
            tr("The database is open for reading only. Close it and open it again to read and write."),
            false);
    } else if (!table->tableIsWritable()) {
        say(tr("Read Only"), tr("The file of this table can't be written."), false);
    } else if (!m_window.application().config()["allow_edits"].toBool()) {
        say(tr("Editing Off"), tr("Cells can't be typed into. Click here to allow edits."), false);
    } else {
        say(tr("Editing On"), tr("What is typed into cells goes into the file. Click here to forbid edits."),
            true);
    }
}

void EditingSign::toggleEditing()
{
    OvConfig &config = m_window.application().config();
    if (m_window.hasDatabase() && m_window.mode() == "r+") {
        config.configure("allow_edits", !config["allow_edits"].toBool());
    }
}
