// What it takes to take rows along: copying and pasting cells, and saving a table through Save As.
//
//     taking_along_bench [--json] [--sort FIELD | --join A,B,C] PATH.TABLE copy ROWS [COLUMNS]
//     taking_along_bench [--json] PATH.TABLE paste ROWS COLUMNS    changes the table
//     taking_along_bench [--json] [--cancel FRACTION] PATH.TABLE save FILE FILTER
//
// FILTER is the form's in the dialog, "Excel Spreadsheet (*.xlsx)". With --cancel the button of the progress
// dialog is pressed when its bar has come so far. Tells seconds on the clock and of the processor, the memory
// before and at the peak, when the dialog was seen, for how long at most no event was handled meanwhile, what
// the bar showed half way through, and how long after the button was pressed all was over. With --json every
// figure is a line of its own.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <exception>
#include <random>
#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <thread>
#include <utility>
#include <vector>

#include <QAbstractButton>
#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QItemSelectionModel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressBar>
#include <QTimer>

#include <orvanedatabasemodel.h>
#include <orvanedatabaseview.h>
#include <orvanetablemodel.h>
#include <orvanetableview.h>
#include <ovconfig.h>

#include "cell_copying.h"
#include "cell_pasting.h"
#include "memory_use.h"
#include "operation_progress.h"
#include "progress_dialog.h"

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point begin)
{
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

rusage used()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage;
}

