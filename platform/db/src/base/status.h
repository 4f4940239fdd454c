// How the engine answers a failure: a code and one or several lines that say what, where, why and what
// to do about it. Nothing in the engine throws for bad input or logs; the C door does the logging.
#pragma once

#include <cassert>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace orvane {

// The numbers are those of dbERROR_… in <orvane/db.h>; the C door asserts that at compile time.
enum class Code : int {
    Ok = 0,
    Stale = -1,
    Argument = -2,
    NotFound = -3,
    Format = -4,
    Io = -5,
    Permission = -6,
    Value = -7,
    Memory = -8,
    Cancelled = -9,
};

// Success, or a failure with its code and message. A success costs one null pointer; a failure is
// shared, so that a kept reason can be handed out again and again.
class [[nodiscard]] Status
{
public:
    Status() = default;
    Status(Code code, std::string message)
        : failure_(std::make_shared<const Failure>(Failure{code, std::move(message)}))
    {
        assert(code != Code::Ok);
    }

    bool ok() const noexcept { return failure_ == nullptr; }
    Code code() const noexcept { return failure_ ? failure_->code : Code::Ok; }
    // One or several lines, without a line feed at the end; empty for a success.
    std::string_view message() const noexcept
    {
        return failure_ ? std::string_view(failure_->message) : std::string_view();
    }
    // The same failure with another line after its own.
    Status with_line(std::string_view line) const
    {
        assert(!ok());
        return Status(code(), failure_->message + "\n" + std::string(line));
    }

private:
    struct Failure {
        Code code;
        std::string message;
    };
    std::shared_ptr<const Failure> failure_;
};

// A value, or the failure that left none.
template <typename T>
class [[nodiscard]] Result
{
public:
    Result(T value) : outcome_(std::in_place_index<1>, std::move(value)) {}
    Result(Status status) : outcome_(std::in_place_index<0>, std::move(status))
    {
        assert(!std::get<0>(outcome_).ok());
    }

    bool ok() const noexcept { return outcome_.index() == 1; }
    Status status() const { return ok() ? Status() : *std::get_if<0>(&outcome_); }
    T &value() &
    {
        assert(ok());
        return *std::get_if<1>(&outcome_);
    }
    const T &value() const &
    {
        assert(ok());
        return *std::get_if<1>(&outcome_);
    }
    T &&value() && { return std::move(value()); }
    T &operator*() & { return value(); }
    const T &operator*() const & { return value(); }
    T &&operator*() && { return std::move(value()); }
    T *operator->() { return &value(); }
    const T *operator->() const { return &value(); }

private:
    std::variant<Status, T> outcome_;
};

} // namespace orvane
