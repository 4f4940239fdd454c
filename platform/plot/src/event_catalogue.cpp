#include "event_catalogue.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <optional>

#include <QCoreApplication>
#include <QFile>

#include <orvane/db.h>
#include <orvane/util.h>

static constexpr double unknown = std::numeric_limits<double>::quiet_NaN();

std::int64_t EventCatalogue::records() const
{
    return static_cast<std::int64_t>(events.size()) + withoutCoordinates + impossibleCoordinates + unreadable;
}

static QString text(const char *source)
{
    return QCoreApplication::translate("OvEventMap", source);
}

// What was logged since `first`; the log is emptied, as the text is shown.
static QString takeErrors(std::int64_t first)
{
    const std::unique_ptr<char, void (*)(void *)> errors(elog_string(first), std::free);
    const QString said = QString::fromUtf8(errors.get()).trimmed();
    elog_clear();
    return said;
}

namespace {

class Connection
{
public:
    explicit Connection(const QString &path)
        : m_open(dbopen_database(QFile::encodeName(path).constData(), "r", &m_database) == 0)
    {
    }
    ~Connection()
    {
        if (m_open)
            OVdbclose(m_database);
    }
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    bool isOpen() const { return m_open; }
    Dbptr table(const char *name) const { return dblookup(m_database, nullptr, name, nullptr, nullptr); }

private:
    Dbptr m_database{};
    bool m_open;
};

// One numeric field of the table.
class Field
{
public:
    Field(Dbptr table, const char *name) : m_name(name)
    {
        const char *null = nullptr;
        const Dbptr field = dblookup(table, nullptr, nullptr, name, nullptr);
        m_exists = field.field >= 0;
        if (m_exists && dbquery(field, dbNULL, &null) == 0 && null)
            m_null = std::strtod(null, nullptr);
    }

    // Not a number for a null or an absent field; nothing when the record has no value of the field's type.
    std::optional<double> value(Dbptr record) const
    {
        DbValue value{};
        if (!m_exists)
            return unknown;
        if (dbgetv(record, m_name, &value) != 0)
            return std::nullopt;
        std::free(value.text);
        const double number =
            value.type == dbREAL || value.type == dbTIME ? value.real : static_cast<double>(value.integer);
        return number == m_null ? unknown : number;
    }

private:
    const char *m_name;
    bool m_exists = false;
    double m_null = unknown;
};

struct OriginFields {
    explicit OriginFields(Dbptr table)
        : latitude(table, "lat"), longitude(table, "lon"), depth(table, "depth"), time(table, "time"),
          origin(table, "orid"), magnitudes{Field(table, "mb"), Field(table, "ms"), Field(table, "ml")}
    {
    }
    Field latitude, longitude, depth, time, origin;
    Field magnitudes[3];
};

} // namespace

static double largestMagnitude(const OriginFields &fields, Dbptr record)
{
    double largest = unknown;
    for (const Field &field : fields.magnitudes)
        largest = std::fmax(largest, field.value(record).value_or(unknown));
    return largest;
}

static void readEvent(const OriginFields &fields, Dbptr record, EventCatalogue &catalogue)
{
    const auto latitude = fields.latitude.value(record), longitude = fields.longitude.value(record);
    if (!latitude || !longitude) {
        ++catalogue.unreadable;
        return;
    }
    if (std::isnan(*latitude) || std::isnan(*longitude)) {
        ++catalogue.withoutCoordinates;
        return;
    }
    if (std::abs(*latitude) > 90 || std::abs(*longitude) > 180) {
        ++catalogue.impossibleCoordinates;
        return;
    }
    const double origin = fields.origin.value(record).value_or(unknown);
    catalogue.events.push_back({*latitude, *longitude, fields.time.value(record).value_or(unknown),
                                std::isnan(origin) ? -1 : static_cast<std::int64_t>(origin),
                                static_cast<float>(fields.depth.value(record).value_or(unknown)),
                                static_cast<float>(largestMagnitude(fields, record))});
}

static bool smaller(const Event &a, const Event &b)
{
    if (std::isnan(a.magnitude) || std::isnan(b.magnitude))
        return std::isnan(a.magnitude) && !std::isnan(b.magnitude);
    return a.magnitude < b.magnitude;
}

EventCatalogue readEvents(const QString &path)
{
    EventCatalogue catalogue;
    const std::int64_t logged = elog_count();
    const Connection connection(path);
    if (!connection.isOpen()) {
        catalogue.error = takeErrors(logged);
        return catalogue;
    }
    Dbptr record = connection.table("origin");
    std::int64_t present = 0, count = 0;
    if (record.table < 0 || dbquery(record, dbTABLE_PRESENT, &present) != 0 || !present) {
        elog_clear();
        catalogue.error = text("The database %1 has no table \"origin\".").arg(path);
        return catalogue;
    }
    // A table of a wrong form answers as an empty one and says why in the log.
    dbquery(record, dbRECORD_COUNT, &count);
    if (elog_count() > logged)
        catalogue.error = takeErrors(logged);
    const OriginFields fields(record);
    catalogue.events.reserve(static_cast<std::size_t>(std::max<std::int64_t>(count, 0)));
    for (record.record = 0; record.record < count; ++record.record)
        readEvent(fields, record, catalogue);
    elog_clear();
    std::stable_sort(catalogue.events.begin(), catalogue.events.end(), smaller);
    return catalogue;
}
