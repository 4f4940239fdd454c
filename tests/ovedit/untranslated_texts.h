// Looks through windows for texts that have not passed through the translation.
#ifndef ORVANE_TESTS_OVEDIT_UNTRANSLATED_TEXTS_H
#define ORVANE_TESTS_OVEDIT_UNTRANSLATED_TEXTS_H

#include <functional>

#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>

class QAction;
class QWidget;

// While it lives, looks at every window, dialog and menu that opens, and answers those that wait for the
// user.
class UntranslatedTexts : public QObject
{
public:
    // Answers a dialog or menu; what it leaves open is closed.
    using Answer = std::function<void(QWidget &window)>;

    // `names` are words that come from data and from the program's name.
    UntranslatedTexts(QSet<QString> names, Answer answer);

    // Looks at a widget with all that it is made of.
    void look(QWidget &window);

    // "class and object name: text", each once.
    QStringList found() const { return m_found; }

    // The classes of the windows looked at, and the title or text by which they are told apart.
    QStringList seen() const { return m_seen; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void meet(QWidget &window);
    void lookAtWidget(QWidget &widget);
    void lookAtAction(const QAction &action, const QWidget &owner);
    void note(const QObject &where, const QString &text);

    QSet<QString> m_names;
    Answer m_answer;
    QStringList m_found;
    QStringList m_seen;
};

#endif
