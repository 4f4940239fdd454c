// What is seen of an operation that takes long.
#ifndef OVEDIT_PROGRESS_DIALOG_H
#define OVEDIT_PROGRESS_DIALOG_H

#include <optional>

#include <QDialog>

#include "time_left.h"

class QLabel;
class QProgressBar;

// Says what is running, how far it is and how long it will take. Modal for the whole program. Cancel, Esc and
// the close button of its frame are all the same: reject().
//
// Object names: "what", "fraction", "timeLeft", "cancel".
class ProgressDialog : public QDialog
{
    Q_OBJECT

public:
    ProgressDialog(const QString &what, QWidget *parent);

    // The bar begins where the operation is at the first call: what it did before took no time to speak of.
    void tell(double fraction, qint64 elapsedMilliseconds);

    // Says what the operation waits for; an empty text: it goes on.
    void tellWaiting(const QString &sentence);

    bool isCancelled() const { return m_cancelled; }

public slots:
    // Takes the wish; the dialog stays until the operation has ended.
    void reject() override;

private:
    const QString m_running;
    QLabel *m_what;
    QProgressBar *m_fraction;
    QLabel *m_timeLeft;
    TimeLeft m_left;
    std::optional<double> m_begin; // the first fraction
    bool m_cancelled = false;
};

#endif
