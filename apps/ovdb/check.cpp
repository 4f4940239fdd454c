// ovdb check: whether a database's files are what its schema says, and what can be done about it.
#include "commands.h"
#include "formats.h"
#include "json_text.h"
#include "library.h"
#include "listing.h"
#include "long_work.h"

#include <orvane/db_check.h>

#include <cstdio>
#include <string>

namespace ovdb {

namespace {

constexpr std::int64_t usual_limit = 10;

const char *word_of(int level)
{
    return level == dbFINDING_ERROR ? "error" : level == dbFINDING_NOTE ? "note" : "repair";
}

std::string number_or_nothing(std::int64_t number)
{
    return number < 0 ? std::string() : std::to_string(number);
}

// "1,234 records"
std::string counted(std::int64_t count, const char *what)
{
    std::string digits = std::to_string(count);
    for (std::size_t at = digits.size(); at > 3;) {
        at -= 3;
        digits.insert(at, ",");
    }
    return digits + " " + what + (count == 1 ? "" : "s");
}

// Writes findings as they come, in one of the formats.
class Report
{
public:
    Report(const Format &format, bool header) : format_(format), header_(header) {}

    void add(const DbFinding &finding)
    {
        if (!format_.separator)
            add_object(finding);
        else if (format_.flag == 0)
            add_line(finding);
        else
            add_cells(finding);
        any_ = true;
    }
    void end()
    {
        if (!format_.separator)
            std::fputs(any_ ? "\n]\n" : "[]\n", stdout);
        else if (!any_ && format_.flag != 0)
            write_header();
    }

private:
    // FILE:LINE: error: record 3, byte 711, field lat: 'abc' is no value of type real [type]
    void add_line(const DbFinding &finding)
    {
        std::string text = finding.file;
        if (finding.line > 0)
            text.append(":").append(std::to_string(finding.line));
        text.append(": ").append(word_of(finding.level)).append(": ");
        std::string place;
        const auto add_place = [&](const char *what, const std::string &value) {
            if (!value.empty())
                place.append(place.empty() ? "" : ", ").append(what).append(" ").append(value);
        };
        add_place("record", number_or_nothing(finding.record));
        add_place("byte", number_or_nothing(finding.offset));
        add_place(std::string(finding.field).find(',') == std::string::npos ? "field" : "fields",
                  finding.field);
        if (!place.empty())
            text.append(place).append(": ");
        if (*finding.found != '\0')
            text.append("'").append(finding.found).append("' ");
        text.append(finding.message).append(" [").append(finding.kind).append("]\n");
        std::fputs(text.c_str(), stdout);
    }

    static Listing listing_of(const DbFinding &finding)
    {
        Listing listing;
        listing.names = {"level", "kind",  "table", "file",    "line", "record",
                         "byte",  "field", "found", "message", "more"};
        listing.rows.push_back({std::string(word_of(finding.level)), std::string(finding.kind),
                                std::string(finding.table), std::string(finding.file),
                                number_or_nothing(finding.line), number_or_nothing(finding.record),
                                number_or_nothing(finding.offset), std::string(finding.field),
                                std::string(finding.found), std::string(finding.message), finding.more});
        return listing;
    }

    void write_header()
    {
        Listing names = listing_of(DbFinding{0, "", "", "", -1, -1, -1, "", "", "", 0});
        names.rows.clear();
        if (header_)
            std::fputs(delimited(names, *format_.separator, true).c_str(), stdout);
    }

    void add_cells(const DbFinding &finding)
    {
        if (!any_)
            write_header();
        std::fputs(delimited(listing_of(finding), *format_.separator, false).c_str(), stdout);
    }

    void add_object(const DbFinding &finding)
    {
        std::string text = any_ ? ",\n{" : "[\n{";
        const auto add_text = [&](const char *name, const char *value) {
            text.append(text.back() == '{' ? "\"" : ",\"").append(name).append("\":");
            append_json_string(value, text);
        };
        const auto add_number = [&](const char *name, std::int64_t value) {
            text.append(",\"").append(name).append("\":");
            text.append(value < 0 ? "null" : std::to_string(value));
        };
        add_text("level", word_of(finding.level));
        add_text("kind", finding.kind);
        add_text("table", finding.table);
        add_text("file", finding.file);
        add_number("line", finding.line);
        add_number("record", finding.record);
        add_number("byte", finding.offset);
        add_text("field", finding.field);
        add_text("found", finding.found);
        add_text("message", finding.message);
        add_number("more", finding.more);
        std::fputs(text.append("}").c_str(), stdout);
    }

    const Format &format_;
    const bool header_;
    bool any_ = false;
};

int take_finding(const DbFinding *finding, void *report)
{
    static_cast<Report *>(report)->add(*finding);
    return std::ferror(stdout) != 0 || is_interrupted() ? 1 : 0;
}

std::string summary_text(const DbCheckSummary &summary, int repair)
{
    std::string text =
        "checked " + counted(summary.tables, "table") + ", " + counted(summary.records, "record");
    if (summary.marked > 0)
        text += " (" + std::to_string(summary.marked) + " marked)";
    text += ": " + counted(summary.errors, "error") + ", " + counted(summary.notes, "note");
    if (repair > 0)
        text += "; " + counted(summary.repaired, "error") + (repair == 1 ? " can be repaired" : " repaired");
    return text;
}

// A descriptor or a schema that is wrong is a finding, too: each line of the log says where and what.
void report_unopened(Report &report, const std::string &path, std::string log)
{
    while (!log.empty()) {
        const auto end = log.find('\n');
        const std::string line = log.substr(0, end);
        log = end == std::string::npos ? std::string() : log.substr(end + 1);
        if (line.empty())
            continue;
        const DbFinding finding{dbFINDING_ERROR, "database", "", path.c_str(), -1, -1, -1, "", "",
                                line.c_str(),    0};
        report.add(finding);
    }
}

} // namespace

void run_check(const Request &request)
{
    const std::string &path = request.operands[0];
    const int repair = request.dry_run ? 1 : request.repair ? 2 : 0;
    const Format &format = request.format ? *request.format : default_format();
    Report report(format, request.header.value_or(format.has_header));
    Dbptr db = dbinvalid();
    DbCheckSummary summary{};
    {
        const LongWork work("checking", true);
        if (const int failed = dbopen_database(path.c_str(), repair == 2 ? "r+" : "r", &db); failed < 0) {
            if (failed != dbERROR_FORMAT)
                fail_with_log("cannot open the database",
                              "give the path of a descriptor, or of table files without .TABLE");
            report_unopened(report, path, taken_log());
            report.end();
            throw Failure(ExitCode::FoundErrors, "the database cannot be opened");
        }
        taken_log(); // of saved views that are refused, which the check tells
        DbCheckOptions options{};
        options.limit = request.all ? -1 : request.limit.value_or(usual_limit);
        options.repair = repair;
        if (dbcheck(db, &options, take_finding, &report, &summary) < 0)
            fail_with_log("check " + path, "");
    }
    OVdbclose(db);
    taken_log();
    report.end();
    const std::string text = summary_text(summary, repair);
    std::fprintf(format.separator && format.flag == 0 ? stdout : stderr, "%s\n", text.c_str());
    const std::int64_t left = summary.errors - (repair == 2 ? summary.repaired : 0);
    if (left > 0)
        throw Failure(ExitCode::FoundErrors, counted(left, "error") + (repair == 2 ? " left" : " found"));
}

} // namespace ovdb
