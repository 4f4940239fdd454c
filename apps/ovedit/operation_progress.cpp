#include "operation_progress.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QMessageBox>
#include <QScopedValueRollback>

#include <orvane/db.h>
#include <orvane/tr.h>

#include "progress_dialog.h"

namespace {

constexpr int firstCallAfter = 100; // milliseconds for which an operation has run at the first call
constexpr int longestPainting = 40; // milliseconds given to events at each call

struct Words {
    const char *call;
    const char *running;   // %1: what is worked on
    const char *cancelled; // a sentence; empty where who was stopped tells how far he got
};

const Words words[] = {
    {"dbsubset", OvTranslation::noop("Testing the rows of %1"),
     OvTranslation::noop("The subset of %1 was cancelled.")},
    {"dbsort", OvTranslation::noop("Sorting the rows of %1"),
     OvTranslation::noop("Sorting %1 was cancelled.")},
    {"dbgroup", OvTranslation::noop("Grouping the rows of %1"),
     OvTranslation::noop("Grouping %1 was cancelled.")},
    {"dbungroup", OvTranslation::noop("Ungrouping the rows of %1"),
     OvTranslation::noop("Ungrouping %1 was cancelled.")},
    {"dbjoin", OvTranslation::noop("Joining %1"), OvTranslation::noop("Joining %1 was cancelled.")},
    {"dbnojoin", OvTranslation::noop("Looking for rows of %1 without a match"),
     OvTranslation::noop("The no-join of %1 was cancelled.")},
    {"dbtheta", OvTranslation::noop("Testing pairs of rows of %1"),
     OvTranslation::noop("The theta join of %1 was cancelled.")},
    {"dbsever", OvTranslation::noop("Severing a table from %1"),
     OvTranslation::noop("Severing a table from %1 was cancelled.")},
    {"dbseparate", OvTranslation::noop("Separating a table from %1"),
     OvTranslation::noop("Separating a table from %1 was cancelled.")},
    {"dbselect", OvTranslation::noop("Writing the rows of %1"),
     OvTranslation::noop("Saving %1 was cancelled.")},
    {"dbwrite_view", OvTranslation::noop("Saving the view %1"),
     OvTranslation::noop("Saving %1 was cancelled.")},
    {"dbsave_view", OvTranslation::noop("Saving the view %1"),
     OvTranslation::noop("Saving %1 was cancelled.")},
    {"dbunjoin", OvTranslation::noop("Making a database of the records of %1"),
     OvTranslation::noop("Saving %1 was cancelled.")},
    {"spreadsheet", OvTranslation::noop("Writing the rows of %1 to a spreadsheet"),
     OvTranslation::noop("Saving %1 was cancelled.")},
    {"copy", OvTranslation::noop("Copying cells of %1"),
     OvTranslation::noop("Copying cells of %1 was cancelled.")},
    {"paste", OvTranslation::noop("Pasting into %1"), OvTranslation::noop("Pasting into %1 was cancelled.")},
    {"measure", OvTranslation::noop("Laying out the rows of %1"),
     OvTranslation::noop("Printing %1 was cancelled.")},
    {"print", OvTranslation::noop("Printing the rows of %1"),
     OvTranslation::noop("Printing %1 was cancelled.")},
    {"dbcrunch", OvTranslation::noop("Taking marked rows out of %1"),
     OvTranslation::noop("Crunching %1 was cancelled.")},
    {"dbputv_rows", OvTranslation::noop("Changing the rows of %1"), ""},
    {"dbmark_rows", OvTranslation::noop("Marking rows of %1"), ""},
    {"dbtake_back", OvTranslation::noop("Undoing the change of %1"), ""},
    {"dbdo_again", OvTranslation::noop("Changing %1 again"), ""},
    {"dbputv", OvTranslation::noop("Storing a value in %1"),
     OvTranslation::noop("Storing the value was given up; %1 is as it was.")},
    {"dbadd", OvTranslation::noop("Adding a record to %1"),
     OvTranslation::noop("Adding the record was given up; %1 is as it was.")},
    {"dbaddchk", OvTranslation::noop("Adding a record to %1"),
     OvTranslation::noop("Adding the record was given up; %1 is as it was.")},
    {"dbmark", OvTranslation::noop("Marking a record of %1"),
     OvTranslation::noop("Marking the record was given up.")},
    {"dbfind", OvTranslation::noop("Searching %1"), OvTranslation::noop("Searching %1 was cancelled.")},
};
const Words anyWords = {"", OvTranslation::noop("Working on %1"),
                        OvTranslation::noop("Working on %1 was cancelled.")};

const Words &wordsFor(const char *call)
{
    for (const Words &known : words) {
        if (qstrcmp(known.call, call) == 0) {
            return known;
        }
    }
    return anyWords;
}

} // namespace

