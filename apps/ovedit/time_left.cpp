#include "time_left.h"

#include <cmath>

namespace {

constexpr qint64 lookBack = 5000;       // milliseconds over which the pace is taken
constexpr qint64 guessAfter = 1500;     // milliseconds: over less a guess would jump about
constexpr double minuteBegins = 55;     // seconds that are told as a minute
constexpr double hourBegins = 55 * 60.; // seconds that are told as an hour

// Every second up to ten, then every five.
int roundedSeconds(double seconds)
{
    const double step = seconds <= 10 ? 1 : 5;
    return static_cast<int>(std::ceil(seconds / step) * step);
}

} // namespace

void TimeLeft::note(double fraction, qint64 milliseconds)
{
    m_points.push_back({fraction, milliseconds});
    while (m_points.size() > 2 && milliseconds - m_points[1].milliseconds >= lookBack) {
        m_points.pop_front();
    }
}

QString TimeLeft::text() const
{
    if (m_points.empty()) {
        return {};
    }
    const qint64 time = m_points.back().milliseconds - m_points.front().milliseconds;
    const double way = m_points.back().fraction - m_points.front().fraction;
    if (time < guessAfter || way <= 0) {
        return {};
    }
    return timeLeftText((1 - m_points.back().fraction) / way * static_cast<double>(time) / 1000);
}

QString timeLeftText(double seconds)
{
    if (seconds <= 3) {
        return TimeLeft::tr("A few seconds left");
    }
    if (seconds < minuteBegins) {
        return TimeLeft::tr("About %n seconds left", nullptr, roundedSeconds(seconds));
    }
    if (seconds < hourBegins) {
        const int minutes = qMax(1, qRound(seconds / 60));
        return minutes == 1 ? TimeLeft::tr("About a minute left")
                            : TimeLeft::tr("About %n minutes left", nullptr, minutes);
    }
    const double hours = seconds / 3600;
    if (hours < 1.5) {
        return TimeLeft::tr("About an hour left");
    }
    return hours < 24 ? TimeLeft::tr("About %n hours left", nullptr, qRound(hours))
                      : TimeLeft::tr("More than a day left");
}
