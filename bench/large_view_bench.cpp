// A table that may be larger than the memory there is, in the window's table view:
//
//     large_view_bench PATH.TABLE FIELD EXPRESSION
//
// Opens it, goes to random rows and to the last one, finds forward to the last row, whose value of the whole
// number FIELD no other row has, and makes the subset of EXPRESSION. Each step is a line of JSON:
// milliseconds on the clock, the median and the worst where there are several, and the process's memory at
// its highest.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <QApplication>
#include <QHeaderView>

#include <orvanedatabasemodel.h>
#include <orvanetablemodel.h>
#include <orvanetableview.h>
#include <ovconfig.h>
#include <qdbptr.h>

#include "memory_use.h"

namespace {

constexpr int places = 200;

double milliseconds(const std::function<void()> &work)
{
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
}

void print(const char *step, std::vector<double> times, qint64 answer)
{
    std::sort(times.begin(), times.end());
    std::printf("{\"step\": \"%s\", \"ms\": %.3f, \"worst_ms\": %.3f, \"most_mb\": %ld, \"answer\": %lld}\n",
                step, times[times.size() / 2], times.back(), peakKibibytes() / 1024,
                static_cast<long long>(answer));
    std::fflush(stdout);
}

void require(bool holds, const std::string &what)
{
    if (!holds)
        throw std::runtime_error(what);
}

// Shows a row and paints.
void goTo(OrvaneTableView &view, int row)
{
    view.scrollTo(view.model()->index(row, 1), QAbstractItemView::PositionAtCenter);
    QApplication::processEvents();
    view.viewport()->repaint();
}

int run(const char *path, const QByteArray &field, const QString &expression)
{
    OvConfig config;
    std::unique_ptr<OrvaneDatabaseModel> database;
    OrvaneTableView view(config);
    OrvaneTableModel *table = nullptr;
    const double opened = milliseconds([&] {
        database = std::make_unique<OrvaneDatabaseModel>(config, QString::fromLocal8Bit(path), "r");
        table = database->getTableModel(database->getInitialTableName());
        require(table != nullptr, "no table: " + database->openError().toStdString());
        view.setModel(table);
        view.resize(1200, 800);
        view.show();
        QApplication::processEvents();
    });
    const int rows = table->rowCount();
    print("open, paint", {opened}, rows);

    std::mt19937 random(1);
    std::vector<double> times;
    for (int i = 0; i < places; ++i) {
        const int row = std::uniform_int_distribution<int>(0, rows - 1)(random);
        times.push_back(milliseconds([&] { goTo(view, row); }));
        require(view.visualRect(table->index(row, 1)).intersects(view.viewport()->rect()),
                "row " + std::to_string(row) + " is not in sight");
    }
    print("a page at a random row", times, places);

    const int last = rows - 1;
    const double wentToLast = milliseconds([&] { goTo(view, last); });
    require(view.rowAt(view.visualRect(table->index(last, 1)).center().y()) == last,
            "the last row is not in sight");
    print("the last row", {wentToLast}, last);

    const qlonglong value = table->index(last, table->indexForColumn(field).column()).data().toLongLong();
    const std::unique_ptr<QDbptr> handle(table->getQDbptr());
    qint64 found = -1;
    const double finding = milliseconds(
        [&] { found = handle->dbFind(QString::fromLatin1(field) + " == " + QString::number(value), false); });
    require(found == last, "found row " + std::to_string(found));
    print("find forward to the last row", {finding}, found);

    OrvaneTableView subsetView(config); // as every table has its own
    OrvaneTableModel *subset = nullptr;
    const double making = milliseconds([&] {
        subset = table->subset(expression, QString());
        subsetView.setModel(subset);
        subsetView.resize(view.size());
        subsetView.show();
        QApplication::processEvents();
    });
    print("subset, painted", {making}, subset->rowCount());
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    if (argc != 4) {
        std::fprintf(stderr, "usage: large_view_bench PATH.TABLE FIELD EXPRESSION\n");
        return 2;
    }
    try {
        return run(argv[1], argv[2], QString::fromLocal8Bit(argv[3]));
    } catch (const std::exception &error) {
        std::fprintf(stderr, "large_view_bench: %s\n", error.what());
        return 1;
    }
}
