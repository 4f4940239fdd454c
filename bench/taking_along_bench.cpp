// What it takes to take rows along: copying cells, and saving a table as a spreadsheet.
//
//     taking_along_bench PATH.TABLE copy ROWS
//     taking_along_bench PATH.TABLE save FILE FILTER     the filter of a form of Save As, "Excel Spreadsheet
//     (*.xlsx)"
//
// Prints a line of JSON: seconds on the clock and of the processor, and the most memory there was.

#include <chrono>
#include <cstdio>
#include <exception>
#include <string>
#include <sys/resource.h>

#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QItemSelectionModel>
#include <QLineEdit>
#include <QTimer>

#include <orvanedatabasemodel.h>
#include <orvanedatabaseview.h>
#include <orvanetablemodel.h>
#include <orvanetableview.h>
#include <ovconfig.h>

#include "cell_copying.h"

namespace {

double processorSeconds()
{
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    const auto seconds = [](const timeval &time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(used.ru_utime) + seconds(used.ru_stime);
}

long peakKilobytes()
{
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    return used.ru_maxrss;
}

template <class Work>
void measure(const std::string &name, int rows, int columns, Work work)
{
    const auto begin = std::chrono::steady_clock::now();
    const double processor = processorSeconds();
    const long before = peakKilobytes();
    work();
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    std::printf("{\"name\":\"%s\",\"rows\":%d,\"columns\":%d,\"s\":%.3f,\"cpu_s\":%.3f,\"peak_mb\":%.1f,"
                "\"peak_before_mb\":%.1f}\n",
                name.c_str(), rows, columns, took.count(), processorSeconds() - processor,
                static_cast<double>(peakKilobytes()) / 1024, static_cast<double>(before) / 1024);
}

void copyRows(OrvaneTableView &view, int rows)
{
    OrvaneTableModel &table = *view.model();
    const int last = table.columnCount() - 1;
    view.selectionModel()->select(QItemSelection(table.index(0, 1), table.index(rows - 1, last)),
                                  QItemSelectionModel::ClearAndSelect);
    measure("copy", rows, last, [&] { copySelectedCells(view, false, nullptr); });
    std::fprintf(stderr, "%d characters\n", QGuiApplication::clipboard()->text().size());
}

void save(OrvaneDatabaseView &window, const QString &file, const QString &filter)
{
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
    measure("save", table.rowCount(), window.getCurrentTableView()->getFieldNamesVisible().size(),
            [&] { window.saveAs(); });
}

void run(const QStringList &arguments)
{
    OvConfig config;
    config.configure("show_empty_columns", true);
    OrvaneDatabaseModel database(config, arguments.value(1), "r");
    OrvaneDatabaseView window(config);
    window.setModel(&database);
    if (arguments.value(2) == "copy") {
        copyRows(*window.getCurrentTableView(), arguments.value(3).toInt());
    } else {
        save(window, arguments.value(3), arguments.value(4));
    }
}

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    try {
        run(QApplication::arguments());
        return 0;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "taking_along_bench: %s\n", error.what());
        return 1;
    }
}
