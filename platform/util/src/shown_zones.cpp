#include "shown_zones.h"

#include <algorithm>
#include <atomic>
#include <mutex>

namespace orvane::util {
namespace {

constexpr size_t most_shown = 8;

struct Shown {
    std::mutex mutex;
    std::vector<const TimeZone *> zones;
    std::atomic<const TimeZone *> latest = nullptr; // so that one zone shown over and over costs no lock
};

Shown &shown()
{
    static auto *const state = new Shown;
    return *state;
}

} // namespace

void note_shown(const TimeZone &zone)
{
    Shown &state = shown();
    if (state.latest.load(std::memory_order_relaxed) == &zone)
        return;
    const std::lock_guard lock(state.mutex);
    std::erase(state.zones, &zone);
    state.zones.insert(state.zones.begin(), &zone);
    if (state.zones.size() > most_shown)
        state.zones.pop_back();
    state.latest = &zone;
}

std::vector<const TimeZone *> shown_zones()
{
    const std::lock_guard lock(shown().mutex);
    return shown().zones;
}

} // namespace orvane::util
