// dbexpr_check and the listing of the functions.
#include "door/guard.h"
#include "door/subject.h"
#include "expression/bound_expression.h"
#include "expression/function_table.h"
#include "expression/parsed_expression.h"
#include "operation/row_batch.h"

#include <cstring>
#include <optional>

using namespace orvane;

namespace {

Status look_up(const Dbptr &db, const Dbptr &other, Subject &table, std::optional<Subject> &second)
{
    if (Status found = find_subject(db, Level::Table, "dbexpr_check", table); !found.ok())
        return found;
    if (other.database == dbINVALID)
        return Status();
    second.emplace();
    if (Status found = find_subject(other, Level::Table, "dbexpr_check", *second); !found.ok())
        return found;
    if (db.database != other.database)
        return Status(Code::Argument, "dbexpr_check: the tables are of different databases");
    return Status();
}

// Parses and binds as the operations do; *error tells what is wrong and where.
Status bind_over(const Subject &table, const std::optional<Subject> &second, std::string_view text,
                 expr::ExpressionError &error)
{
    const auto parsed = expr::ParsedExpression::parse(text, &error);
    if (!parsed.ok())
        return parsed.status();
    if (second)
        return expr::BoundExpression::bind_condition(*parsed, TwoTableScope(*table.table, *second->table),
                                                     &error)
            .status();
    const int standing = table.pointer.field >= 0 ? static_cast<int>(table.pointer.field) : -1;
    return expr::BoundExpression::bind_condition(*parsed, scope_of(*table.table, standing), &error).status();
}

// Null when there is no memory.
char *copied(const std::string &text)
{
    auto *copy = static_cast<char *>(malloc(text.size() + 1));
    return copy ? static_cast<char *>(memcpy(copy, text.c_str(), text.size() + 1)) : nullptr;
}

} // namespace

int dbexpr_check(Dbptr db, Dbptr other, const char *expression, DbExpressionError *error)
{
    if (error)
        *error = DbExpressionError{};
    return guarded("dbexpr_check", [&] {
        Subject table;
        std::optional<Subject> second;
        if (Status found = look_up(db, other, table, second); !found.ok())
            return code_of(found);
        if (!expression || !error)
            return code_of(Status(Code::Argument, "dbexpr_check: an argument is null"));
        expr::ExpressionError wrong;
        const Status bound = bind_over(table, second, expression, wrong);
        if (bound.ok())
            return 0;
        error->offset = wrong.place.offset;
        error->length = wrong.place.length;
        error->reason = copied(wrong.reason);
        return static_cast<int>(bound.code());
    });
}

int dbexpr_function(int64_t index, DbFunction *function)
{
    const auto rows = expr::functions();
    const bool known = index >= 0 && index < static_cast<std::int64_t>(rows.size());
    if (!known || !function) {
        if (function)
            *function = DbFunction{};
        return dbERROR_NOT_FOUND;
    }
    // The texts of the table are literals, so a zero byte follows each.
    const expr::Function &row = rows[static_cast<std::size_t>(index)];
    *function = DbFunction{row.name.data(), row.signature.data(), row.group.data(), row.help.data()};
    return 0;
}
