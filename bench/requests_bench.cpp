// What one request costs on its way from a handle through connection and dispatcher to the library and back,
// on a small table whose block has been read.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include <QCoreApplication>

#include <qdbptr.h>
#include <qovconnection.h>
#include <qovresponse.h>

namespace {

constexpr int64_t recordCount = 10'000;

const char *const schema = R"(name: bench
attributes:
  lat: {type: real, width: 9, format: "%9.4f", null: "-999.0000", units: degrees, description: latitude}
  time: {type: time, width: 17, format: "%17.5f", null: "-9999999999.99900", description: time}
  orid: {type: integer, width: 8, format: "%8d", null: "-1", description: origin id}
  auth: {type: string, width: 15, format: "%-15s", null: "-", description: author}
relations:
  origin: {fields: [lat, time, orid, auth], primary: [lat, time], alternate: [orid]}
)";

enum Field : int64_t { Lat, Time, Orid, Auth };

// An open database of one table, in a folder that goes away.
class Database
{
public:
    Database()
    {
        std::string folderTemplate =
            (std::filesystem::temp_directory_path() / "orvane-bench-XXXXXX").string();
        if (!mkdtemp(folderTemplate.data()))
            throw std::runtime_error("no temporary folder");
        m_folder = folderTemplate;
        std::ofstream(m_folder + "/bench.yaml") << schema;
        std::ofstream(m_folder + "/quakes") << "schema: bench\ndbpath: [.]\n";
        std::ofstream table(m_folder + "/quakes.origin");
        for (int64_t i = 0; i < recordCount; ++i) {
            char line[64];
            std::snprintf(line, sizeof line, "%9.4f %17.5f %8ld %-15s\n", double(i % 180) - 90.0,
                          1e9 + double(i), long(i + 1), i % 3 ? "USGS" : "-");
            table << line;
        }
        table.close();
        m_connection = connected();
    }

    ~Database()
    {
        m_connection.reset();
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }

    QOvConnection *connection() const { return m_connection.get(); }

    // Another connection to it.
    std::unique_ptr<QOvConnection> connected() const
    {
        return std::make_unique<QOvConnection>("/", QString::fromStdString(m_folder + "/quakes"), "r");
    }

    Dbptr at(int64_t field, int64_t record) const
    {
        const std::unique_ptr<QDbptr> handle(m_connection->getQDbptr());
        return {handle->getIndexDatabase(), 0, field, record};
    }

private:
    std::string m_folder;
    std::unique_ptr<QOvConnection> m_connection;
};

Database &database()
{
    static Database instance;
    return instance;
}

template <class Ask>
void measure(benchmark::State &state, int64_t field, int64_t record, Ask ask)
{
    QDbptr handle(database().connection(), database().at(field, record));
    for (auto unused : state) {
        (void)unused;
        benchmark::DoNotOptimize(ask(handle));
    }
}

// Every request of the same kind on the next record, as a model that scrolls sends them.
template <class Ask>
void measureScrolling(benchmark::State &state, int64_t field, Ask ask)
{
    Dbptr place = database().at(field, 0);
    QDbptr handle(database().connection(), place);
    for (auto unused : state) {
        (void)unused;
        place.record = (place.record + 1) % recordCount;
        handle.moveTo(place);
        benchmark::DoNotOptimize(ask(handle));
    }
}

void fieldName(benchmark::State &state)
{
    measure(state, Orid, 7, [](QDbptr &handle) { return handle.getFieldName(); });
}
BENCHMARK(fieldName);

void fieldType(benchmark::State &state)
{
    measure(state, Orid, 7, [](QDbptr &handle) { return handle.getFieldType(); });
}
BENCHMARK(fieldType);

void recordCountOfTable(benchmark::State &state)
{
    measure(state, dbALL, dbALL, [](QDbptr &handle) { return handle.getRecordCount(); });
}
BENCHMARK(recordCountOfTable);

void cellText(benchmark::State &state)
{
    measureScrolling(state, Auth, [](QDbptr &handle) { return handle.dbGet(false); });
}
BENCHMARK(cellText);

void recordText(benchmark::State &state)
{
    measureScrolling(state, dbALL, [](QDbptr &handle) { return handle.dbGet(false); });
}
BENCHMARK(recordText);

void cellIsNull(benchmark::State &state)
{
    measureScrolling(state, Auth, [](QDbptr &handle) { return handle.cellIsNull(); });
}
BENCHMARK(cellIsNull);

void cellValue(benchmark::State &state)
{
    measureScrolling(state, Lat, [](QDbptr &handle) { return handle.dbGetv(); });
}
BENCHMARK(cellValue);

void lookupRecordAsAHandle(benchmark::State &state)
{
    measure(state, Orid, dbALL, [](QDbptr &handle) {
        const std::unique_ptr<QDbptr> record(handle.lookupRecord(7));
        return record->getIndexRecord();
    });
}
BENCHMARK(lookupRecordAsAHandle);

void handleMadeAndDestroyed(benchmark::State &state)
{
    const Dbptr place = database().at(Orid, 7);
    for (auto unused : state) {
        (void)unused;
        const QDbptr handle(database().connection(), place);
        benchmark::DoNotOptimize(handle.getIndexRecord());
    }
}
BENCHMARK(handleMadeAndDestroyed);

void closingWithAMillionHandles(benchmark::State &state)
{
    for (auto unused : state) {
        (void)unused;
        state.PauseTiming();
        std::unique_ptr<QOvConnection> connection = database().connected();
        const std::unique_ptr<QDbptr> base(connection->getQDbptr());
        std::vector<std::unique_ptr<QDbptr>> handles;
        for (int64_t i = 0; i < 1'000'000; ++i)
            handles.push_back(std::make_unique<QDbptr>(
                connection.get(), Dbptr{base->getIndexDatabase(), 0, Orid, i % recordCount}));
        state.ResumeTiming();
        connection.reset(); // which closes the database
        state.PauseTiming();
        if (handles.back()->isValid())
            state.SkipWithError("a handle outlives its database");
        handles.clear();
        state.ResumeTiming();
    }
}
BENCHMARK(closingWithAMillionHandles)->Unit(benchmark::kMillisecond)->Iterations(3);

void sampleOfAColumn(benchmark::State &state)
{
    measure(state, Auth, dbALL, [](QDbptr &handle) { return handle.columnApproxWidthChars(); });
}
BENCHMARK(sampleOfAColumn);

// What the library alone needs for the answer of fieldName and cellText.
void libraryFieldName(benchmark::State &state)
{
    const Dbptr place = database().at(Orid, 7);
    for (auto unused : state) {
        (void)unused;
        const char *name = nullptr;
        dbquery(place, dbFIELD_NAME, &name);
        benchmark::DoNotOptimize(name);
    }
}
BENCHMARK(libraryFieldName);

void libraryCellText(benchmark::State &state)
{
    Dbptr place = database().at(Auth, 0);
    char text[64];
    for (auto unused : state) {
        (void)unused;
        place.record = (place.record + 1) % recordCount;
        benchmark::DoNotOptimize(dbget(place, text, sizeof text));
    }
}
BENCHMARK(libraryCellText);

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
