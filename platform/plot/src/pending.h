// Work in a thread of its own, for what touches no database.
#pragma once

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <optional>

template <typename Result>
class Pending
{
public:
    ~Pending() { cancel(); }

    // Starts work(cancelled), which should end soon when *cancelled; what went before is dropped.
    template <typename Work>
    void start(Work work)
    {
        cancel();
        m_cancelled = std::make_shared<std::atomic<bool>>(false);
        m_future = std::async(std::launch::async,
                              [work = std::move(work), cancelled = m_cancelled] { return work(*cancelled); });
    }

    void cancel()
    {
        if (!m_future.valid())
            return;
        *m_cancelled = true;
        m_future.wait();
        m_future = {};
    }

    bool isUnderWay() const { return m_future.valid(); }

    // The result, once; nothing while there is none, unless it is waited for. Throws what the work threw.
    std::optional<Result> take(bool wait)
    {
        if (!m_future.valid())
            return std::nullopt;
        if (!wait && m_future.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
            return std::nullopt;
        return m_future.get();
    }

private:
    std::shared_ptr<std::atomic<bool>> m_cancelled;
    std::future<Result> m_future;
};
