// The table "origin" of a database.
#pragma once

#include <optional>
#include <utility>
#include <vector>

#include <QString>
#include <QVector>

#include <orvane/db.h>

#include "event_catalogue.h"

// Open through a connection of its own while it lives. It reads on the thread that the database library is
// used on, and leaves the error log as it found it if that was empty.
class OriginTable
{
public:
    explicit OriginTable(const QString &path);
    ~OriginTable();
    OriginTable(const OriginTable &) = delete;
    OriginTable &operator=(const OriginTable &) = delete;

    // What the table is now. It has changed when this has.
    struct State {
        std::int64_t records = 0;
        std::int64_t size = -1, modified = 0,
                     file = 0; // bytes, nanoseconds, identity; without a file -1, 0, 0
        QString error;         // why there is nothing to read
        bool operator==(const State &) const = default;
    };
    State state() const;

    // Adds a record to the catalogue: as an event or to one of the counts. False when the record is gone.
    bool read(std::int64_t record, EventCatalogue &catalogue) const;

    // Name and text of the record's fields that hold a value, in the order of the schema; none when the
    // record can't be read.
    QVector<std::pair<QString, QString>> fieldsOf(std::int64_t record) const;

private:
    // A numeric field and what stands for its null.
    struct Field {
        std::int64_t index = -1;
        std::optional<double> null;
    };
    void open(const QString &path);
    Field fieldOf(const char *name) const;
    std::optional<double> value(const Field &field, std::int64_t record) const;

    QString m_path;
    QString m_openError;
    Dbptr m_database = dbinvalid();
    Dbptr m_table = dbinvalid();
    Field m_latitude, m_longitude, m_depth, m_magnitudes[3];
};
