// How a predicate looks as text.
#include "objectstore/PredicatePrinter.h"

#include <array>
#include <fmt/format.h>
#include <iterator>

namespace objectstore {

using platform::Value;

namespace {

constexpr std::array<std::string_view, 10> kOperators{
    "==", "!=", "<", "<=", ">", ">=", "IN", "BEGINSWITH", "CONTAINS", "ENDSWITH"};
constexpr std::array<std::string_view, 3> kOptions{"", "[c]", "[cd]"};

std::string quotation(std::string_view text)
{
    std::string result = "\"";
    for (const char character : text) {
        if (character == '"' || character == '\\')
            result.append({'\\', character});
        else if (static_cast<unsigned char>(character) < 0x20)
            fmt::format_to(std::back_inserter(result), "\\u{:04x}", character);
        else
            result += character;
    }
    return result + '"';
}

std::string literal(const Value& value)
{
    if (value.isNothing())
        return "null";
    if (value.isString())
        return quotation(value.asText());
    if (!value.isArray())
        return value.description();
    std::string list;
    for (const auto& element : value.asArray())
        list += (list.empty() ? "" : ", ") + literal(element);
    return "{" + list + "}";
}

std::string written(const PredicateOperand& operand)
{
    return operand.variable.empty() ? literal(operand.value) : "$" + operand.variable;
}

/// Prints one tree; inside a SUBQUERY each key path is one of the row.
class Printer {
public:
    explicit Printer(bool inRow) : _inRow(inRow) { }

    std::string operator()(const StorePredicate::Constant& constant) const
    {
        return constant.value ? "TRUE" : "FALSE";
    }

    std::string operator()(const StorePredicate::Comparison& test) const
    {
        std::string left = key(test.keyPath);
        if (test.mask)
            left = fmt::format("bitwiseAnd:with:({}, {})", left, *test.mask);
        if (test.isConstantFirst)
            return fmt::format("{} {} {}", written(test.operand),
                kOperators[static_cast<std::size_t>(turnedAround(test.comparator))], left);
        return fmt::format("{} {}{} {}", left, kOperators[static_cast<std::size_t>(test.comparator)],
            kOptions[static_cast<std::size_t>(test.option)], written(test.operand));
    }

    std::string operator()(const StorePredicate::Compound& compound) const
    {
        std::string text;
        for (const auto& part : compound.parts)
            text += (text.empty() ? "" : compound.isAll ? " AND " : " OR ") + bracketed(*part);
        return text;
    }

    std::string operator()(const StorePredicate::Negation& negation) const
    {
        return "NOT " + bracketed(*negation.part);
    }

    std::string operator()(const StorePredicate::RowTest& test) const
    {
        const bool some = test.wanted == Rows::some;
        if (!test.condition)
            return key(test.relationship) + (some ? ".@count > 0" : ".@count == 0");
        const Printer row(true);
        const bool joined = std::holds_alternative<StorePredicate::Compound>(test.condition->form());
        return fmt::format("0 {} SUBQUERY({}, $rmo, {}).@count", some ? "!=" : "==", key(test.relationship),
            joined ? std::visit(row, test.condition->form()) : row.bracketed(*test.condition));
    }

    std::string operator()(const StorePredicate::Membership& membership) const
    {
        return fmt::format("{} IN RECURSIVE({}, {}, {})", key(kSelf), written(membership.group),
            membership.members, membership.children);
    }

private:
    std::string bracketed(const StorePredicate& part) const
    {
        return "(" + std::visit(*this, part.form()) + ")";
    }

    std::string key(std::string_view keyPath) const
    {
        if (!_inRow)
            return std::string(keyPath);
        return keyPath == kSelf ? "$rmo" : fmt::format("$rmo.{}", keyPath);
    }

    bool _inRow;
};

} // namespace

std::string printed(const StorePredicate& predicate) { return std::visit(Printer(false), predicate.form()); }

} // namespace objectstore
