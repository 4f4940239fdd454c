// Short forms of what the tests of editing do all the time.
#pragma once

#include "db/opened.h"
#include "support/temporary_database.h"

#include <cstdint>
#include <string>
#include <vector>

inline DbValue integer_value(int64_t number, int64_t type = dbINTEGER)
{
    DbValue value{};
    value.type = type;
    value.integer = number;
    return value;
}
inline DbValue real_value(double number, int64_t type = dbREAL)
{
    DbValue value{};
    value.type = type;
    value.real = number;
    return value;
}
// Borrows the text.
inline DbValue text_value(const std::string &text)
{
    DbValue value{};
    value.type = dbSTRING;
    value.text = const_cast<char *>(text.c_str());
    return value;
}

inline int put(Dbptr db, const char *field, const std::string &text)
{
    const DbValue value = text_value(text);
    return dbputv(db, field, &value);
}

// A text without blanks at its ends.
inline std::string trim(const std::string &text)
{
    const size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

// Fields of all records of a table or view.
inline std::vector<std::string> column_of(Dbptr table, const char *field)
{
    std::vector<std::string> texts;
    Dbptr at = dblookup(table, "", "", field, "");
    const int64_t rows = integer(table, dbRECORD_COUNT);
    for (at.record = 0; at.record < rows; ++at.record)
        texts.push_back(trim(get(at)));
    return texts;
}

using Texts = std::vector<std::string>;
