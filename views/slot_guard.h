// The two ways in which a slot keeps an exception to itself.
#ifndef OVQT_VIEWS_SLOT_GUARD_H
#define OVQT_VIEWS_SLOT_GUARD_H

#include <exception>

#include <QString>
#include <QtDebug>

#include <qovutil.h>

// For what the user asked for: the reason is shown in a modal box.
template <typename Action>
void showingErrors(Action &&action)
{
    try {
        action();
    } catch (const std::exception &error) {
        qovutil_showError(QString::fromUtf8(error.what()), nullptr);
    }
}

// For what happens by itself, again and again (painting, polling): a box for each would bury the user.
template <typename Action>
void loggingErrors(const char *where, Action &&action)
{
    try {
        action();
    } catch (const std::exception &error) {
        qWarning("%s: %s", where, error.what());
    }
}

#endif
