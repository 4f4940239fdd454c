// Tables with many rows of a schema with narrow records.
#pragma once

#include "operations/derived.h"

#include <random>

inline const char *narrowSchemaText()
{
    return R"yaml(name: narrow
attributes:
  id: {type: integer, width: 8, format: "%8d", null: "-1"}
  value: {type: real, width: 9, format: "%9.3f", null: "-999.000"}
  word: {type: string, width: 4, format: "%-4s", null: "-"}
  other: {type: integer, width: 8, format: "%8d", null: "-1"}
relations:
  many: {fields: [id, value, word]}
  more: {fields: [other, value, word]}
)yaml";
}

struct NarrowRow {
    int id;
    double value; // thousandths
    std::string word;
};

// `spread` different ids and ten times as many values; some of them null.
inline std::vector<NarrowRow> narrowRows(size_t count, int spread, unsigned seed)
{
    static const char *const words[] = {"AAK", "KIV", "ABKT", "-", "B", "b", "TIXI"};
    std::mt19937 random(seed);
    std::vector<NarrowRow> rows;
    rows.reserve(count);
    for (size_t i = 0; i < count; ++i) {
        const int id = random() % 50 == 0 ? -1 : static_cast<int>(random() % static_cast<unsigned>(spread));
        const double value = random() % 50 == 0
                                 ? -999.0
                                 : static_cast<int>(random() % static_cast<unsigned>(spread * 10)) / 8.0;
        rows.push_back({id, value, words[random() % std::size(words)]});
    }
    return rows;
}

inline void writeNarrowTable(const TemporaryDatabase &files, const char *table,
                             const std::vector<NarrowRow> &rows)
{
    std::string text;
    text.reserve(rows.size() * 24);
    char line[64];
    for (const NarrowRow &row : rows) {
        const int length =
            std::snprintf(line, sizeof line, "%8d %9.3f %-4s\n", row.id, row.value, row.word.c_str());
        text.append(line, static_cast<size_t>(length));
    }
    files.writeFile(std::string("quakes.") + table, text);
}
