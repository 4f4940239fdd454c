#include "view_rows.h"

#include "table_layout.h"

#include <functional>
#include <string_view>

namespace bench {

namespace {

// Takes the text of a saved view in pieces and calls `row` with the numbers of each line behind the head.
class RowParser
{
public:
    using Row = std::function<void(const int64_t *records, size_t count)>;
    explicit RowParser(Row row) : m_row(std::move(row)) {}

    void take(std::string_view text)
    {
        for (const char c : text)
            m_head ? of_head(c) : of_rows(c);
    }

private:
    void of_head(char c)
    {
        if (c != '\n') {
            m_line += c;
            return;
        }
        m_head = m_line != "---";
        m_line.clear();
    }
    void of_rows(char c)
    {
        if (c >= '0' && c <= '9') {
            m_number = m_number * 10 + (c - '0');
        } else if (c == ' ' || c == '\n') {
            m_records[m_count++] = m_number;
            m_number = 0;
            if (c == '\n') {
                if (!m_end)
                    m_row(m_records, m_count);
                m_count = 0;
            }
        } else {
            m_end = true; // "end", and the checksum
        }
    }

    const Row m_row;
    std::string m_line;
    bool m_head = true;
    bool m_end = false;
    int64_t m_records[16] = {};
    size_t m_count = 0;
    int64_t m_number = 0;
};

void for_rows(Dbptr view, const RowParser::Row &row)
{
    RowParser parser(row);
    cookie_io_functions_t calls = {};
    calls.write = [](void *cookie, const char *text, size_t size) {
        static_cast<RowParser *>(cookie)->take({text, size});
        return static_cast<ssize_t>(size);
    };
    std::FILE *stream = fopencookie(&parser, "w", calls);
    if (stream == nullptr || dbwrite_view(view, stream) < 0)
        fail("cannot write a view");
    std::fclose(stream);
}

} // namespace

Answer ordered_answer(Dbptr view)
{
    Answer answer;
    for_rows(view, [&](const int64_t *records, size_t) {
        answer.checksum += records[0] * (answer.count % 1009 + 1);
        ++answer.count;
    });
    return answer;
}

Answer unordered_answer(Dbptr view)
{
    static constexpr int64_t weights[] = {31, 17, 7};
    Answer answer;
    for_rows(view, [&](const int64_t *records, size_t count) {
        int64_t sum = 0;
        for (size_t i = 0; i < count && i < 3; ++i)
            sum += weights[i] * records[i];
        answer.checksum += sum % 1000003;
        ++answer.count;
    });
    return answer;
}

Answer bundles_answer(Dbptr grouped)
{
    Answer answer{answer_to<int64_t>(grouped, dbRECORD_COUNT), 0};
    grouped = dblookup(grouped, nullptr, nullptr, "bundle", nullptr);
    for (int64_t i = 0; i < answer.count; ++i) {
        grouped.record = i;
        int64_t first = 0, end = 0;
        if (dbget_range(grouped, &first, &end) < 0)
            fail("a bundle has no range");
        answer.checksum += (end - first) * (end - first);
    }
    return answer;
}

} // namespace bench
