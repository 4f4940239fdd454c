#ifndef CELL_TEXT_H
#define CELL_TEXT_H

#include <array>
#include <vector>

#include <orvane/db.h>

/* Reads the text of a field or record and calls take(char *text, int64_t length) with it, zero-terminated,
 * to be changed at will and valid during the call. Allocates nothing for a text of usual length. False when
 * the library fails. */
template <class Take>
bool withText(Dbptr db, Take take)
{
    std::array<char, 1024> usual;
    int64_t length = dbget(db, usual.data(), usual.size());
    if (length >= 0 && static_cast<size_t>(length) < usual.size()) {
        take(usual.data(), length);
        return true;
    }
    std::vector<char> room;
    while (length >= 0) {
        room.resize(static_cast<size_t>(length) + 1);
        length = dbget(db, room.data(), room.size());
        if (length >= 0 && static_cast<size_t>(length) < room.size()) {
            take(room.data(), length);
            return true;
        }
    }
    return false;
}

#endif
