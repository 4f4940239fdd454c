// Writes a database of arrivals with what belongs to them: generate_catalogue ARRIVALS PATH [SEED].
//
// arrival  as many rows as asked for, in order of their ids, at times in no order, no two at the same time;
// at 500
//          stations, the first of which have far more than the last
// assoc    nine tenths of the arrivals, nine to an origin, in order of the origins: so of arrivals in no
// order origin   a tenth as many as arrivals, in order of ids and of time site     one to three epochs of
// each station, with gaps; the last one may be open
//
// Each value is a function of its row, the table and the seed, so that the same arguments give the same
// bytes.

#include "table_layout.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cmath>
#include <cstring>
#include <functional>

namespace {

using bench::Column;
using bench::fail;

uint64_t mixed(uint64_t value)
{
    value = (value ^ (value >> 30)) * 0xbf58476d1ce4e5b9u;
    value = (value ^ (value >> 27)) * 0x94d049bb133111ebu;
    return value ^ (value >> 31);
}

// The numbers below `count` in another order: a Feistel network over the next even power of two, walked until
// it comes back below.
class Permutation
{
public:
    Permutation(uint64_t count, uint64_t seed) : m_count(count), m_seed(seed)
    {
        while ((uint64_t{1} << (2 * m_half)) < count)
            ++m_half;
        m_mask = (uint64_t{1} << m_half) - 1;
    }
    uint64_t operator()(uint64_t number) const
    {
        do {
            uint64_t left = number >> m_half, right = number & m_mask;
            for (uint64_t round = 0; round < 4; ++round) {
                const uint64_t next = left ^ (mixed(right + m_seed + (round << 40)) & m_mask);
                left = right;
                right = next;
            }
            number = left << m_half | right;
        } while (number >= m_count);
        return number;
    }

private:
    const uint64_t m_count;
    const uint64_t m_seed;
    int m_half = 1;
    uint64_t m_mask = 0;
};

// ---- Records -------------------------------------------------------------------------------------

// A value in units of the field's last decimal, a text, or a null.
struct Cell {
    enum class Kind { Null, Number, Text } kind = Kind::Null;
    int64_t number = 0;
    const char *text = "";
};
Cell null()
{
    return {};
}
Cell number(int64_t value)
{
    return {Cell::Kind::Number, value, ""};
}
Cell text(const char *value)
{
    return {Cell::Kind::Text, 0, value};
}

using Recipe = std::function<Cell(int64_t row)>;

class TableWriter
{
public:
    TableWriter(Dbptr db, const std::string &path, const char *table)
        : m_name(table), m_path(path + "." + table),
          m_columns(bench::columns_of(dblookup(db, nullptr, table, nullptr, nullptr))),
          m_recipes(m_columns.size())
    {
    }

    void set(const char *field, Recipe recipe)
    {
        const auto found = std::find_if(m_columns.begin(), m_columns.end(),
                                        [&](const Column &column) { return column.name == field; });
        if (found == m_columns.end())
            fail(std::string("no field ") + field);
        m_recipes[static_cast<size_t>(found - m_columns.begin())] = std::move(recipe);
    }

    void write(int64_t rows) const
    {
        std::FILE *file = std::fopen(m_path.c_str(), "w");
        if (file == nullptr)
            fail("cannot write " + m_path);
        std::string buffer;
        for (int64_t row = 0; row < rows; ++row) {
            for (size_t i = 0; i < m_columns.size(); ++i) {
                append(buffer, m_columns[i], m_recipes[i] ? m_recipes[i](row) : Cell());
                buffer += ' ';
            }
            buffer.back() = '\n';
            if (buffer.size() > (1 << 20)) {
                std::fwrite(buffer.data(), 1, buffer.size(), file);
                buffer.clear();
            }
        }
        std::fwrite(buffer.data(), 1, buffer.size(), file);
        if (std::fclose(file) != 0)
            fail("cannot write " + m_path);
    }

private:
    static void append(std::string &to, const Column &column, const Cell &cell)
    {
        const auto width = static_cast<size_t>(column.width);
        if (cell.kind == Cell::Kind::Number) {
            to.append(width, ' ');
            print(column, to.data() + to.size() - width, to.data() + to.size(), cell.number);
            return;
        }
        const std::string_view value =
            cell.kind == Cell::Kind::Null ? std::string_view(column.null) : std::string_view(cell.text);
        if (value.size() > width)
            fail("a text of " + column.name + " does not fit its width");
        const size_t blanks = width - value.size();
        to.append(column.type == dbSTRING ? 0 : blanks, ' ');
        to += value;
        to.append(column.type == dbSTRING ? blanks : 0, ' ');
    }

