#ifndef ORVANE_TESTS_MESSAGE_BOXES_H
#define ORVANE_TESTS_MESSAGE_BOXES_H

#include <QApplication>
#include <QMessageBox>
#include <QStringList>
#include <QTimer>

/* While it lives, closes every message box as soon as it waits for the user, and keeps its text. */
class MessageBoxes
{
public:
    MessageBoxes()
    {
        QObject::connect(&m_timer, &QTimer::timeout, [this] {
            if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
                m_texts.append(box->text());
                box->reject();
            }
        });
        m_timer.start(1);
    }

    QStringList texts() const { return m_texts; }

private:
    QTimer m_timer;
    QStringList m_texts;
};

#endif
