#include "saving_watch.h"

#include <algorithm>
#include <stdexcept>

#include <sys/stat.h>

namespace QXlsx {

namespace {

constexpr double gatheringShare = 0.45; // of the time; the rest is packing

} // namespace

void SavingWatch::begin()
{
    m_gathered = 0;
    m_expectedBytes = 0;
    m_isStopped = false;
}

void SavingWatch::gathered(double part)
{
    if (m_isStopped) {
        throw std::runtime_error("stopped");
    }
    m_gathered = part;
}

void SavingWatch::packing(const QByteArray &path, qint64 expectedBytes)
{
    gathered(1);
    m_path = path;
    m_expectedBytes = std::max<qint64>(expectedBytes, 1);
}

double SavingWatch::fraction() const
{
    return gatheringShare * m_gathered + (1 - gatheringShare) * packed();
}

double SavingWatch::packed() const
{
    const qint64 expected = m_expectedBytes;
    if (expected == 0) {
        return 0;
    }
    struct stat state {
    };
    if (::stat(m_path.constData(), &state) != 0) {
        return 1; // it has its name already
    }
    return std::min(1.0, static_cast<double>(state.st_size) / static_cast<double>(expected));
}

} // namespace QXlsx
