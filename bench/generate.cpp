// Writes a database with an origin table of any number of rows: generate ROWS PATH [SEED].
//
// The layout (widths, formats, nulls) comes from the schema through the database library; the values are
// drawn from a seeded generator, so that the same arguments always give the same bytes. They resemble a
// catalogue: rising times, magnitudes that fall off by a factor of ten a unit, a tenth of the optional
// figures missing.

#include "table_layout.h"

#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using bench::Column;
using bench::fail;

std::string formatted(const Column &column, double value)
{
    char buffer[400];
    std::string format = column.format;
    const char conversion = format.back();
    int length;
    if (conversion == 'd') {
        format.replace(format.size() - 1, 1, PRId64);
        length = std::snprintf(buffer, sizeof buffer, format.c_str(), static_cast<int64_t>(value));
    } else {
        length = std::snprintf(buffer, sizeof buffer, format.c_str(), value);
    }
    if (length != column.width)
        fail("a value of " + column.name + " does not fit its width");
    return {buffer, static_cast<size_t>(length)};
}

std::string padded(const Column &column, const std::string &value)
{
    const size_t width = static_cast<size_t>(column.width);
    if (value.size() > width)
        fail("a text of " + column.name + " does not fit its width");
    const std::string blanks(width - value.size(), ' ');
    return column.type == dbSTRING ? value + blanks : blanks + value;
}

double yearDay(double epoch)
{
    std::unique_ptr<char, decltype(&std::free)> day(epoch2str(epoch, "%Y%j"), std::free);
    return std::atof(day.get());
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 3) {
        std::fprintf(stderr, "usage: generate ROWS PATH [SEED]\n");
        return 2;
    }
    const int64_t rows = std::atoll(argv[1]);
    const std::string path = argv[2];
    std::mt19937_64 random(argc > 3 ? std::strtoull(argv[3], nullptr, 10) : 1);
    const auto uniform = [&random](double low, double high) {
        return low + (high - low) * static_cast<double>(random() >> 11) * 0x1p-53;
    };

    const Dbptr db = bench::new_database(path, std::to_string(rows) + " generated origins");
    const std::vector<Column> columns = bench::columns_of(dblookup(db, nullptr, "origin", nullptr, nullptr));

    double time = 0;
    double magnitude = 0;
    int64_t row = 0;
    const std::map<std::string, std::function<double()>> values = {
        {"lat", [&] { return std::asin(uniform(-1, 1)) * 180 / M_PI; }},
        {"lon", [&] { return uniform(-180, 180); }},
        {"depth", [&] { return -33 * std::log(1 - uniform(0, 0.9999)); }},
        {"time", [&] { return time; }},
        {"orid", [&] { return static_cast<double>(row + 1); }},
        {"evid", [&] { return static_cast<double>(row + 1); }},
        {"jdate", [&] { return yearDay(time); }},
        {"nass", [&] { return std::floor(uniform(3, 200)); }},
        {"ndef", [&] { return std::floor(uniform(3, 100)); }},
        {"mb", [&] { return magnitude; }},
        {"ms", [&] { return magnitude - 0.3; }},
        {"ml", [&] { return magnitude + 0.2; }},
        {"lddate", [&] { return time + 86400; }},
    };
    const std::map<std::string, std::vector<std::string>> texts = {
        {"etype", {"ke", "se", "kx", "-"}},
        {"dtype", {"f", "d", "g", "r"}},
        {"algorithm", {"locsat", "grid", "double-diff"}},
        {"auth", {"net-a", "net-b", "net-c", "analyst"}}};

    std::FILE *file = std::fopen((path + ".origin").c_str(), "w");
    if (file == nullptr)
        fail("cannot write " + path + ".origin");
    std::setvbuf(file, nullptr, _IOFBF, 1 << 20);
    std::string record;
    for (; row < rows; ++row) {
        time = 315532800.0 + static_cast<double>(row) * 100 + uniform(0, 100);
        magnitude = 1 - std::log10(1 - uniform(0, 0.999999));
        record.clear();
        for (const Column &column : columns) {
            const auto value = values.find(column.name);
            const auto choices = texts.find(column.name);
            const bool optional = column.name[0] == 'm' || column.name == "depth";
            if (choices != texts.end())
                record += padded(column, choices->second[random() % choices->second.size()]);
            else if (value == values.end() || (optional && random() % 10 == 0))
                record += padded(column, column.null);
            else
                record += formatted(column, value->second());
            record += ' ';
        }
        record.back() = '\n';
        std::fwrite(record.data(), 1, record.size(), file);
    }
    if (std::fclose(file) != 0)
        fail("cannot write " + path + ".origin");
    return OVdbclose(db) < 0;
}
