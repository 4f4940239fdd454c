// What is seen of an operation that takes long.
#ifndef OVEDIT_PROGRESS_DIALOG_H
#define OVEDIT_PROGRESS_DIALOG_H

#include <QDialog>

class QLabel;
class QProgressBar;

// "About 20 seconds left"; empty where that can't be told yet.
QString timeLeft(double fraction, qint64 elapsedMilliseconds);

// Says what is running, how far it is and how long it will take. Modal for the whole program. Cancel, Esc and
// the close button of its frame are all the same: reject().
//
// Object names: "what", "fraction", "timeLeft", "cancel".
class ProgressDialog : public QDialog
{
    Q_OBJECT

public:
    ProgressDialog(const QString &what, QWidget *parent);

    void tell(double fraction, qint64 elapsedMilliseconds);

    bool isCancelled() const { return m_cancelled; }

public slots:
    // Takes the wish; the dialog stays until the operation has ended.
    void reject() override;

private:
    QLabel *m_what;
    QProgressBar *m_fraction;
    QLabel *m_timeLeft;
    bool m_cancelled = false;
};

#endif