    static void print(const Column &column, char *begin, char *end, int64_t value)
    {
        const auto dot = column.format.find('.');
        int decimals = dot == std::string::npos ? 0 : column.format[dot + 1] - '0';
        uint64_t left = static_cast<uint64_t>(std::abs(value));
        const auto put = [&](char c) {
            if (end == begin)
                fail("a value of " + column.name + " does not fit its width");
            *--end = c;
        };
        for (bool point = decimals > 0; decimals >= 0 || left > 0; left /= 10, --decimals) {
            if (decimals == 0 && point)
                put('.');
            put(static_cast<char>('0' + left % 10));
        }
        if (value < 0)
            put('-');
    }

    const std::string m_name;
    const std::string m_path;
    const std::vector<Column> m_columns;
    std::vector<Recipe> m_recipes;
};

// ---- Values --------------------------------------------------------------------------------------

constexpr int64_t first_second = 631152000; // 1990
constexpr int64_t seconds = 1'000'000'000;  // until 2021
constexpr int station_count = 500;

// Days from 1970 on as years with the days in them.
class Yeardays
{
public:
    Yeardays()
    {
        for (int year = 1970; year < 2060; ++year) {
            const bool leap = year % 4 == 0;
            for (int day = 1; day <= (leap ? 366 : 365); ++day)
                m_days.push_back(year * 1000 + day);
        }
    }
    int64_t of_second(int64_t second) const { return m_days[static_cast<size_t>(second / 86400)]; }

private:
    std::vector<int64_t> m_days;
};

struct Epoch {
    int station;
    int64_t on;
    int64_t off; // -1: open
};

class Catalogue
{
public:
    Catalogue(int64_t arrivals, uint64_t seed)
        : m_arrivals(arrivals), m_seed(mixed(seed)),
          m_times(static_cast<uint64_t>(arrivals), mixed(seed + 1)),
          m_associated(static_cast<uint64_t>(arrivals), mixed(seed + 2))
    {
        double weight = 0;
        for (int i = 0; i < station_count; ++i) {
            weight += 1.0 / (i + 25);
            m_weights[static_cast<size_t>(i)] = weight;
            std::string name;
            for (auto left = static_cast<uint64_t>(i) * 7919 + 20000; left > 0 && name.size() < 5; left /= 26)
                name += static_cast<char>('A' + left % 26);
            m_stations.push_back(name);
        }
        // Of how many draws in 65536 which station comes.
        for (size_t draw = 0, station = 0; draw < m_draws.size(); ++draw) {
            while (m_weights[station] < (static_cast<double>(draw) + 0.5) / 65536 * weight)
                ++station;
            m_draws[draw] = static_cast<uint16_t>(station);
        }
    }

    void write(Dbptr db, const std::string &path)
    {
        write_arrival(TableWriter(db, path, "arrival"));
        write_assoc(TableWriter(db, path, "assoc"));
        write_origin(TableWriter(db, path, "origin"));
        write_site(TableWriter(db, path, "site"));
    }

private:
    uint64_t draw(int64_t row, uint64_t field) const
    {
        return mixed(static_cast<uint64_t>(row) * 64 + field + m_seed);
    }
    // Evenly from [low, high).
    Cell even(int64_t row, uint64_t field, int64_t low, int64_t high) const
    {
        return number(low + static_cast<int64_t>(draw(row, field) % static_cast<uint64_t>(high - low)));
    }
    template <size_t Count>
    Cell one_of(int64_t row, uint64_t field, const std::array<const char *, Count> &texts) const
    {
        return text(texts[draw(row, field) % Count]);
    }
    Recipe evenly(uint64_t field, int64_t low, int64_t high) const
    {
        return [=, this](int64_t row) { return even(row, field, low, high); };
    }