double processorSeconds()
{
    const rusage usage = used();
    const auto seconds = [](const timeval &time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// Of this thread, the user interface's: other programs can't lengthen it.
double threadSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

double peakMebibytes()
{
    return static_cast<double>(peakKibibytes()) / 1024;
}

struct Options {
    bool isJson = false;
    double cancelAt = 2; // a fraction that is never reached
    QString sortedBy;
    QStringList joins;
    QStringList arguments;
};

// ---- What the user sees and does ------------------------------------------------------------------------

// Watches the progress dialog, and presses its button.
class Watch : public QObject
{
public:
    explicit Watch(double cancelAt)
        : m_cancelAt(cancelAt), m_begin(Clock::now()), m_beginOfThread(threadSeconds()), m_handled(m_begin),
          m_handledOfThread(m_beginOfThread)
    {
        qApp->installEventFilter(this);
        // Both when events are looked for and when they are done: what lies between is no time without them.
        QAbstractEventDispatcher *dispatcher = QAbstractEventDispatcher::instance();
        connect(dispatcher, &QAbstractEventDispatcher::awake, this, [this] { handled(); });
    }
    ~Watch() override
    {
        if (m_user.joinable()) {
            m_user.join();
        }
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Show && qobject_cast<ProgressDialog *>(watched) != nullptr) {
            m_seenAfter = secondsSince(m_begin);
            m_seenAfterOfThread = threadSeconds() - m_beginOfThread;
            follow(*static_cast<ProgressDialog *>(watched));
        }
        return false;
    }

    void end() { handled(); }

    // Seconds on the clock, and of the thread's processor time; -1: it was not.
    double seenAfter() const { return m_seenAfter; }
    double seenAfterOfThread() const { return m_seenAfterOfThread; }
    double longestWithoutEvents() const { return m_longest; }
    double longestWithoutEventsOfThread() const { return m_longestOfThread; }
    double secondsSincePressed() const { return m_isPressed ? secondsSince(m_pressed) : -1; }
    // Of the time that it took in all, the bar's fraction.
    double shownAt(double seconds) const
    {
        const auto after = std::upper_bound(m_shown.begin(), m_shown.end(), std::pair(seconds, 2.0));
        return after == m_shown.begin() ? 0 : std::prev(after)->second;
    }

private:
    void handled()
    {
        const auto now = Clock::now();
        m_longest = std::max(m_longest, std::chrono::duration<double>(now - m_handled).count());
        m_handled = now;
        const double nowOfThread = threadSeconds();
        m_longestOfThread = std::max(m_longestOfThread, nowOfThread - m_handledOfThread);
        m_handledOfThread = nowOfThread;
    }

    void follow(ProgressDialog &dialog)
    {
        auto *bar = dialog.findChild<QProgressBar *>();
        auto *button = dialog.findChild<QAbstractButton *>("cancel");
        connect(bar, &QProgressBar::valueChanged, this, [this, bar, button](int value) {
            const double fraction = static_cast<double>(value) / bar->maximum();
            m_shown.emplace_back(secondsSince(m_begin), fraction);
            if (fraction >= m_cancelAt && !m_user.joinable()) {
                press(*button);
            }
        });
    }

    // At any moment, as a person does: not where events are handled anyway.
    void press(QAbstractButton &button)
    {
        m_user = std::thread([this, &button] {
            std::this_thread::sleep_for(std::chrono::milliseconds(std::random_device()() % 300));
            m_pressed = Clock::now();
            m_isPressed = true;
            QMetaObject::invokeMethod(&button, "click", Qt::QueuedConnection);
        });
    }

    const double m_cancelAt;
    const Clock::time_point m_begin;
    const double m_beginOfThread;
    Clock::time_point m_handled;
    double m_handledOfThread;
    Clock::time_point m_pressed;
    std::atomic<bool> m_isPressed = false;
    std::thread m_user;
    double m_seenAfter = -1;
    double m_seenAfterOfThread = -1;
    double m_longest = 0;
    double m_longestOfThread = 0;
    std::vector<std::pair<double, double>> m_shown; // seconds, fraction
};

class Report
{
public:
    Report(const Options &options, QString name, int rows, int columns)
        : m_isJson(options.isJson), m_name(std::move(name)), m_rows(rows), m_columns(columns)
    {
    }

    void say(const char *what, double value, const char *unit) const
    {
        const std::string name = m_name.toStdString();
        if (m_isJson) {
            std::printf("{\"name\":\"%s\",\"rows\":%d,\"columns\":%d,\"what\":\"%s\",\"value\":%.3f,\"unit\":"
                        "\"%s\"}\n",
                        name.c_str(), m_rows, m_columns, what, value, unit);
        } else {
            std::printf("%s, %d rows of %d columns: %-34s %10.3f %s\n", name.c_str(), m_rows, m_columns, what,
                        value, unit);
        }
    }

private:
    const bool m_isJson;
    const QString m_name;
    const int m_rows;
    const int m_columns;
};

template <class Work>
void measure(const Report &report, const Options &options, Work work)
{
    const double before = peakMebibytes();
    Watch watch(options.cancelAt);
    const auto begin = Clock::now();
    const double processor = processorSeconds();
    work();
    const double took = secondsSince(begin);
    const double sincePressed = watch.secondsSincePressed();
    watch.end();
    report.say("clock", took, "s");
    report.say("processor", processorSeconds() - processor, "s");
    report.say("memory before", before, "MiB");
    report.say("memory at the peak", peakMebibytes(), "MiB");
    report.say("longest time without events", watch.longestWithoutEvents() * 1000, "ms");
    report.say("longest without events, processor", watch.longestWithoutEventsOfThread() * 1000, "ms");
    if (watch.seenAfter() >= 0) {
        report.say("progress seen after", watch.seenAfter() * 1000, "ms");
        report.say("progress seen after, processor", watch.seenAfterOfThread() * 1000, "ms");
        for (const int part : {1, 2, 3}) {
            const std::string what = "bar after " + std::to_string(part) + "/4 of the time";
            report.say(what.c_str(), watch.shownAt(took * part / 4) * 100, "%");
        }
    }
    if (sincePressed >= 0) {
        report.say("over after Cancel", sincePressed * 1000, "ms");
    }
}

// ---- What is measured -----------------------------------------------------------------------------------

void select(OrvaneTableView &view, int rows, int columns)
{
    const OrvaneTableModel &table = *view.model();
    view.selectionModel()->select(QItemSelection(table.index(0, 1), table.index(rows - 1, columns)),
                                  QItemSelectionModel::ClearAndSelect);
}

// Copies from the table as it is, sorted, or joined to others.
void copyRows(OvConfig &config, OrvaneTableModel &table, const Options &options)
{
    OrvaneTableModel *shown = &table;
    for (const QString &other : options.joins) {
        shown = shown->joinTo(other, QString());
    }
    if (!options.sortedBy.isEmpty()) {
        shown->sort(shown->indexForColumn(options.sortedBy.toUtf8()).column(), Qt::AscendingOrder);
    }
    OrvaneTableView view(config);
    view.setModel(shown);
    const int rows = std::min(options.arguments.value(3).toInt(), shown->rowCount());
    const int most = shown->columnCount() - 1;
    const int columns = std::min(options.arguments.value(4, QString::number(most)).toInt(), most);
    select(view, rows, columns);
    measure(Report(options, "copy", rows, columns), options,
            [&] { copySelectedCells(view, false, nullptr); });
    std::fprintf(stderr, "%d characters\n", QGuiApplication::clipboard()->text().size());
}

// What stands in the rows below goes into the first ones.
void pasteRows(OrvaneTableView &view, const Options &options)
{
    const int rows = options.arguments.value(3).toInt();
    const int columns = options.arguments.value(4).toInt();
    const OrvaneTableModel &table = *view.model();
    view.selectionModel()->select(QItemSelection(table.index(rows, 1), table.index(2 * rows - 1, columns)),
                                  QItemSelectionModel::ClearAndSelect);
    copySelectedCells(view, false, nullptr);
    select(view, 1, 1);
    measure(Report(options, "paste", rows, columns), options, [&] { pasteCells(view, nullptr); });
}

void save(OrvaneDatabaseView &window, const Options &options)
{
    const QString file = options.arguments.value(3);
    const QString filter = options.arguments.value(4);
    QTimer user;
    QObject::connect(&user, &QTimer::timeout, [&] {
        if (auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget())) {
            user.stop();
            dialog->selectNameFilter(filter);
            dialog->findChild<QLineEdit *>("fileNameEdit")->setText(file);
            QMetaObject::invokeMethod(dialog, "accept", Qt::QueuedConnection);
        }
    });
    user.start(10);
    const OrvaneTableModel &table = *window.getCurrentTableModel();
    const int columns = window.getCurrentTableView()->getFieldNamesVisible().size();
    measure(Report(options, "save " + filter.section(' ', 0, 0), table.rowCount(), columns), options,
            [&] { window.saveAs(); });
}

