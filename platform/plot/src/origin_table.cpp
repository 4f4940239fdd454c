#include "origin_table.h"

#include <sys/stat.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>

#include <QFile>

#include <orvane/plot.h>
#include <orvane/util.h>

#include "error_log.h"

static constexpr double unknown = std::numeric_limits<double>::quiet_NaN();

OriginTable::OriginTable(const QString &path) : m_path(path)
{
    open(path);
}

void OriginTable::open(const QString &path)
{
    const LoggedErrors errors;
    if (dbopen_database(QFile::encodeName(path).constData(), "r", &m_database) != 0) {
        m_openError = errors.take();
        return;
    }
    m_table = dblookup(m_database, nullptr, "origin", nullptr, nullptr);
    if (m_table.table < 0)
        return;
    m_latitude = fieldOf("lat");
    m_longitude = fieldOf("lon");
    m_depth = fieldOf("depth");
    m_magnitudes[0] = fieldOf("mb");
    m_magnitudes[1] = fieldOf("ms");
    m_magnitudes[2] = fieldOf("ml");
}

OriginTable::~OriginTable()
{
    const LoggedErrors errors;
    if (m_database.database >= 0)
        OVdbclose(m_database);
}

OriginTable::Field OriginTable::fieldOf(const char *name) const
{
    Field field;
    const Dbptr found = dblookup(m_table, nullptr, nullptr, name, nullptr);
    const char *null = nullptr;
    field.index = found.field;
    if (found.field >= 0 && dbquery(found, dbNULL, &null) == 0 && null)
        field.null = std::strtod(null, nullptr);
    return field;
}

OriginTable::State OriginTable::state() const
{
    const LoggedErrors errors;
    State state;
    state.error = m_openError;
    if (!m_openError.isEmpty())
        return state;
    std::int64_t present = 0;
    if (m_table.table < 0 || dbquery(m_table, dbTABLE_PRESENT, &present) != 0 || !present) {
        state.error = OvEventMap::tr("The database %1 has no table \"origin\".").arg(m_path);
        return state;
    }
    const char *file = nullptr;
    struct stat found;
    if (dbquery(m_table, dbTABLE_FILENAME, &file) == 0 && file && stat(file, &found) == 0) {
        state.size = found.st_size;
        state.modified = std::int64_t{found.st_mtim.tv_sec} * 1'000'000'000 + found.st_mtim.tv_nsec;
        state.file = static_cast<std::int64_t>(found.st_ino);
    }
    // A table of a wrong form answers as an empty one and says why in the log.
    dbquery(m_table, dbRECORD_COUNT, &state.records);
    state.error = errors.take();
    return state;
}

// Not a number for a null or an absent field; nothing when the record has no value of the field's type.
std::optional<double> OriginTable::value(const Field &field, std::int64_t record) const
{
    if (field.index < 0)
        return unknown;
    Dbptr cell = m_table;
    cell.field = field.index;
    cell.record = record;
    DbValue value{};
    if (dbgetv(cell, nullptr, &value) != 0)
        return std::nullopt;
    std::free(value.text);
    const double number =
        value.type == dbREAL || value.type == dbTIME ? value.real : static_cast<double>(value.integer);
    return number == field.null ? unknown : number;
}

bool OriginTable::read(std::int64_t record, EventCatalogue &catalogue) const
{
    const auto latitude = value(m_latitude, record), longitude = value(m_longitude, record);
    if (!latitude || !longitude) {
        Dbptr whole = m_table;
        whole.record = record;
        char none;
        if (dbget(whole, &none, sizeof none) < 0)
            return false;
        ++catalogue.unreadable;
        return true;
    }
    if (std::isnan(*latitude) || std::isnan(*longitude)) {
        ++catalogue.withoutCoordinates;
        return true;
    }
    if (std::abs(*latitude) > 90 || std::abs(*longitude) > 180) {
        ++catalogue.impossibleCoordinates;
        return true;
    }
    double magnitude = unknown;
    for (const Field &field : m_magnitudes)
        magnitude = std::fmax(magnitude, value(field, record).value_or(unknown));
    const double depth = value(m_depth, record).value_or(unknown);
    catalogue.events.push_back(
        {*latitude, *longitude, record, static_cast<float>(depth), static_cast<float>(magnitude)});
    return true;
}

// The field's text without blanks at its ends.
static std::optional<QString> trimmedText(Dbptr cell)
{
    char buffer[512];
    const std::int64_t length = dbget(cell, buffer, sizeof buffer);
    if (length < 0 || length >= static_cast<std::int64_t>(sizeof buffer))
        return std::nullopt;
    return QString::fromUtf8(buffer, static_cast<int>(length)).trimmed();
}

static QString withTime(const QString &number)
{
    const std::unique_ptr<char, void (*)(void *)> time(
        epoch2str(number.toDouble(), "%Y-%m-%d %H:%M:%S.%s UTC"), std::free);
    return time ? QString::fromUtf8(time.get()) : number;
}

QVector<std::pair<QString, QString>> OriginTable::fieldsOf(std::int64_t record) const
{
    const LoggedErrors errors;
    QVector<std::pair<QString, QString>> fields;
    std::int64_t count = 0;
    if (dbquery(m_table, dbFIELD_COUNT, &count) != 0)
        return fields;
    Dbptr cell = m_table;
    cell.record = record;
    for (cell.field = 0; cell.field < count; ++cell.field) {
        Dbptr field = cell;
        field.record = dbALL;
        const char *name = nullptr, *null = nullptr;
        std::int64_t type = 0;
        const auto shown = trimmedText(cell);
        if (!shown)
            return {};
        if (dbquery(field, dbFIELD_NAME, &name) != 0 || dbquery(field, dbFIELD_TYPE, &type) != 0)
            continue;
        if (dbquery(field, dbNULL, &null) == 0 && null && *shown == QString::fromUtf8(null).trimmed())
            continue;
        fields.push_back({QString::fromUtf8(name), type == dbTIME ? withTime(*shown) : *shown});
    }
    return fields;
}
