#include "problem_log.h"

#include <cstdlib>
#include <memory>

#include <QRegularExpression>

#include <orvane/util.h>

namespace {

constexpr int collectEvery = 1000; // milliseconds

// Whether a text names a file itself or one that begins with it and a dot, and not a neighbour such as
// "/data/quakes" for "/data/q", nor a longer path that ends with it.
bool namesFile(const QString &text, const QString &file)
{
    if (file.isEmpty()) {
        return false;
    }
    const auto endsName = [](QChar next) {
        return next.isSpace() || QStringLiteral(".:,;'\")").contains(next);
    };
    const auto goesOnWithName = [](QChar before) {
        return before.isLetterOrNumber() || QStringLiteral("_-./~").contains(before);
    };
    for (int at = text.indexOf(file); at >= 0; at = text.indexOf(file, at + 1)) {
        const int end = at + file.size();
        const bool begins = at == 0 || !goesOnWithName(text[at - 1]);
        if (begins && (end == text.size() || endsName(text[end]))) {
            return true;
        }
    }
    return false;
}

} // namespace

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
    QStringList theirs;
    for (const QString &problem : m_problems) {
        if (namesFile(problem, databaseFile)) {
            theirs.append(problem);
        }
    }
    return theirs;
}

void ProblemLog::add(const QString &problem)
{
    if (m_problems.size() < mostProblems && !m_problems.contains(problem)) {
        m_problems.append(problem);
        emit changed();
    }
}

void ProblemLog::remove(const QStringList &problems)
{
    const int before = m_problems.size();
    for (const QString &problem : problems) {
        m_problems.removeAll(problem);
    }
    if (m_problems.size() != before) {
        emit changed();
    }
}