OperationProgress::OperationProgress(WhereAsked where) : m_where(std::move(where))
{
    m_end.setSingleShot(true);
    m_end.setInterval(0);
    connect(&m_end, &QTimer::timeout, this, &OperationProgress::end);
    qApp->installEventFilter(this);
    dbset_progress_hook(&OperationProgress::hook, this);
}

OperationProgress::~OperationProgress()
{
    dbset_progress_hook(nullptr, nullptr);
    end();
}

int OperationProgress::hook(double fraction, void *progress)
{
    return static_cast<OperationProgress *>(progress)->told(fraction);
}

int OperationProgress::told(double fraction)
{
    if (m_told) {
        return 0; // asked by something that an event handler called: not what the dialog is about
    }
    if (m_cancelled) {
        return 1; // what is called after it, before anybody could ask for something else
    }
    const QScopedValueRollback<bool> telling(m_told, true);
    if (!m_clock.isValid()) {
        begin();
    }
    // Fires when the operation is done, for timers wait until then.
    m_end.start();
    const qint64 elapsed = m_clock.elapsed() + firstCallAfter;
    if (m_dialog == nullptr && elapsed >= showAfter) {
        showDialog();
    }
    if (m_dialog != nullptr) {
        m_dialog->tell(fraction, elapsed);
        m_dialog->tellWaiting(QString::fromUtf8(dbprogress_waiting())); // of null, nothing
    }
    handleEvents();
    if (m_dialog != nullptr && m_dialog->isCancelled()) {
        m_cancelled = true;
        hideDialog(); // the operation ends with this call
    }
    return m_cancelled ? 1 : 0;
}

void OperationProgress::begin()
{
    m_clock.start();
    m_cancelled = false;
    const Place place = m_where();
    m_window = place.window;
    const char *call = dbprogress_operation();
    const Words &said = wordsFor(call == nullptr ? "" : call);
    const QString subject = place.subject.isEmpty() ? tr("the database") : place.subject;
    m_cancelledText = *said.cancelled == '\0' ? QString() : OvTranslation::tr(said.cancelled).arg(subject);
    m_running = OvTranslation::tr(said.running).arg(subject);
    QApplication::setOverrideCursor(Qt::BusyCursor);
    m_busyCursor = true;
}

void OperationProgress::showDialog()
{
    if (m_busyCursor) {
        QApplication::restoreOverrideCursor();
        m_busyCursor = false;
    }
    m_dialog = new ProgressDialog(m_running, m_window);
    m_dialog->show();
}

// Every event but timers; without a dialog, which would take it, no input either.
void OperationProgress::handleEvents()
{
    QEventLoop::ProcessEventsFlags kinds = QEventLoop::X11ExcludeTimers;
    if (m_dialog == nullptr) {
        kinds |= QEventLoop::ExcludeUserInputEvents;
    }
    QElapsedTimer spent;
    spent.start();
    QAbstractEventDispatcher *dispatcher = QAbstractEventDispatcher::instance();
    while (dispatcher->processEvents(kinds) && spent.elapsed() < longestPainting) {
    }
}

void OperationProgress::hideDialog()
{
    if (m_dialog != nullptr) {
        m_dialog->hide();
        m_dialog->deleteLater();
        m_dialog.clear();
    }
}

void OperationProgress::end()
{
    m_end.stop();
    m_clock.invalidate();
    if (m_busyCursor) {
        QApplication::restoreOverrideCursor();
        m_busyCursor = false;
    }
    hideDialog();
    if (std::exchange(m_cancelled, false) && !m_cancelledText.isEmpty()) {
        emit cancelled(m_window, m_cancelledText);
    }
}

void OperationProgress::finish()
{
    if (!m_told) {
        end();
    }
}

bool OperationProgress::eventFilter(QObject *watched, QEvent *event)
{
    // The last moment before another dialog is seen: the result of the operation, or why there is none.
    if (event->type() == QEvent::Polish && m_clock.isValid() && !m_told && watched->inherits("QDialog")) {
        hideDialog();
        auto *box = qobject_cast<QMessageBox *>(watched);
        if (m_cancelled && box != nullptr && box->text().contains(QLatin1String(": cancelled"))) {
            box->setAttribute(Qt::WA_DontShowOnScreen);
            QMetaObject::invokeMethod(box, "reject", Qt::QueuedConnection);
        }
    }
    return QObject::eventFilter(watched, event);
}
