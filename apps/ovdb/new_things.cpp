// ovdb create, nextid: new databases and new numbers.
#include "commands.h"
#include "library.h"
#include "long_work.h"

#include <orvane/db_create.h>

#include <cstdio>

namespace ovdb {

void run_create(const Request &request)
{
    const std::string &path = request.operands[0];
    if (request.schema.empty())
        throw Failure(ExitCode::Usage,
                      "create " + path + ": --schema NAME is missing, such as --schema css3.0");
    const int failed =
        dbcreate_database(path.c_str(), request.schema.c_str(), request.description.c_str(), nullptr);
    if (failed == dbERROR_ARGUMENT)
        throw Failure(ExitCode::Usage, taken_log());
    if (failed < 0)
        fail_with_log("create", "");
    pass_on_remarks();
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
