// A question for one line of text.
#ifndef ORVANE_VIEWS_TEXT_DIALOG_H
#define ORVANE_VIEWS_TEXT_DIALOG_H

#include <optional>

#include <QString>

class QWidget;

// Waits for the user, with an empty line at first; nothing when they cancel.
std::optional<QString> askForText(QWidget *parent, const QString &title, const QString &label);

#endif
