// Which comparison two types give. Text against a number is read as a number, against a time as the span of
// time that it names, against a yearday as a day; a time and a yearday are compared by the day.
#include <cmath>

#include "base/concat.h"
#include "expression/binder.h"
#include "expression/comparison_tests.h"
#include "expression/conversion_kernels.h"
#include "expression/written_span.h"

namespace orvane::expr {

namespace {

constexpr double exact_integers = 9007199254740992.0; // doubles hold all whole numbers up to here

bool is_constant_number(const BoundNode &node)
{
    return node.kind == BoundNode::Kind::Constant && is_number(node.type);
}

} // namespace

BoundNodePtr Binder::comparison(const ParsedNode &parsed, BoundNodePtr left, BoundNodePtr right)
{
    const bool left_text = left->type == ValueType::Text;
    const bool right_text = right->type == ValueType::Text;
    if (left_text && right_text)
        return make_.comparison(parsed.op, text_comparison(parsed.op), {std::move(left), std::move(right)},
                                parsed.extent);
    if (right_text)
        return comparison_with_text(parsed, parsed.op, std::move(left), std::move(right));
    if (left_text)
        return comparison_with_text(parsed, mirrored(parsed.op), std::move(right), std::move(left));
    return number_comparison(parsed, std::move(left), std::move(right));
}

BoundNodePtr Binder::number_comparison(const ParsedNode &parsed, BoundNodePtr left, BoundNodePtr right)
{
    Operator op = parsed.op;
    const auto turn = [&] {
        std::swap(left, right);
        op = mirrored(op);
    };
    if (left->type == ValueType::Yearday && right->type == ValueType::Time)
        turn();
    if (left->type == ValueType::Time && right->type == ValueType::Yearday) {
        const Place place = right->place;
        BoundNodePtr begin = make_.call(yearday_to_begin, ValueType::Time, {right}, place);
        BoundNodePtr end = make_.call(yearday_to_end, ValueType::Time, {right}, place);
        return make_.comparison(op, span_comparison(op), {std::move(left), std::move(begin), std::move(end)},
                                parsed.extent, true);
    }
    const bool left_integer = storage_of(left->type) == Storage::Integer;
    if (left_integer == (storage_of(right->type) == Storage::Integer)) {
        // Comparing with a constant is shortest where that stands on the right.
        if (is_constant_number(*left))
            turn();
        return make_.number_comparison(op, std::move(left), std::move(right), parsed.extent);
    }
    if (!left_integer)
        turn();
    // An integer and a real number. A constant takes the other's type where that changes nothing.
    if (is_constant_number(*left) && std::abs(static_cast<double>(left->constant.integer)) < exact_integers) {
        left = to_real(std::move(left));
        turn();
        return make_.number_comparison(op, std::move(left), std::move(right), parsed.extent);
    }
    if (is_constant_number(*right) && std::abs(right->constant.real) < exact_integers &&
        right->constant.real == std::trunc(right->constant.real) && right->constant.presence == Present) {
        BoundNodePtr whole = make_.integer(static_cast<std::int64_t>(right->constant.real), right->place);
        return make_.number_comparison(op, std::move(left), std::move(whole), parsed.extent);
    }
    return make_.comparison(op, mixed_comparison(op), {std::move(left), std::move(right)}, parsed.extent);
}

BoundNodePtr Binder::comparison_with_text(const ParsedNode &parsed, Operator op, BoundNodePtr number,
                                          BoundNodePtr text)
{
    if (number->type == ValueType::Time)
        return time_with_text(parsed, op, std::move(number), std::move(text));
    if (number->type == ValueType::Yearday)
        return yearday_with_text(parsed, op, std::move(number), std::move(text));
    if (is_constant_text(*text)) {
        text = read_as_number(*text, concat("expected a number, as ", shown(*number)));
    } else {
        const Place place = text->place;
        text = make_.call(text_to_real, ValueType::Real, {std::move(text)}, place);
    }
    if (!text)
        return nullptr;
    // The operator is the one that fits this order of the sides.
    ParsedNode turned;
    turned.op = op;
    turned.place = parsed.place;
    turned.extent = parsed.extent;
    return number_comparison(turned, std::move(number), std::move(text));
}

BoundNodePtr Binder::time_with_text(const ParsedNode &parsed, Operator op, BoundNodePtr time,
                                    BoundNodePtr text)
{
    const Place place = text->place;
    BoundNodePtr begin;
    BoundNodePtr end;
    if (is_constant_text(*text)) {
        const auto span = written_span(text->constant.text);
        begin = to_time(text); // says what is wrong where there is no span
        if (!span)
            return nullptr;
        end = make_.real(span->end, place, ValueType::Time);
    } else {
        begin = make_.call(text_to_time, ValueType::Time, {text}, place);
        end = make_.call(text_to_time_end, ValueType::Time, {text}, place);
    }
    return make_.comparison(op, span_comparison(op), {std::move(time), std::move(begin), std::move(end)},
                            parsed.extent);
}

BoundNodePtr Binder::yearday_with_text(const ParsedNode &parsed, Operator op, BoundNodePtr yearday,
                                       BoundNodePtr text)
{
    const Place place = text->place;
    BoundNodePtr day;
    if (is_constant_text(*text)) {
        const auto read = read_yearday(text->constant.text);
        if (!read)
            return fail(concat("expected a day, as '2018-02-07' or '2018038', as ", shown(*yearday), "; ",
                               quoted(text_.substr(place.offset, place.length)), " can't be read as one"),
                        place);
        day = make_.integer(*read, place, ValueType::Yearday);
    } else {
        day = make_.call(text_to_yearday, ValueType::Yearday, {text}, place);
    }
    return make_.number_comparison(op, std::move(yearday), std::move(day), parsed.extent);
}

} // namespace orvane::expr
