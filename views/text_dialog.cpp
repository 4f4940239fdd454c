#include "text_dialog.h"

#include <QFontMetrics>
#include <QInputDialog>
#include <QPointer>

// As QInputDialog::getText, which makes the dialog as narrow as its label, too narrow for the title.
std::optional<QString> askForText(QWidget *parent, const QString &title, const QString &label)
{
    // Deleted by the parent, should that go while the dialog is open.
    const QPointer<QInputDialog> dialog = new QInputDialog(parent);
    dialog->setInputMode(QInputDialog::TextInput);
    dialog->setWindowTitle(title);
    dialog->setLabelText(label);
    const QSize least = dialog->sizeHint();
    const QFontMetrics metrics = dialog->fontMetrics();
    const int frame = 16 * metrics.averageCharWidth(); // its buttons beside the title
    dialog->resize(qMax(least.width(), metrics.horizontalAdvance(title) + frame), least.height());
    std::optional<QString> text;
    if (dialog->exec() == QDialog::Accepted && dialog != nullptr) {
        text = dialog->textValue();
    }
    delete dialog;
    return text;
}
