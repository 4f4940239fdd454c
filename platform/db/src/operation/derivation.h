// The frame of every operation that makes a view: its name is checked first, it runs again where a table
// changed under it, and only what is whole gets into the database.
#pragma once

#include "catalog/database.h"
#include "operation/operand.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

// Marks a database as running an operation for as long as it lives: only one runs at a time, also when the
// progress hook calls the library.
class OperationGuard
{
public:
    explicit OperationGuard(Database &database);
    ~OperationGuard();
    OperationGuard(const OperationGuard &) = delete;
    OperationGuard &operator=(const OperationGuard &) = delete;

    // A failure when another operation was running already.
    const Status &status() const { return status_; }

private:
    Database &database_;
    Status status_;
};

class Derivation
{
public:
    // `call` names the operation. An empty view name stands for a telling one.
    Derivation(Database &database, const char *call, std::string_view view_name)
        : database_(database), work_(call), name_(view_name)
    {
    }

    Database &database() { return database_; }
    Work &work() { return work_; }
    const char *call() const { return work_.call(); }
    // The name that the view is going to have. `operation` is the word in a telling one: "arrival_sort1".
    std::string name_for(const Table &left, const Table *right, std::string_view operation) const;

    // An operand for a table, looked at. Why it looks empty where it is refused is kept for the log.
    Result<Operand> operand(const std::shared_ptr<Table> &table);

    // Makes the view and answers its index. `make` is called again when a table changed while it was read. A
    // failure's message begins with the call.
    Result<std::int64_t> run(const std::function<Result<std::shared_ptr<Table>>()> &make);

    // What is to be said in the log although the operation succeeded.
    const std::vector<Status> &remarks() const { return remarks_; }

private:
    Result<std::shared_ptr<Table>>
    make_repeatedly(const std::function<Result<std::shared_ptr<Table>>()> &make);

    Database &database_;
    Work work_;
    std::string name_;
    std::vector<Status> remarks_;
};

// The creation text of what an operation makes of a table, or of two: the lines of each, then the operation's
// own.
std::string creation_after(const Table &left, const Table *right, std::string_view operation_line);

// A failure with the call before its message, unless that begins with it.
Status named_failure(const char *call, const Status &failure);

} // namespace orvane
