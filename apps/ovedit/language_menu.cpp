#include "language_menu.h"

#include <QAction>
#include <QActionGroup>
#include <QLocale>
#include <QMenu>

#include <orvane/language.h>

#include "application.h"
#include "main_window.h"

namespace {

// A language by its own name, which whoever looks for it can read whatever language is shown now.
QString ownName(const QString &code)
{
    // The locale of English is that of a country and is named after it.
    const QString name = code == "en" ? QStringLiteral("English") : QLocale(code).nativeLanguageName();
    return name.isEmpty() ? code : name.left(1).toUpper() + name.mid(1);
}

} // namespace

LanguageMenu::LanguageMenu(MainWindow &window, QMenu &above)
    : QObject(&window), m_window(window), m_menu(above.addMenu(tr("&Display Language")))
{
    m_menu->setObjectName("languageMenu");
    new QActionGroup(m_menu);
    add(QString(), tr("As the &System"));
    m_menu->addSeparator();
    for (const QString &code : OvLanguage::known()) {
        add(code, ownName(code));
    }
    // Another window may have chosen since.
    connect(m_menu, &QMenu::aboutToShow, this, &LanguageMenu::check);
    check();
}

void LanguageMenu::add(const QString &code, const QString &text)
{
    QAction *action = m_menu->addAction(text);
    action->setObjectName("language_" + code);
    action->setData(code);
    action->setCheckable(true);
    m_menu->findChild<QActionGroup *>()->addAction(action);
    connect(action, &QAction::triggered, this, [this, code] { choose(code); });
}

void LanguageMenu::check()
{
    const QString chosen = OvLanguage::forWish(m_window.application().settings().language());
    for (QAction *action : m_menu->actions()) {
        action->setChecked(!action->isSeparator() && action->data().toString() == chosen);
    }
}

// The windows that are open keep their texts: what they show is put together of texts and data.
void LanguageMenu::choose(const QString &code)
{
    m_window.application().settings().setLanguage(code);
    m_window.showMessage(tr("The language changes when ovedit is started the next time."));
}
