// What the libraries log while something of ours runs.
#pragma once

#include <cstdint>

#include <QString>

// Watches the error log from its making on. If the log was empty then, it is emptied in the end: what was
// logged in between is ours, and the map shows it. Else nothing is taken away from others who wait to read
// it.
class LoggedErrors
{
public:
    LoggedErrors();
    ~LoggedErrors();
    LoggedErrors(const LoggedErrors &) = delete;
    LoggedErrors &operator=(const LoggedErrors &) = delete;

    // The lines logged since, or nothing.
    QString take() const;

private:
    std::int64_t m_first;
};
