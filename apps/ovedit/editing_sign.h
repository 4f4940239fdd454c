// Says at the end of the menu bar whether the table shown can be changed by typing.
#ifndef OVEDIT_EDITING_SIGN_H
#define OVEDIT_EDITING_SIGN_H

#include <QToolButton>

class MainWindow;

// A click turns editing on and off, where the database is open for it.
class EditingSign : public QToolButton
{
    Q_OBJECT

public:
    explicit EditingSign(MainWindow &window);

    // As the window stands now.
    void refresh();

private:
    void toggleEditing();
    void say(const QString &text, const QString &tip, bool isOn);

    MainWindow &m_window;
};

#endif
