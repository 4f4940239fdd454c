#include "case_file.h"

#include <array>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace orvane::expr::test {

namespace {

ValueType typeNamed(const std::string &word)
{
    constexpr std::array types = {ValueType::Boolean, ValueType::Integer, ValueType::Real, ValueType::Time,
                                  ValueType::Yearday, ValueType::Text,    ValueType::Rows};
    for (const ValueType type : types)
        if (type_word(type) == word)
            return type;
    throw std::runtime_error("no type " + word);
}

ScopeField fieldOf(const std::string &line)
{
    std::istringstream words(line);
    std::string name, type, null;
    words >> name >> type >> null;
    ScopeField field;
    if (const std::size_t point = name.find('.'); point != std::string::npos) {
        field.table = name.substr(0, point);
        name.erase(0, point + 1);
    }
    field.name = name;
    field.type = typeNamed(type);
    field.null_text = null;
    return field;
}

std::vector<std::string> rowOf(const std::string &line, const std::vector<ScopeField> &fields)
{
    std::vector<std::string> row;
    for (const ScopeField &field : fields)
        row.push_back(field.null_text);
    for (std::size_t at = 0; (at = line.find_first_not_of(' ', at)) != std::string::npos;) {
        const std::size_t equals = line.find('=', at);
        if (equals == std::string::npos)
            throw std::runtime_error("expected name=value in a row");
        const std::string name = line.substr(at, equals - at);
        const bool quoted = line[equals + 1] == '\'';
        const std::size_t start = equals + (quoted ? 2 : 1);
        const std::size_t end = std::min(line.find(quoted ? '\'' : ' ', start), line.size());
        at = std::min(end + 1, line.size());
        bool known = false;
        for (std::size_t i = 0; i < fields.size(); ++i) {
            if (fields[i].name != name && fields[i].table + "." + fields[i].name != name)
                continue;
            row[i] = line.substr(start, end - start);
            known = true;
            break;
        }
        if (!known)
            throw std::runtime_error("no field " + name);
    }
    return row;
}

} // namespace

CaseFile readCases(const std::string &path)
{
    std::ifstream stream(path);
    if (!stream)
        throw std::runtime_error("can't read " + path);
    CaseFile file;
    std::vector<std::string> row;
    bool inCase = false;
    std::string line;
    for (int number = 1; std::getline(stream, line); ++number) {
        const bool answered = inCase && !file.cases.back().expected.empty();
        if (line.starts_with("> ") || line == ">") {
            const std::string text = line.size() > 2 ? line.substr(2) : "";
            if (inCase && !answered) {
                file.cases.back().expression += "\n" + text;
                continue;
            }
            if (row.empty())
                row = rowOf("", file.fields);
            file.cases.push_back({number, text, "", row});
            inCase = true;
        } else if (line.empty()) {
            if (inCase && !answered)
                throw std::runtime_error(path + ":" + std::to_string(number) +
                                         ": a statement without a value");
            inCase = false;
        } else if (inCase) {
            file.cases.back().expected += (answered ? "\n" : "") + line;
        } else if (line.starts_with("field ")) {
            file.fields.push_back(fieldOf(line.substr(6)));
        } else if (line.starts_with("row")) {
            row = rowOf(line.substr(3), file.fields);
        } else if (!line.starts_with("#")) {
            throw std::runtime_error(path + ":" + std::to_string(number) + ": what is `" + line + "`?");
        }
    }
    if (inCase && file.cases.back().expected.empty())
        throw std::runtime_error(path + ": the last statement has no value");
    return file;
}

} // namespace orvane::expr::test
