// The events of a database, as the map needs them.
#pragma once

#include <cstdint>
#include <vector>

#include <QString>

// What isn't known is not a number.
struct Event {
    double latitude, longitude; // degrees
    std::int64_t record;        // of the table
    float depth;                // km
    float magnitude;            // the largest known of mb, ms and ml
};

struct EventCatalogue {
    std::vector<Event> events; // those that can be drawn, by record
    std::int64_t withoutCoordinates = 0;
    std::int64_t impossibleCoordinates = 0;
    std::int64_t unreadable = 0; // records whose coordinates are no numbers
    QString error;               // why there are no events, or why reading stopped

    std::int64_t records() const
    {
        return static_cast<std::int64_t>(events.size()) + withoutCoordinates + impossibleCoordinates +
               unreadable;
    }
};

// Reads the table "origin" of the database at a path, to its end.
EventCatalogue readEvents(const QString &path);
