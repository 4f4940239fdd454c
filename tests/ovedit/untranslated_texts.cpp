#include "untranslated_texts.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QEvent>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <QSpinBox>
#include <QTabBar>
#include <QTimer>
#include <QTreeView>

#include "bracketing_catalogue.h"

UntranslatedTexts::UntranslatedTexts(QSet<QString> names, Answer answer)
    : m_names(std::move(names)), m_answer(std::move(answer))
{
    qApp->installEventFilter(this);
}

bool UntranslatedTexts::eventFilter(QObject *watched, QEvent *event)
{
    auto *window = qobject_cast<QWidget *>(watched);
    if (event->type() == QEvent::Show && window != nullptr && window->isWindow()) {
        // Not now: the loop of a dialog or menu begins after it is shown.
        QTimer::singleShot(0, window, [this, window] { meet(*window); });
    }
    return QObject::eventFilter(watched, event);
}

void UntranslatedTexts::meet(QWidget &window)
{
    const QPointer<QWidget> alive(&window);
    look(window);
    const bool waits =
        qobject_cast<QDialog *>(&window) != nullptr || qobject_cast<QMenu *>(&window) != nullptr;
    if (!waits || !window.isVisible()) {
        return;
    }
    m_answer(window);
    if (alive != nullptr && alive->isVisible()) {
        alive->close();
    }
}

void UntranslatedTexts::look(QWidget &window)
{
    const auto *box = qobject_cast<QMessageBox *>(&window);
    m_seen.append(QString("%1 %2").arg(window.metaObject()->className(),
                                       box != nullptr ? box->text() : window.windowTitle()));
    lookAtWidget(window);
    for (QWidget *part : window.findChildren<QWidget *>()) {
        lookAtWidget(*part);
    }
}

void UntranslatedTexts::lookAtWidget(QWidget &widget)
{
    for (const QString &text :
         {widget.isWindow() ? widget.windowTitle() : QString(), widget.toolTip(), widget.statusTip(),
          widget.whatsThis(), widget.accessibleName(), widget.accessibleDescription()}) {
        note(widget, text);
    }
    for (const QAction *action : widget.actions()) {
        lookAtAction(*action, widget);
    }
    if (auto *label = qobject_cast<QLabel *>(&widget)) {
        note(widget, label->text());
    } else if (auto *button = qobject_cast<QAbstractButton *>(&widget)) {
        note(widget, button->text());
    } else if (auto *box = qobject_cast<QGroupBox *>(&widget)) {
        note(widget, box->title());
    } else if (auto *edit = qobject_cast<QLineEdit *>(&widget)) {
        note(widget, edit->placeholderText());
    } else if (auto *menu = qobject_cast<QMenu *>(&widget)) {
        note(widget, menu->title());
    } else if (auto *tabs = qobject_cast<QTabBar *>(&widget)) {
        for (int tab = 0; tab < tabs->count(); ++tab) {
            note(widget, tabs->tabText(tab));
            note(widget, tabs->tabToolTip(tab));
        }
    } else if (auto *choice = qobject_cast<QComboBox *>(&widget)) {
        for (int entry = 0; entry < choice->count(); ++entry) {
            note(widget, choice->itemText(entry));
        }
    } else if (auto *number = qobject_cast<QSpinBox *>(&widget)) {
        note(widget, number->prefix() + number->suffix() + number->specialValueText());
    } else if (auto *tree = qobject_cast<QTreeView *>(&widget)) {
        for (int column = 0; tree->model() != nullptr && column < tree->model()->columnCount(); ++column) {
            note(widget, tree->model()->headerData(column, Qt::Horizontal).toString());
        }
    }
}

void UntranslatedTexts::lookAtAction(const QAction &action, const QWidget &owner)
{
    // A tooltip that nobody has set repeats the text.
    for (const QString &text : {action.text(), action.toolTip(), action.statusTip(), action.whatsThis()}) {
        note(owner, text);
    }
}

void UntranslatedTexts::note(const QObject &where, const QString &text)
{
    // What tables, fields and records tell about themselves is looked at elsewhere.
    if (text.startsWith("<table>")) {
        return;
    }
    const QString left = untranslatedPart(text, m_names);
    const QString line = QString("%1 \"%2\": %3 (of: %4)")
                             .arg(where.metaObject()->className(), where.objectName(), left, text);
    if (!left.isEmpty() && !m_found.contains(line)) {
        m_found.append(line);
    }
}
