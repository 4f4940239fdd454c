#include "error_log.h"

#include <cstdlib>
#include <memory>

#include <orvane/util.h>

LoggedErrors::LoggedErrors() : m_first(elog_count()) {}

LoggedErrors::~LoggedErrors()
{
    if (m_first == 0)
        elog_clear();
}

QString LoggedErrors::take() const
{
    if (elog_count() == m_first)
        return {};
    const std::unique_ptr<char, void (*)(void *)> errors(elog_string(m_first), std::free);
    return QString::fromUtf8(errors.get()).trimmed();
}