    // Of an arrival, in hundred-thousandths of a second: a slot of its own, and somewhere in it.
    int64_t time_of(int64_t arrival) const
    {
        const int64_t slot = seconds * 100000 / m_arrivals;
        return first_second * 100000 + static_cast<int64_t>(m_times(static_cast<uint64_t>(arrival))) * slot +
               static_cast<int64_t>(draw(arrival, 1) % static_cast<uint64_t>(slot));
    }
    int64_t origin_time(int64_t origin, int64_t origins) const
    {
        const int64_t slot = seconds * 100000 / origins;
        return first_second * 100000 + origin * slot +
               static_cast<int64_t>(draw(origin, 33) % static_cast<uint64_t>(slot));
    }
    const char *station_of(int64_t arrival) const
    {
        return m_stations[m_draws[draw(arrival, 2) & 0xffff]].c_str();
    }
    int64_t associated(int64_t assoc) const
    {
        return static_cast<int64_t>(m_associated(static_cast<uint64_t>(assoc)));
    }
    // Ids that no longer fit their eight bytes are null.
    static Cell id(int64_t value) { return value <= 99'999'999 ? number(value) : null(); }

    void write_arrival(TableWriter table) const
    {
        static constexpr std::array chans = {"BHZ", "BHN", "BHE", "SHZ", "HHZ"};
        static constexpr std::array phases = {"P", "S", "Pn", "Pg", "Sn", "Lg", "PKP", "-"};
        static constexpr std::array motions = {"c.", "d.", "-", ".."};
        static constexpr std::array qualities = {"i", "e", "w"};
        static constexpr std::array authors = {"detector", "analyst-a", "analyst-b", "network"};
        table.set("sta", [&](int64_t row) { return text(station_of(row)); });
        table.set("time", [&](int64_t row) { return number(time_of(row)); });
        table.set("arid", [&](int64_t row) { return id(row + 1); });
        table.set("jdate", [&](int64_t row) { return number(m_yeardays.of_second(time_of(row) / 100000)); });
        table.set("chan", [&](int64_t row) { return one_of(row, 3, chans); });
        table.set("iphase", [&](int64_t row) { return one_of(row, 4, phases); });
        table.set("deltim", evenly(5, 10, 3000));
        table.set("azimuth", evenly(6, 0, 36000));
        table.set("delaz", evenly(7, 100, 6000));
        table.set("slow", evenly(8, 100, 4500));
        table.set("delslo", evenly(9, 10, 900));
        table.set("rect", evenly(10, 0, 1000));
        table.set("amp", evenly(11, 1, 1000000));
        table.set("per", evenly(12, 5, 200));
        table.set("fm", [&](int64_t row) { return one_of(row, 13, motions); });
        // Half of them below 8, a few high ones.
        table.set("snr", [&](int64_t row) {
            const auto part = static_cast<double>(draw(row, 14) >> 11) * 0x1p-53;
            return number(static_cast<int64_t>(100 + 700 * part / (1.001 - part)));
        });
        table.set("qual", [&](int64_t row) { return one_of(row, 15, qualities); });
        table.set("auth", [&](int64_t row) { return one_of(row, 16, authors); });
        table.set("lddate", [&](int64_t row) { return number(time_of(row) + 8640000000); });
        table.write(m_arrivals);
    }

    void write_assoc(TableWriter table) const
    {
        static constexpr std::array phases = {"P", "S", "Pn", "Pg", "Sn", "Lg", "PKP", "PcP"};
        static constexpr std::array used = {"d", "n"};
        static constexpr std::array models = {"iasp91", "ak135", "local"};
        table.set("arid", [&](int64_t row) { return id(associated(row) + 1); });
        table.set("orid", [&](int64_t row) { return number(row / 9 + 1); });
        table.set("sta", [&](int64_t row) { return text(station_of(associated(row))); });
        table.set("phase", [&](int64_t row) { return one_of(row, 17, phases); });
        table.set("belief", evenly(18, 0, 101));
        table.set("delta", evenly(19, 0, 180000));
        table.set("seaz", evenly(20, 0, 36000));
        table.set("esaz", evenly(21, 0, 36000));
        table.set("timeres", evenly(22, -9000, 9000));
        table.set("timedef", [&](int64_t row) { return one_of(row, 23, used); });
        table.set("wgt", evenly(24, 0, 1001));
        table.set("vmodel", [&](int64_t row) { return one_of(row, 25, models); });
        table.set("lddate", [&](int64_t row) { return number(time_of(associated(row)) + 17280000000); });
        table.write(m_arrivals / 10 * 9);
    }

