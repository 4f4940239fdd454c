#include "problem_log.h"

#include <cstdlib>
#include <memory>

#include <QRegularExpression>

#include <orvane/util.h>

namespace {

constexpr int collectEvery = 1000; // milliseconds

}

QStringList takeErrorLog()
{
    const std::unique_ptr<char, void (*)(void *)> text(elog_string(0), std::free);
    elog_clear();
    return QString::fromUtf8(text.get()).split('\n', Qt::SkipEmptyParts);
}

ProblemLog::ProblemLog(QObject *parent) : QObject(parent)
{
    m_timer.setTimerType(Qt::VeryCoarseTimer);
    connect(&m_timer, &QTimer::timeout, this, &ProblemLog::collect);
    m_timer.start(collectEvery);
}

void ProblemLog::collect()
{
    if (elog_count() == 0) {
        return;
    }
    // How often a line came up doesn't make it another problem.
    static const QRegularExpression repeats(" \\(repeated \\d+ times\\)$");
    const int before = m_problems.size();
    for (QString line : takeErrorLog()) {
        line.remove(repeats);
        if (m_problems.size() < mostProblems && !m_problems.contains(line)) {
            m_problems.append(line);
        }
    }
    if (m_problems.size() != before) {
        emit changed();
    }
}

QStringList ProblemLog::problemsOf(const QString &databaseFile) const
{
    return m_problems.filter(databaseFile);
}

void ProblemLog::remove(const QStringList &problems)
{
    for (const QString &problem : problems) {
        m_problems.removeAll(problem);
    }
    emit changed();
}
