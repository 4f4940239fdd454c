#include "error_boxes.h"

#include <QApplication>
#include <QEvent>
#include <QMessageBox>

#include "error_text.h"

ErrorBoxes::ErrorBoxes()
{
    qApp->installEventFilter(this);
}

bool ErrorBoxes::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Polish) { // once, before the box is laid out and seen
        auto *box = qobject_cast<QMessageBox *>(watched);
        if (box != nullptr && isRequestFailure(box->text())) {
            box->setDetailedText(box->text());
            box->setTextFormat(Qt::RichText);
            box->setText(richReason(reasonIn(box->text())));
            box->setIcon(QMessageBox::Warning);
            box->setWindowTitle(QApplication::applicationName());
        }
    }
    return QObject::eventFilter(watched, event);
}
