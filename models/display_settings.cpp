#include "display_settings.h"

#include <QBrush>
#include <QColor>
#include <QFont>
#include <QSet>
#include <cstdlib>
#include <memory>

#include <orvane/util.h>
#include <ovconfig.h>

namespace {

QVariant solidBrush(const QVariant &colourSetting, bool wanted)
{
    const auto colour = colourSetting.value<QColor>();
    // A text that names no colour would paint the cell black.
    return wanted && colour.isValid() ? QBrush(colour, Qt::SolidPattern) : QBrush();
}

QString timeText(double epoch, const QByteArray &format, const QByteArray &zone)
{
    const std::unique_ptr<char, decltype(&std::free)> text(
        zepoch2str(epoch, format.constData(), zone.isEmpty() ? nullptr : zone.constData()), &std::free);
    return QString::fromUtf8(text.get());
}

// An unknown zone is said once, here, and not for every cell; times then read as UTC, as they would anyway.
QByteArray knownZone(const QByteArray &zone)
{
    static QSet<QByteArray> said;
    if (zone.isEmpty() || QTimeZone(zone).isValid())
        return zone;
    if (!said.contains(zone)) {
        said.insert(zone);
        std::free(zepoch2str(0.0, "%Z", zone.constData())); // gives the notice
    }
    return {};
}

} // namespace

DisplaySettings::DisplaySettings(const OvConfig &config)
    : allowEdits(config["allow_edits"].toBool()), showRawNulls(config["show_raw_nulls"].toBool()),
      showReadableTimes(config["show_readable_times"].toBool()),
      showLocalTimes(config["show_times_in_local_zone"].toBool()),
      showTooltips(config["show_tooltips"].toBool()),
      colourNulls(config["show_nulls_background_colored"].toBool()),
      colourBlanks(config["show_blanks_background_colored"].toBool()),
      nullBackground(solidBrush(config["background_null_color"], colourNulls)),
      // Read from the singular key although the models set the default of `background_blanks_color`: meant.
      blankBackground(solidBrush(config["background_blank_color"], colourBlanks)), plainBackground(QBrush()),
      timeFormat(config["time_string_format"].toString().toUtf8()),
      localZone(knownZone(config["local_time_zone"].toString().toUtf8())), localOffsets(localZone),
      m_font(config["font"].value<QFont>())
{
}

const QFontMetrics &DisplaySettings::fontMetrics() const
{
    if (!m_fontMetrics)
        m_fontMetrics.emplace(m_font);
    return *m_fontMetrics;
}

QString DisplaySettings::readableTime(double epoch) const
{
    return timeText(epoch, timeFormat, showLocalTimes ? localZone : QByteArray());
}

int DisplaySettings::readableTimeLength() const
{
    return timeText(0.0, timeFormat, localZone).length();
}
