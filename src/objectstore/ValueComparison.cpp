// When does one value stand in a relation to another? The one answer for memory and SQL.
#include "objectstore/ValueComparison.h"

#include "platform/text/Fold.h"

#include <cmath>
#include <compare>

namespace objectstore {

using platform::Value;

namespace {

bool ordered(std::partial_ordering order, Comparator comparator)
{
    switch (comparator) {
    case Comparator::equal:
        return order == 0;
    case Comparator::notEqual:
        return order != 0;
    case Comparator::less:
        return order < 0;
    case Comparator::lessOrEqual:
        return order <= 0;
    case Comparator::greater:
        return order > 0;
    case Comparator::greaterOrEqual:
        return order >= 0;
    default:
        return false;
    }
}

std::partial_ordering exactOrder(double left, std::int64_t right)
{
    constexpr double beyond = 9223372036854775808.0; // 2^63: the first amount that no whole number reaches
    if (left >= beyond)
        return std::partial_ordering::greater;
    if (left < -beyond)
        return std::partial_ordering::less;
    if (std::isnan(left))
        return std::partial_ordering::unordered;
    const auto whole = static_cast<std::int64_t>(left);
    return whole != right ? whole <=> right : left - static_cast<double>(whole) <=> 0.0;
}

std::partial_ordering orderOfNumbers(const Value& left, const Value& right)
{
    if (left.isWideUnsigned() || right.isWideUnsigned())
        return left.isWideUnsigned() && right.isWideUnsigned()
            ? static_cast<std::uint64_t>(left.asInteger()) <=> static_cast<std::uint64_t>(right.asInteger())
            : left.asReal() <=> right.asReal();
    if (left.isReal() && right.isReal())
        return left.asReal() <=> right.asReal();
    if (left.isReal())
        return exactOrder(left.asReal(), right.asInteger());
    if (right.isReal())
        return 0 <=> exactOrder(right.asReal(), left.asInteger());
    return left.asInteger() <=> right.asInteger();
}

bool areEqual(const Value& left, const Value& right)
{
    const auto* a = left.as<const StoreObject>();
    const auto* b = right.as<const StoreObject>();
    return a && b ? isSameObject(*a, *b) : left == right;
}

/// Of two present values of one kind.
std::partial_ordering order(const Value& left, const Value& right, ComparisonKind kind)
{
    switch (kind) {
    case ComparisonKind::number:
        return orderOfNumbers(left, right);
    case ComparisonKind::date:
        return left.asDate() <=> right.asDate();
    case ComparisonKind::data:
        return left.asBytes().compare(right.asBytes()) <=> 0;
    default:
        return areEqual(left, right) ? std::partial_ordering::equivalent : std::partial_ordering::unordered;
    }
}

} // namespace

ComparisonKind comparisonKind(const Value& value)
{
    if (value.isNumber())
        return std::isnan(value.asReal()) ? ComparisonKind::none : ComparisonKind::number;
    switch (value.kind()) {
    case Value::Kind::string:
        return ComparisonKind::text;
    case Value::Kind::date:
        return std::isnan(value.asDate().seconds) ? ComparisonKind::none : ComparisonKind::date;
    case Value::Kind::data:
        return ComparisonKind::data;
    case Value::Kind::object:
        return ComparisonKind::object;
    case Value::Kind::array:
    case Value::Kind::dictionary:
        return ComparisonKind::container;
    default:
        return ComparisonKind::none;
    }
}

std::string folded(std::string_view text, TextOption option)
{
    switch (option) {
    case TextOption::ignoringCase:
        return platform::foldCase(text);
    case TextOption::ignoringCaseAndDiacritics:
        return platform::foldCaseAndDiacritics(text);
    default:
        return std::string(text);
    }
}

bool comparesText(
    std::string_view left, Comparator comparator, std::string_view foldedRight, TextOption option)
{
    if (option != TextOption::exact)
        return comparesText(folded(left, option), comparator, foldedRight, TextOption::exact);
    switch (comparator) {
    case Comparator::beginsWith:
        return left.starts_with(foldedRight);
    case Comparator::contains:
        return left.find(foldedRight) != std::string_view::npos;
    case Comparator::endsWith:
        return left.ends_with(foldedRight);
    default:
        return ordered(left.compare(foldedRight) <=> 0, comparator);
    }
}

bool isSameObject(const StoreObject& a, const StoreObject& b)
{
    const auto id = a.storeId();
    return &a == &b || (id && !id.isTemporary() && id == b.storeId());
}

bool compares(const Value& left, Comparator comparator, const Value& right, TextOption option)
{
    if (comparator == Comparator::in) {
        for (const auto& element : right.asArray())
            if (compares(left, Comparator::equal, element, option))
                return true;
        return false;
    }
    const auto kind = comparisonKind(left);
    const auto other = comparisonKind(right);
    if (kind == ComparisonKind::none || other == ComparisonKind::none)
        return false;
    if (kind != other)
        return comparator == Comparator::notEqual;
    if (kind == ComparisonKind::text)
        return comparesText(left.asText(), comparator, folded(right.asText(), option), option);
    return ordered(order(left, right, kind), comparator);
}

} // namespace objectstore
