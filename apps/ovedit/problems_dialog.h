// The list of problems, to be read, copied and cleared.
#ifndef OVEDIT_PROBLEMS_DIALOG_H
#define OVEDIT_PROBLEMS_DIALOG_H

#include <QDialog>

class ProblemLog;

class ProblemsDialog : public QDialog
{
    Q_OBJECT

public:
    // Shows `problems`, which are some of those in `log`.
    ProblemsDialog(ProblemLog &log, const QStringList &problems, QWidget *parent);
};

#endif
