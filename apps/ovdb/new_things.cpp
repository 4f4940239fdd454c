// ovdb create, nextid: new databases and new numbers.
#include "commands.h"
#include "json_text.h"
#include "library.h"
#include "long_work.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <unistd.h>

namespace ovdb {

namespace {

// Quoted as JSON has it, which is YAML, too.
std::string descriptor_line(const char *key, const std::string &value)
{
    std::string line = std::string(key) + ": ";
    append_json_string(value, line);
    return line + "\n";
}

// Makes the file; one that is there stays as it is.
void write_new_file(const std::string &path, const std::string &text)
{
    const std::string where = "create " + path + ": ";
    std::FILE *file = std::fopen(path.c_str(), "wx");
    if (!file && errno == EEXIST)
        throw Failure(ExitCode::Failed, where + "there is a file already; it was left as it is");
    if (!file)
        throw Failure(ExitCode::Failed, where + std::strerror(errno));
    errno = 0;
    const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size() &&
                         std::fflush(file) == 0 && fsync(fileno(file)) == 0;
    const int write_error = errno;
    if (std::fclose(file) == 0 && written)
        return;
    const std::string reason = std::strerror(written ? errno : write_error);
    unlink(path.c_str());
    throw Failure(ExitCode::Failed, where + reason);
}

bool has_control_character(const std::string &text)
{
    return std::any_of(text.begin(), text.end(), [](unsigned char c) { return c < 0x20 || c == 0x7f; });
}

} // namespace

void run_create(const Request &request)
{
    const std::string &path = request.operands[0];
    if (request.schema.empty())
        throw Failure(ExitCode::Usage,
                      "create " + path + ": --schema NAME is missing, such as --schema css3.0");
    if (has_control_character(request.schema) || has_control_character(request.description))
        throw Failure(ExitCode::Usage,
                      "create " + path + ": the schema and the description are one line each");
    std::string text = descriptor_line("schema", request.schema);
    if (!request.description.empty())
        text += descriptor_line("description", request.description);
    write_new_file(path, text);
    try {
        const Database made(path);
    } catch (...) {
        unlink(path.c_str()); // what can't be opened, for want of its schema, is no database
        throw;
    }
}

void run_nextid(const Request &request)
{
    const Database database(request.operands[0], Database::Access::Change);
    const LongWork work("looking for a number");
    const std::int64_t number = dbnextid(database.pointer(), request.operands[1].c_str());
    if (number < 0)
        fail_with_log("nextid " + request.operands[1],
                      "'ovdb info DB.TABLE' tells the id that a table defines");
    pass_on_remarks();
    std::printf("%lld\n", static_cast<long long>(number));
}

} // namespace ovdb
