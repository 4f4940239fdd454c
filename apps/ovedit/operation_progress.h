// Keeps the program alive while the database library works, and lets the user stop it.
#ifndef OVEDIT_OPERATION_PROGRESS_H
#define OVEDIT_OPERATION_PROGRESS_H

#include <functional>

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>

class ProgressDialog;
class QWidget;

// The progress hook of the process. The library calls it about ten times a second on the thread of the user
// interface; from there windows are painted, and after half a second a dialog shows how far the operation is
// and takes the wish to cancel it. One object in a process.
//
// What happens meanwhile: input goes to that dialog only; before it is shown, input waits. Timers wait until
// the operation has ended, so nothing looks for changed tables, or drops them, under its feet. Windows refuse
// to close (see isRunning()).
//
// Afterwards: the slots show every failure in a box, and so they do for "cancelled". Nobody needs to be told
// in a box what he has just asked for: it is kept back, and cancelled() tells the same.
class OperationProgress : public QObject
{
    Q_OBJECT

public:
    static constexpr int showAfter = 500; // milliseconds

    // Where an operation was called for, asked when one takes long: the window to put the dialog over, and
    // what is worked on ("arrival"), which may be empty.
    struct Place {
        QWidget *window = nullptr;
        QString subject;
    };
    using WhereAsked = std::function<Place()>;

    explicit OperationProgress(WhereAsked where);
    ~OperationProgress() override;

    // Whether an operation is running now, under whoever asks.
    bool isRunning() const { return m_told; }

    // What was running has ended: who calls the library again now, on his own, is asked for himself, although
    // the user has cancelled what was before.
    void finish();

    bool eventFilter(QObject *watched, QEvent *event) override;

signals:
    // The user stopped an operation; `text` is a sentence that says which. `window` as in Place.
    void cancelled(QWidget *window, const QString &text);

private:
    static int hook(double fraction, void *progress);
    int told(double fraction);
    void begin();
    void showDialog();
    void handleEvents();
    void hideDialog();
    void end();

    WhereAsked m_where;
    QElapsedTimer m_clock; // since the first call; invalid while nothing runs
    QTimer m_end;
    QPointer<ProgressDialog> m_dialog;
    QPointer<QWidget> m_window;
    QString m_running;
    QString m_cancelledText;
    bool m_told = false;
    bool m_busyCursor = false;
    bool m_cancelled = false;
};

#endif
