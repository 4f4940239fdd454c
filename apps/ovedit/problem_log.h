// What the libraries have written to the process's error log: kept for the user to look at, never in the way.
#ifndef OVEDIT_PROBLEM_LOG_H
#define OVEDIT_PROBLEM_LOG_H

#include <QObject>
#include <QStringList>
#include <QTimer>

// The lines of the error log, which is empty afterwards.
QStringList takeErrorLog();

// Each different problem once, in the order in which they came up; bounded.
class ProblemLog : public QObject
{
    Q_OBJECT

public:
    static constexpr int mostProblems = 500;

    explicit ProblemLog(QObject *parent = nullptr);

    QStringList problems() const { return m_problems; }
    // Those about a database: lines that name its file, or a file whose name is that and a dot and more, as
    // the tables' are.
    QStringList problemsOf(const QString &databaseFile) const;

    // Adds a problem that the program has noticed itself.
    void add(const QString &problem);

    // Forgets problems; they come back when they come up again.
    void remove(const QStringList &problems);

public slots:
    // Takes over what the error log holds. Happens by itself about once a second.
    void collect();

signals:
    void changed();

private:
    QStringList m_problems;
    QTimer m_timer;
};

#endif