    void write_origin(TableWriter table) const
    {
        static constexpr std::array types = {"ke", "se", "kx", "-"};
        static constexpr std::array algorithms = {"locsat", "grid", "double-diff"};
        static constexpr std::array authors = {"net-a", "net-b", "net-c", "analyst"};
        const int64_t origins = std::max<int64_t>(m_arrivals / 10, 1);
        table.set("lat", evenly(26, -900000, 900001));
        table.set("lon", evenly(27, -1800000, 1800001));
        table.set("depth", evenly(28, 0, 7000000));
        table.set("time", [=, this](int64_t row) { return number(origin_time(row, origins)); });
        table.set("orid", [](int64_t row) { return number(row + 1); });
        table.set("evid", [](int64_t row) { return number(row + 1); });
        table.set("jdate", [=, this](int64_t row) {
            return number(m_yeardays.of_second(origin_time(row, origins) / 100000));
        });
        table.set("nass", [](int64_t) { return number(9); });
        table.set("ndef", evenly(29, 3, 10));
        table.set("mb", evenly(30, 100, 800));
        table.set("ml", evenly(31, 100, 800));
        table.set("etype", [&](int64_t row) { return one_of(row, 32, types); });
        table.set("algorithm", [&](int64_t row) { return one_of(row, 34, algorithms); });
        table.set("auth", [&](int64_t row) { return one_of(row, 35, authors); });
        table.set("lddate",
                  [=, this](int64_t row) { return number(origin_time(row, origins) + 8640000000); });
        table.write(origins);
    }

    void write_site(TableWriter table) const
    {
        std::vector<Epoch> epochs;
        for (int station = 0; station < station_count; ++station) {
            const auto count = 1 + static_cast<int64_t>(draw(station, 36) % 3);
            const auto second = [&](int64_t at) { // of so many parts of the whole time
                const auto shift = static_cast<int64_t>(draw(station * 16 + at, 37) % 60000000);
                return first_second - 50000000 + (seconds + 50000000) / (2 * count) * at + shift;
            };
            for (int64_t i = 0; i < count; ++i) {
                const bool open = i + 1 == count && draw(station, 38) % 2 == 0;
                epochs.push_back(Epoch{station, m_yeardays.of_second(second(2 * i)),
                                       open ? -1 : m_yeardays.of_second(second(2 * i + 1) + 61000000)});
                if (!open && epochs.back().off < epochs.back().on)
                    std::swap(epochs.back().off, epochs.back().on);
            }
        }
        const auto epoch = [&](int64_t row) -> const Epoch & { return epochs[static_cast<size_t>(row)]; };
        table.set("sta", [&](int64_t row) {
            return text(m_stations[static_cast<size_t>(epoch(row).station)].c_str());
        });
        table.set("ondate", [&](int64_t row) { return number(epoch(row).on); });
        table.set("offdate",
                  [&](int64_t row) { return epoch(row).off < 0 ? null() : number(epoch(row).off); });
        table.set("lat", [&](int64_t row) { return even(epoch(row).station, 39, -900000, 900001); });
        table.set("lon", [&](int64_t row) { return even(epoch(row).station, 40, -1800000, 1800001); });
        table.set("elev", [&](int64_t row) { return even(epoch(row).station, 41, 0, 40000); });
        table.set("staname", [](int64_t) { return text("A station, with a name"); });
        table.set("statype", [](int64_t) { return text("ss"); });
        table.set("lddate", [](int64_t) { return number(first_second * 100000); });
        table.write(static_cast<int64_t>(epochs.size()));
    }

    const int64_t m_arrivals;
    const uint64_t m_seed;
    const Permutation m_times;
    const Permutation m_associated;
    const Yeardays m_yeardays;
    std::array<double, station_count> m_weights{};
    std::array<uint16_t, 65536> m_draws{};
    std::vector<std::string> m_stations;
};

} // namespace

int main(int argc, char **argv)
{
    const int64_t arrivals = argc > 2 ? std::atoll(argv[1]) : 0;
    if (arrivals < 10) {
        std::fprintf(stderr, "usage: generate_catalogue ARRIVALS PATH [SEED]\n");
        return 2;
    }
    const std::string path = argv[2];
    const Dbptr db = bench::new_database(path, std::to_string(arrivals) + " generated arrivals");
    Catalogue(arrivals, argc > 3 ? std::strtoull(argv[3], nullptr, 10) : 1).write(db, path);
    return OVdbclose(db) < 0;
}
