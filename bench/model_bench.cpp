// What a screenful of a table costs in the model: 50 rows of 25 columns, every role that a table view and its
// delegate ask for, headers included.
//
// Without more it measures a table of 100,000 rows that it writes itself. ORVANE_BENCH_TABLE=PATH.TABLE names
// another (for one, what `generate 10000000 PATH` wrote: PATH.origin).

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include <QApplication>

#include <orvanedatabasemodel.h>
#include <orvanetablemodel.h>
#include <ovconfig.h>

namespace {

constexpr int screenRows = 50;
constexpr int screenColumns = 25;

// A table of five fields of each of five kinds.
std::string writeTable(const std::string &folder)
{
    std::string attributes = "name: bench\nattributes:\n", fields;
    for (int i = 0; i < screenColumns; ++i) {
        static const char *const kinds[] = {
            "real, width: 9, format: \"%9.4f\", null: \"-999.0000\"",
            "time, width: 17, format: \"%17.5f\", null: \"-9999999999.99900\"",
            "integer, width: 8, format: \"%8d\", null: \"-1\"",
            "string, width: 15, format: \"%-15s\", null: \"-\"",
            "yearday, width: 8, format: \"%8d\", null: \"-1\"",
        };
        attributes += "  f" + std::to_string(i) + ": {type: " + kinds[i % 5] + "}\n";
        fields += (i ? ", f" : "f") + std::to_string(i);
    }
    std::ofstream(folder + "/bench.yaml")
        << attributes << "relations:\n  origin: {fields: [" << fields << "]}\n";
    std::ofstream(folder + "/quakes") << "schema: bench\ndbpath: [.]\n";
    std::ofstream table(folder + "/quakes.origin");
    for (int row = 0; row < 100'000; ++row) {
        for (int group = 0; group < screenColumns / 5; ++group) {
            char part[80];
            std::snprintf(part, sizeof part, "%s%9.4f %17.5f %8d %-15s %8d", group ? " " : "",
                          row % 180 - 90.0, 1e9 + row, row % 10 ? row : -1, row % 3 ? "USGS" : "-",
                          2018000 + row % 365);
            table << part;
        }
        table << '\n';
    }
    return folder + "/quakes.origin";
}

class Table
{
public:
    Table()
    {
        std::string path;
        if (const char *given = std::getenv("ORVANE_BENCH_TABLE")) {
            path = given;
        } else {
            std::string name = (std::filesystem::temp_directory_path() / "orvane-bench-XXXXXX").string();
            if (!mkdtemp(name.data()))
                throw std::runtime_error("no temporary folder");
            m_folder = name;
            path = writeTable(m_folder);
        }
        m_database = std::make_unique<OrvaneDatabaseModel>(m_config, QString::fromStdString(path), "r");
        m_model = m_database->getTableModel(m_database->getInitialTableName());
        if (!m_model || m_model->rowCount() < screenRows || m_model->columnCount() <= screenColumns)
            throw std::runtime_error("no table of 50 rows and 25 columns: " +
                                     m_database->openError().toStdString());
        m_config.configure("background_blank_color", QString("light yellow"));
        // As a view that listens for rows, whose row count is not asked from the database each time.
        QObject::connect(m_model, &QAbstractItemModel::rowsInserted, [] {});
    }

    ~Table()
    {
        m_database.reset();
        std::error_code ignored;
        if (!m_folder.empty())
            std::filesystem::remove_all(m_folder, ignored);
    }

    OrvaneTableModel &model() { return *m_model; }

private:
    std::string m_folder;
    OvConfig m_config;
    std::unique_ptr<OrvaneDatabaseModel> m_database;
    OrvaneTableModel *m_model = nullptr;
};

OrvaneTableModel &model()
{
    static Table table;
    return table.model();
}

void askCell(const QAbstractItemModel &table, int row, int column)
{
    const QModelIndex index = table.index(row, column);
    benchmark::DoNotOptimize(table.flags(index));
    // In the order in which the delegate fills in its options.
    for (int role : {Qt::FontRole, Qt::TextAlignmentRole, Qt::ForegroundRole, Qt::CheckStateRole,
                     Qt::DecorationRole, Qt::DisplayRole, Qt::BackgroundRole, Qt::SizeHintRole})
        benchmark::DoNotOptimize(table.data(index, role));
}

void askHeader(const QAbstractItemModel &table, int section, Qt::Orientation orientation)
{
    for (int role : {Qt::FontRole, Qt::TextAlignmentRole, Qt::DecorationRole, Qt::DisplayRole,
                     Qt::BackgroundRole, Qt::ForegroundRole, Qt::SizeHintRole})
        benchmark::DoNotOptimize(table.headerData(section, orientation, role));
}

void askScreenful(const QAbstractItemModel &table, int first)
{
    for (int column = 1; column <= screenColumns; ++column)
        askHeader(table, column, Qt::Horizontal);
    for (int row = first; row < first + screenRows; ++row) {
        benchmark::DoNotOptimize(table.rowCount());
        askHeader(table, row, Qt::Vertical);
        for (int column = 1; column <= screenColumns; ++column)
            askCell(table, row, column);
    }
}

double residentMegabytes()
{
    std::ifstream file("/proc/self/statm");
    long total = 0, resident = 0;
    file >> total >> resident;
    return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1e6;
}

// A different screenful each time; the memory at the end beside the time tells whether scrolling keeps
// anything.
template <class NextRow>
void measureScreenfuls(benchmark::State &state, NextRow nextRow)
{
    OrvaneTableModel &table = model();
    const int last = table.rowCount() - screenRows;
    int row = 0;
    for (auto unused : state) {
        (void)unused;
        askScreenful(table, row);
        row = nextRow(row, last);
    }
    state.counters["MB"] = residentMegabytes();
}

void sameScreenful(benchmark::State &state)
{
    measureScreenfuls(state, [](int row, int) { return row; });
}
BENCHMARK(sameScreenful)->Unit(benchmark::kMillisecond);

void nextScreenful(benchmark::State &state)
{
    measureScreenfuls(state,
                      [](int row, int last) { return row + screenRows > last ? 0 : row + screenRows; });
}
BENCHMARK(nextScreenful)->Unit(benchmark::kMillisecond);

void anyScreenful(benchmark::State &state)
{
    std::mt19937 random(1);
    measureScreenfuls(state,
                      [&](int, int last) { return std::uniform_int_distribution<int>(0, last)(random); });
}
BENCHMARK(anyScreenful)->Unit(benchmark::kMillisecond);

void rowCount(benchmark::State &state)
{
    for (auto unused : state) {
        (void)unused;
        benchmark::DoNotOptimize(model().rowCount());
    }
}
BENCHMARK(rowCount);

template <int role>
void cell(benchmark::State &state)
{
    const OrvaneTableModel &table = model();
    int column = 0;
    for (auto unused : state) {
        (void)unused;
        benchmark::DoNotOptimize(table.data(table.index(17, column + 1), role));
        column = (column + 1) % screenColumns;
    }
}
BENCHMARK(cell<Qt::DisplayRole>);
BENCHMARK(cell<Qt::BackgroundRole>);
BENCHMARK(cell<Qt::UserRole>);
BENCHMARK(cell<Qt::FontRole>);

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
