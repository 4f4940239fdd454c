#ifndef OVQT_MODELS_HANDLE_POOL_H
#define OVQT_MODELS_HANDLE_POOL_H

#include <cstddef>
#include <list>
#include <memory>
#include <unordered_map>

#include <qdbptr.h>

// The handles that a model gives out in its indexes: one for each place in the database, owned here. A pool
// that is full deletes the handle that was asked for longest ago.
class HandlePool
{
public:
    explicit HandlePool(std::size_t capacity) : m_capacity(capacity) {}

    // The handle for a place. Throws when the connection is null.
    QDbptr *at(QOvConnection *connection, const Dbptr &place);

    // The handle for the place that `handle` points to; takes `handle`, which may go at once.
    QDbptr *adopt(std::unique_ptr<QDbptr> handle);

    // Whether `handle` is the one for a place. It need not be alive: an address may have been used again
    // since, for the handle of another place.
    bool isAt(const QDbptr *handle, const Dbptr &place) const;

private:
    struct Hash {
        std::size_t operator()(const Dbptr &place) const noexcept;
    };
    struct Equal {
        bool operator()(const Dbptr &a, const Dbptr &b) const noexcept;
    };
    struct Entry {
        Dbptr place; // kept here too: an invalidated handle has forgotten it
        std::unique_ptr<QDbptr> handle;
    };
    using Handles = std::list<Entry>; // the one asked for last is first

    QDbptr *find(const Dbptr &place);
    QDbptr *insert(const Dbptr &place, std::unique_ptr<QDbptr> handle);

    std::size_t m_capacity;
    Handles m_handles;
    std::unordered_map<Dbptr, Handles::iterator, Hash, Equal> m_places;
};

#endif
