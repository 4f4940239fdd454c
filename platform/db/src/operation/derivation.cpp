#include "operation/derivation.h"

#include "base/concat.h"

namespace orvane {

namespace {

constexpr int max_attempts = 4;             // at tables that keep changing while they are read
constexpr std::size_t max_named_tables = 4; // in a telling name
constexpr std::size_t max_stem_bytes = 200; // leaves room in a name for the operation and a number

std::string member_names(const Table &table)
{
    std::string names;
    const auto &members = table.members();
    for (std::size_t i = 0; i < members.size() && i < max_named_tables; ++i)
        names.append(i > 0 ? "_" : "").append(members[i]->name);
    return names;
}

// A grouped view lends its name to views of it, however long that is.
std::string shortened(std::string stem)
{
    if (stem.size() <= max_stem_bytes)
        return stem;
    std::size_t end = max_stem_bytes;
    while (end > 0 && (static_cast<unsigned char>(stem[end]) & 0xc0) == 0x80) // within a character
        --end;
    stem.resize(end);
    return stem;
}

// A line of the creation text stays one.
std::string on_one_line(std::string_view text)
{
    std::string line(text);
    for (char &c : line)
        if (c == '\n' || c == '\r')
            c = ' ';
    return line;
}

} // namespace

OperationGuard::OperationGuard(Database &database) : database_(database)
{
    if (database_.operation_running)
        status_ = Status(Code::Argument, "another operation is running; wait until it is done");
    database_.operation_running = true;
}

OperationGuard::~OperationGuard()
{
    if (status_.ok())
        database_.operation_running = false;
}

std::string Derivation::name_for(const Table &left, const Table *right, std::string_view operation) const
{
    if (!name_.empty())
        return name_;
    std::string stem = member_names(left);
    if (right)
        stem.append("_").append(member_names(*right));
    stem = shortened(std::move(stem));
    for (int number = 1;; ++number) {
        std::string name = concat(stem, '_', operation, number);
        if (database_.check_view_name(name).ok())
            return name;
    }
}

Result<Operand> Derivation::operand(const std::shared_ptr<Table> &table)
{
    Operand operand(table);
    if (Status looked = operand.look(work_.snapshots()); !looked.ok())
        return looked;
    for (const Status &remark : operand.remarks())
        remarks_.push_back(remark);
    return operand;
}

Result<std::shared_ptr<Table>>
Derivation::make_repeatedly(const std::function<Result<std::shared_ptr<Table>>()> &make)
{
    for (int attempt = 1;; ++attempt) {
        remarks_.clear();
        auto made = make();
        const bool changed = work_.take_change();
        if (made.ok() || !changed || attempt == max_attempts)
            return made;
    }
}

Result<std::int64_t> Derivation::run(const std::function<Result<std::shared_ptr<Table>>()> &make)
{
    const OperationGuard running(database_);
    if (!running.status().ok())
        return named_failure(call(), running.status());
    if (!name_.empty())
        if (Status named = database_.check_view_name(name_); !named.ok())
            return named_failure(call(), named);
    auto made = make_repeatedly(make);
    if (!made.ok())
        return named_failure(call(), made.status());
    return database_.add_view(std::move(*made));
}

std::string creation_after(const Table &left, const Table *right, std::string_view operation_line)
{
    std::string text = left.creation();
    if (right)
        text.append("\n").append(right->creation());
    return text.append("\n").append(on_one_line(operation_line));
}

Status named_failure(const char *call, const Status &failure)
{
    const std::string start = concat(call, ": ");
    if (failure.ok() || failure.message().starts_with(start))
        return failure;
    return Status(failure.code(), start + std::string(failure.message()));
}

} // namespace orvane
