// Keeps message boxes from waiting for somebody who isn't there.
#ifndef OVEDIT_UNATTENDED_H
#define OVEDIT_UNATTENDED_H

#include <QObject>

// While it lives, every message box is written to standard error and closed at once.
class Unattended : public QObject
{
    Q_OBJECT

public:
    Unattended();

    int messages() const { return m_messages; }

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    int m_messages = 0;
};

#endif
