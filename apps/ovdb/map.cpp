// ovdb map: the events of a database as a picture.
#include "commands.h"
#include "derivations.h"
#include "library.h"
#include "long_work.h"
#include "new_file.h"
#include "qt_part.h"

#include <charconv>

namespace ovdb {

namespace {

constexpr std::string_view extension = ".png";

std::string number_text(double number)
{
    char digits[64];
    return {digits, std::to_chars(digits, digits + sizeof digits, number).ptr};
}

// The path of the database. Fails where it has no events that could be drawn.
std::string checked_database(const std::string &path)
{
    const Database database(path);
    const std::string where = "map " + path;
    const Dbptr origin = database.table("origin", where);
    if (number_answer(origin, dbTABLE_PRESENT) == 0)
        throw Failure(ExitCode::Failed,
                      where + ": the table origin has no file, so there are no events to draw");
    check_table(origin, where);
    return text_answer(database.pointer(), dbDATABASE_NAME);
}

} // namespace

void run_map(const Request &request)
{
    const std::string where = "map " + request.operands[0];
    if (request.output.empty())
        throw Failure(ExitCode::Usage, where + ": --output FILE.png is missing");
    if (!request.output.ends_with(extension) || request.output.size() == extension.size())
        throw Failure(ExitCode::Usage, "--output " + request.output + ": maps are PNG files; give FILE.png");
    const std::string database = checked_database(request.operands[0]);
    const MapSettings &map = request.map;
    NewFile file(request.output, request.force);
    QtPart drawing(where, {"map", file.written_path(), database, std::to_string(map.width),
                           std::to_string(map.height), number_text(map.ratio), number_text(map.latitude),
                           number_text(map.longitude), number_text(map.range),
                           map.legend ? "legend" : "no-legend", map.dark ? "dark" : "light"});
    drawing.finish();
    file.put_in_place();
}

} // namespace ovdb
