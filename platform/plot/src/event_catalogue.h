// The events of a database, as the map needs them.
#pragma once

#include <cstdint>
#include <vector>

#include <QString>

// What isn't known is not a number; an unknown origin id is negative.
struct Event {
    double latitude, longitude; // degrees
    double time;                // epoch seconds
    std::int64_t origin;        // orid
    float depth;                // km
    float magnitude;            // the largest known of mb, ms and ml
};

struct EventCatalogue {
    std::vector<Event> events; // those that can be drawn, by magnitude ascending, unknown ones first
    std::int64_t withoutCoordinates = 0;
    std::int64_t impossibleCoordinates = 0;
    std::int64_t unreadable = 0; // records whose coordinates are no numbers
    QString error;               // why there are no events, or why reading stopped

    std::int64_t records() const;
};

// Reads the table "origin" of the database at a path. The error log is left as it was found empty.
EventCatalogue readEvents(const QString &path);
