#include "configuration.h"

#include <algorithm>
#include <memory>

#include <QFile>
#include <QFont>
#include <QTimeZone>

#include <orvane/tr.h>
#include <orvane/util.h>
#include <ovconfig.h>

#include "problem_log.h"

namespace {

constexpr double secondsBetweenLooks = 5.0;

const Switch switches[] = {
    {"show_tooltips", OvTranslation::noop("&Tooltips"),
     OvTranslation::noop("Describe tables, fields and records when the mouse rests on them")},
    {"show_readable_times", OvTranslation::noop("&Readable Times"),
     OvTranslation::noop("Show times as dates instead of epoch seconds")},
    {"show_times_in_local_zone", OvTranslation::noop("Times in &Local Zone"),
     OvTranslation::noop("Show times in the chosen time zone instead of UTC")},
    {"show_raw_nulls", OvTranslation::noop("Raw &Nulls"),
     OvTranslation::noop("Show missing values as they are stored instead of empty cells")},
    {"show_nulls_background_colored", OvTranslation::noop("Colo&ured Nulls"),
     OvTranslation::noop("Mark missing values by the colour of their cells")},
    {"show_blanks_background_colored", OvTranslation::noop("Coloured &Blanks"),
     OvTranslation::noop("Mark blank values by the colour of their cells")},
    {"show_empty_columns", OvTranslation::noop("&Empty Columns"),
     OvTranslation::noop("Show the columns that hold no values, too")},
    {"request_view_names", OvTranslation::noop("&Ask for View Names"),
     OvTranslation::noop("Ask how each derived view is to be called")},
    {"alternate_row_colors", OvTranslation::noop("&Striped Rows"),
     OvTranslation::noop("Shade every other row")},
};

const Switch switchesOfSaving[] = {
    {"saveas_includes_headers", OvTranslation::noop("Save &With Column Names"),
     OvTranslation::noop("Begin text files and spreadsheets with the names of the columns")},
};

} // namespace

std::span<const KnownKey> knownKeys()
{
    static const KnownKey keys[] = {
        {"auto_open", true},
        {"show_empty_columns", false},
        {"default_table", QVariantMap{{"css3.0", "origin"}}},
        {"update_interval_sec", secondsBetweenLooks},
        {"allow_edits", false},
        {"ask_before_changing_rows", true},
        {"show_blanks_background_colored", true},
        {"show_nulls_background_colored", true},
        {"show_readable_times", true},
        {"show_raw_nulls", false},
        {"show_times_in_local_zone", false},
        {"show_tooltips", true},
        {"background_null_color", QStringLiteral("light gray")},
        {"background_blank_color", QStringLiteral("light yellow")},
        {"time_string_format", QStringLiteral("%D (%j) %H:%M:%S.%u %Z")},
        {"local_time_zone", QString::fromUtf8(QTimeZone::systemTimeZoneId())},
        {"font_size_points", defaultFontSize},
        {"request_view_names", true},
        {"saveas_includes_headers", true},
        {"alternate_row_colors", true},
        {"fieldedit_width_chars", 40},
        {"fields", QString()},
        {"expression_history", QStringList()},
    };
    return keys;
}

void registerKnownKeys(OvConfig &config)
{
    for (const KnownKey &known : knownKeys()) {
        config.configureIfUnset(known.key, known.value);
    }
}

QString loadParameterFile(OvConfig &config, const QString &path)
{
    takeErrorLog(); // so that what stands in it afterwards is about this file
    Pf *parameters = nullptr;
    const int code = pfread(QFile::encodeName(path).constData(), &parameters);
    const std::unique_ptr<Pf, void (*)(Pf *)> owner(parameters, pffree);
    if (code < 0) {
        const QString reason = takeErrorLog().join('\n');
        return reason.isEmpty() ? OvTranslation::tr("%1: can't be read as a parameter file").arg(path)
                                : reason;
    }
    config.configure(parameters);
    return {};
}

std::span<const Switch> viewSwitches()
{
    return switches;
}

std::span<const Switch> saveSwitches()
{
    return switchesOfSaving;
}

void setFontSize(OvConfig &config, int points)
{
    const int size = std::clamp(points, smallestFontSize, largestFontSize);
    config.configure("font_size_points", size);
    if (config.hasKey("font")) {
        QFont font = config["font"].value<QFont>();
        font.setPointSize(size);
        config.configure("font", font);
    }
}
