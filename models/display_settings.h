#ifndef OVQT_MODELS_DISPLAY_SETTINGS_H
#define OVQT_MODELS_DISPLAY_SETTINGS_H

#include <QByteArray>
#include <QFont>
#include <QFontMetrics>
#include <QString>
#include <QTimeZone>
#include <QVariant>
#include <optional>

class OvConfig;

// The configuration in the form that cells and headers are drawn by: converted once, to be made anew when the
// configuration changes.
struct DisplaySettings {
    explicit DisplaySettings(const OvConfig &config);

    bool allowEdits;
    bool showRawNulls;
    bool showReadableTimes;
    bool showLocalTimes;
    bool showTooltips;
    bool colourNulls;
    bool colourBlanks;

    QVariant nullBackground; // brushes; a plain one where the kind is not to be coloured
    QVariant blankBackground;
    QVariant plainBackground;

    QByteArray timeFormat;
    QByteArray localZone;   // empty when there is none or it is not known
    QTimeZone localOffsets; // of localZone

    // Of the configured font. Needs a QGuiApplication, which the rest does not.
    const QFontMetrics &fontMetrics() const;

    // A time as people read it, in the zone that times are shown in.
    QString readableTime(double epoch) const;

    // How long a time is in the format, with the local zone's abbreviation.
    int readableTimeLength() const;

private:
    QFont m_font;
    mutable std::optional<QFontMetrics> m_fontMetrics;
};

#endif
