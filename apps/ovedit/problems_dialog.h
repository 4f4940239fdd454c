// The list of problems, to be read, copied and cleared.
#ifndef OVEDIT_PROBLEMS_DIALOG_H
#define OVEDIT_PROBLEMS_DIALOG_H

#include <QDialog>

class ProblemLog;

class ProblemsDialog : public QDialog
{
    Q_OBJECT

public:
    ProblemsDialog(ProblemLog &log, QWidget *parent);
};

#endif
