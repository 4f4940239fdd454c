#include "unattended.h"

#include <cstdio>

#include <QApplication>
#include <QEvent>
#include <QMessageBox>
#include <QTimer>

Unattended::Unattended()
{
    qApp->installEventFilter(this);
}

bool Unattended::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Show) {
        if (auto *box = qobject_cast<QMessageBox *>(watched)) {
            ++m_messages;
            std::fprintf(stderr, "ovedit: %s\n", qPrintable(box->text()));
            // Not now: the box's own event loop begins after it is shown.
            QTimer::singleShot(0, box, &QMessageBox::reject);
        }
    }
    return QObject::eventFilter(watched, event);
}
