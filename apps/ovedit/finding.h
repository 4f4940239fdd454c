// Finding rows by an expression.
#ifndef OVEDIT_FINDING_H
#define OVEDIT_FINDING_H

#include <QString>

class MainWindow;

// Remembers what was looked for. Every search goes through all rows: behind the last it goes on from the
// first, and says so above the tables. Failures are thrown, for who shows them.
class Finding
{
public:
    explicit Finding(MainWindow &window) : m_window(window) {}

    // Asks for an expression, and goes to the first row of it from the current one on.
    void ask();
    // The next row and the one before for which the last expression is true; asks where there is none yet.
    void next();
    void previous();

private:
    enum class From { CurrentRow, Neighbour };
    void find(bool backwards, From from);
    void goOn(bool backwards);

    MainWindow &m_window;
    QString m_expression;
};

#endif