// Questions before much is done are answered with Yes, and what is said otherwise is told.
class Answers : public QObject
{
public:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        auto *box = qobject_cast<QMessageBox *>(watched);
        if (box != nullptr && event->type() == QEvent::Show) {
            std::fprintf(stderr, "%s\n", qPrintable(box->text()));
            QAbstractButton *yes = box->button(QMessageBox::Yes);
            QMetaObject::invokeMethod(yes != nullptr ? yes : box->buttons().constFirst(), "click",
                                      Qt::QueuedConnection);
        }
        return false;
    }
};

void run(const Options &options)
{
    const QString what = options.arguments.value(2);
    const bool isPaste = what == "paste";
    OvConfig config;
    config.configure("show_empty_columns", true);
    config.configure("allow_edits", isPaste);
    OrvaneDatabaseModel database(config, options.arguments.value(1), isPaste ? "r+" : "r");
    if (!database.isOpen()) {
        throw std::runtime_error("cannot open the database");
    }
    OrvaneDatabaseView window(config);
    window.setModel(&database);
    window.show();
    OperationProgress progress([&] { return OperationProgress::Place{&window, {}}; });
    Answers answers;
    qApp->installEventFilter(&answers);
    if (what == "copy") {
        copyRows(config, *window.getCurrentTableModel(), options);
    } else if (isPaste) {
        pasteRows(*window.getCurrentTableView(), options);
    } else {
        save(window, options);
    }
}

Options optionsOf(QStringList arguments)
{
    Options options;
    options.isJson = arguments.removeAll("--json") > 0;
    const auto taken = [&arguments](const char *option) {
        const int at = arguments.indexOf(option);
        if (at < 0 || at + 1 == arguments.size()) {
            return QString();
        }
        arguments.removeAt(at);
        return arguments.takeAt(at);
    };
    if (const QString fraction = taken("--cancel"); !fraction.isEmpty()) {
        options.cancelAt = fraction.toDouble();
    }
    options.sortedBy = taken("--sort");
    options.joins = taken("--join").split(',', Qt::SkipEmptyParts);
    options.arguments = arguments;
    return options;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication application(argc, argv);
    try {
        run(optionsOf(QApplication::arguments()));
        return 0;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "taking_along_bench: %s\n", error.what());
        return 1;
    }
}
