// What a click on a header costs in the model: header_sort_bench DATABASE.TABLE FIELD [--first] [--runs N]
//
// Prints lines of JSON as operations_bench does. Each run sorts the other way round, so that none finds the
// table as it should be; persistent indexes, of a page of rows, follow.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <QApplication>

#include <orvanedatabasemodel.h>
#include <orvanetablemodel.h>
#include <ovconfig.h>

#include "memory_use.h"

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    bool first = false;
    int runs = 5;
    for (int i = 3; i < argc; ++i) {
        if (std::strcmp(argv[i], "--first") == 0)
            first = true;
        else if (std::strcmp(argv[i], "--runs") == 0 && i + 1 < argc)
            runs = std::atoi(argv[++i]);
    }
    if (argc < 3) {
        std::fprintf(stderr, "usage: header_sort_bench DATABASE.TABLE FIELD [--first] [--runs N]\n");
        return 2;
    }
    OvConfig config;
    OrvaneDatabaseModel database(config, QString::fromLocal8Bit(argv[1]), "r");
    OrvaneTableModel *const table = database.getTableModel(database.getInitialTableName());
    if (!table) {
        std::fprintf(stderr, "%s\n", qPrintable(database.openError()));
        return 1;
    }
    const int column = table->indexForColumn(argv[2]).column();
    const int rows = table->rowCount();
    QVector<QPersistentModelIndex> page;
    for (int row = 0; row < std::min(rows, 48); ++row)
        page.append(QPersistentModelIndex(table->index(row, column)));
    Qt::SortOrder order = Qt::AscendingOrder;
    for (int run = first ? 0 : -1; run < (first ? 1 : runs); ++run) {
        const auto start = std::chrono::steady_clock::now();
        table->sort(column, order);
        const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - start;
        order = order == Qt::AscendingOrder ? Qt::DescendingOrder : Qt::AscendingOrder;
        if (run >= 0)
            std::printf(
                "{\"engine\": \"orvane\", \"operation\": \"header_sort\", \"mode\": \"%s\", \"rows\": %d, "
                "\"ms\": %.3f, \"peak_mb\": %ld}\n",
                first ? "first" : "again", rows, taken.count(), peakKibibytes() / 1024);
    }
}
