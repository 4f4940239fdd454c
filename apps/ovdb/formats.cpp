#include "formats.h"

#include "json_rows.h"
#include "long_work.h"

#include <cerrno>
#include <cstring>
#include <memory>

namespace ovdb {

namespace {

constexpr Format table[] = {
    {"text", Format::Kind::Lines, false, ".txt", " ", 0},
    {"csv", Format::Kind::Lines, true, ".csv", ",", 1},
    {"tsv", Format::Kind::Lines, true, ".tsv", "\t", 1},
    {"json", Format::Kind::Objects, false, ".json", nullptr, 0},
    {"xlsx", Format::Kind::Sheet, true, ".xlsx", nullptr, 0},
    {"view", Format::Kind::View, false, "", nullptr, 0},
    {"database", Format::Kind::Database, false, "", nullptr, 0},
};

// Null stands for all fields.
const Tbl *list_or_all(const TextList &list, const std::vector<std::string> &fields)
{
    return fields.empty() ? nullptr : static_cast<const Tbl *>(list);
}

constexpr const char cannot_write[] = "cannot write the rows";

void write_lines(const Rows &rows, const Format &format, bool header, std::FILE *out)
{
    const TextList fields(rows.fields);
    if (header &&
        dbselect_hdr(rows.table, list_or_all(fields, rows.fields), out, format.separator, format.flag) < 0)
        fail_with_log(cannot_write, "");
    if (rows.count > 0 &&
        dbselect(rows.table, list_or_all(fields, rows.fields), out, format.separator, format.flag) < 0)
        fail_with_log(cannot_write, "");
}

void write_json(const Rows &rows, std::FILE *out)
{
    JsonRows objects(columns_of(rows.table, rows.fields), out);
    if (rows.count > 0) {
        const std::unique_ptr<std::FILE, int (*)(std::FILE *)> stream(objects.open(), &std::fclose);
        const TextList fields(rows.fields);
        if (dbselect(rows.table, list_or_all(fields, rows.fields), stream.get(), "", 0) < 0)
            fail_with_log(cannot_write, "");
    }
    if (!objects.finish()) {
        const std::string reason = std::strerror(errno);
        stop_if_interrupted();
        throw Failure(ExitCode::Failed, std::string(cannot_write) + ": " + reason);
    }
    objects.tell_unreadable();
}

} // namespace

const Format *find_format(std::string_view name)
{
    for (const Format &format : table)
        if (format.name == name)
            return &format;
    return nullptr;
}

const Format &default_format()
{
    return table[0];
}

const Format *format_of_file(std::string_view path)
{
    for (const Format &format : table)
        if (!format.extension.empty() && path.size() > format.extension.size() &&
            path.ends_with(format.extension))
            return &format;
    return nullptr;
}

std::vector<std::string_view> stream_format_names()
{
    std::vector<std::string_view> names;
    for (const Format &format : table)
        if (format.is_stream())
            names.push_back(format.name);
    return names;
}

std::vector<std::string_view> format_names()
{
    std::vector<std::string_view> names;
    for (const Format &format : table)
        names.push_back(format.name);
    return names;
}

void write_rows(const Rows &rows, const Format &format, bool header, std::FILE *out)
{
    const LongWork writing("writing", true);
    if (format.kind == Format::Kind::Lines)
        write_lines(rows, format, header, out);
    else
        write_json(rows, out);
    pass_on_remarks();
}

void write_listing(const Listing &listing, const Format &format, bool header, std::FILE *out)
{
    const std::string text = format.kind == Format::Kind::Objects ? json(listing)
                             : format.flag == 0                   ? aligned(listing, header)
                                                : delimited(listing, *format.separator, header);
    std::fwrite(text.data(), 1, text.size(), out); // a failure stays with the stream
}

} // namespace ovdb
