#include "handle_pool.h"

#include <functional>
#include <utility>

std::size_t HandlePool::Hash::operator()(const Dbptr &place) const noexcept
{
    std::size_t hash = 0;
    for (int64_t index : {place.database, place.table, place.field, place.record})
        hash = hash * 1000003U + std::hash<int64_t>()(index);
    return hash;
}

bool HandlePool::Equal::operator()(const Dbptr &a, const Dbptr &b) const noexcept
{
    return a.database == b.database && a.table == b.table && a.field == b.field && a.record == b.record;
}

QDbptr *HandlePool::find(const Dbptr &place)
{
    const auto found = m_places.find(place);
    if (found == m_places.end())
        return nullptr;
    m_handles.splice(m_handles.begin(), m_handles, found->second);
    return found->second->handle.get();
}

bool HandlePool::isAt(const QDbptr *handle, const Dbptr &place) const
{
    const auto found = m_places.find(place);
    return found != m_places.end() && found->second->handle.get() == handle;
}

QDbptr *HandlePool::insert(const Dbptr &place, std::unique_ptr<QDbptr> handle)
{
    QDbptr *const result = handle.get();
    m_handles.push_front({place, std::move(handle)});
    m_places.emplace(place, m_handles.begin());
    while (m_handles.size() > m_capacity) {
        m_places.erase(m_handles.back().place);
        m_handles.pop_back();
    }
    return result;
}

QDbptr *HandlePool::at(QOvConnection *connection, const Dbptr &place)
{
    if (QDbptr *known = find(place))
        return known;
    return insert(place, std::make_unique<QDbptr>(connection, place));
}

QDbptr *HandlePool::adopt(std::unique_ptr<QDbptr> handle)
{
    const Dbptr place = handle->getDbptr();
    if (QDbptr *known = find(place))
        return known;
    return insert(place, std::move(handle));
}
