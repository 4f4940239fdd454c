// How long an operation will still take, as far as its pace tells.
#ifndef OVEDIT_TIME_LEFT_H
#define OVEDIT_TIME_LEFT_H

#include <deque>

#include <QCoreApplication>
#include <QString>

// Goes by the last seconds and not by the whole: an operation has steps, and how its fraction is shared out
// between them says little about their durations.
class TimeLeft
{
    Q_DECLARE_TR_FUNCTIONS(TimeLeft)

public:
    // Notes how far the operation is at a time.
    void note(double fraction, qint64 milliseconds);

    // "About 20 seconds left"; empty where it can't be told: at the beginning, and while nothing moves.
    QString text() const;

private:
    struct Point {
        double fraction;
        qint64 milliseconds;
    };
    std::deque<Point> m_points;
};

// The same of a number of seconds, rounded as people count.
QString timeLeftText(double seconds);

#endif
