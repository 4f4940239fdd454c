// The menu in which the language of the program's texts is chosen.
#ifndef OVEDIT_LANGUAGE_MENU_H
#define OVEDIT_LANGUAGE_MENU_H

#include <QObject>

class MainWindow;
class QAction;
class QMenu;

class LanguageMenu : public QObject
{
    Q_OBJECT

public:
    // Adds itself to a menu of a window; lives as the window's child.
    LanguageMenu(MainWindow &window, QMenu &above);

private:
    void add(const QString &code, const QString &text);
    void choose(const QString &code);
    void check();

    MainWindow &m_window;
    QMenu *m_menu;
};

#endif
