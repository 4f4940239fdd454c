#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <deque>
#include <mutex>
#include <string>
#include <utility>

#include "formatted_text.h"
#include "guard.h"
#include "notice_epoch.h"
#include "owned_text.h"

namespace orvane::util {
namespace {

constexpr size_t most_lines = 500;
constexpr size_t most_bytes = 64 << 10;
constexpr size_t longest_line = 16 << 10;

/* The lines since the log was cleared, numbered from 0. A run of equal lines is one entry. */
class ErrorLog
{
public:
    void append(std::string line);
    std::string text(int64_t first) const;
    int64_t count() const;
    void clear();

private:
    struct Entry {
        std::string line;
        int64_t first; // numbers of the run's lines
        int64_t last;
    };

    mutable std::mutex mutex_;
    std::deque<Entry> entries_;
    size_t bytes_ = 0;
    int64_t logged_ = 0;
    int64_t dropped_ = 0;
};

void ErrorLog::append(std::string line)
{
    while (!line.empty() && line.back() == '\n')
        line.pop_back();
    const std::lock_guard lock(mutex_);
    if (!entries_.empty() && entries_.back().line == line) {
        entries_.back().last = logged_++;
        return;
    }
    const size_t size = line.size() + 1;
    entries_.push_back({std::move(line), logged_, logged_});
    ++logged_;
    bytes_ += size;
    while (entries_.size() > most_lines || bytes_ > most_bytes) {
        const Entry &oldest = entries_.front();
        bytes_ -= oldest.line.size() + 1;
        dropped_ = oldest.last + 1;
        entries_.pop_front();
    }
}

std::string ErrorLog::text(int64_t first) const
{
    first = std::max<int64_t>(first, 0);
    const std::lock_guard lock(mutex_);
    std::string text;
    bool any = false;
    const auto add = [&](const std::string &line) {
        if (std::exchange(any, true))
            text += '\n';
        text += line;
    };
    if (const int64_t lost = dropped_ - first; lost > 0) {
        std::string notice("(");
        notice.append(std::to_string(lost)).append(lost == 1 ? " earlier line was" : " earlier lines were");
        add(notice.append(" dropped)"));
    }
    for (const Entry &entry : entries_) {
        if (entry.last < first)
            continue;
        const int64_t times = entry.last - std::max(entry.first, first) + 1;
        add(times == 1 ? entry.line : entry.line + " (repeated " + std::to_string(times) + " times)");
    }
    return text;
}

int64_t ErrorLog::count() const
{
    const std::lock_guard lock(mutex_);
    return logged_;
}

void ErrorLog::clear()
{
    const std::lock_guard lock(mutex_);
    entries_.clear();
    bytes_ = 0;
    logged_ = dropped_ = 0;
}

/* Never destroyed, so that a destructor that runs at the end of the program may still log. */
ErrorLog &error_log()
{
    static auto *const log = new ErrorLog;
    return *log;
}

struct NoticeHook {
    std::mutex mutex;
    ElogNoticeHook call = nullptr;
    void *context = nullptr;
    uint64_t epoch = 0;
};

NoticeHook &notice_hook()
{
    static auto *const hook = new NoticeHook;
    return *hook;
}

} // namespace

uint64_t notice_epoch()
{
    const std::lock_guard lock(notice_hook().mutex);
    return notice_hook().epoch;
}

} // namespace orvane::util

using namespace orvane::util;

// A log that can't get memory has nobody to tell: elog_log and elog_notice then do nothing.

void elog_log(const char *format, ...)
{
    if (!format)
        return;
    va_list arguments;
    va_start(arguments, format);
    try {
        error_log().append(formatted_text(longest_line, format, arguments));
    } catch (...) {
    }
    va_end(arguments);
}

char *elog_string(int64_t first)
{
    return guarded<char *>("elog_string", nullptr, [&] { return owned_text(error_log().text(first)); });
}

int64_t elog_count(void)
{
    return guarded<int64_t>("elog_count", 0, [] { return error_log().count(); });
}

void elog_clear(void)
{
    try {
        error_log().clear();
    } catch (...) {
    }
}

void elog_notice(const char *format, ...)
{
    if (!format)
        return;
    va_list arguments;
    va_start(arguments, format);
    try {
        const std::string text = formatted_text(longest_line, format, arguments);
        NoticeHook &hook = notice_hook();
        std::unique_lock lock(hook.mutex);
        const auto call = hook.call;
        void *const context = hook.context;
        lock.unlock(); // the hook may log or set another hook
        if (call)
            call(text.c_str(), context);
        else
            std::fprintf(stderr, "%s\n", text.c_str());
    } catch (...) {
    }
    va_end(arguments);
}

void elog_set_notice_hook(ElogNoticeHook hook, void *context)
{
    try {
        NoticeHook &current = notice_hook();
        const std::lock_guard lock(current.mutex);
        current.call = hook;
        current.context = context;
        ++current.epoch;
    } catch (...) {
    }
}
