// How a predicate's tree is made and how its variables get their values.
#include "objectstore/StorePredicate.h"

#include "objectstore/PredicatePrinter.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <stdexcept>

namespace objectstore {

using platform::Value;

namespace {

using Values = std::vector<std::pair<std::string, Value>>;

/// The null marker and "not a number" are no values: nothing is equal to them.
Value withoutNothing(Value value)
{
    const bool isNothing = value.isNull() || (value.isReal() && std::isnan(value.asReal()));
    return isNothing ? Value() : std::move(value);
}

PredicateOperand checked(PredicateOperand operand, bool isList)
{
    operand.value = withoutNothing(std::move(operand.value));
    if (isList && operand.variable.empty() && !operand.value.isArray())
        throw std::invalid_argument("Predicate: IN needs a list, got " + operand.value.description());
    return operand;
}

/// The operand with its variable's value; absent when it is another variable, or none.
std::optional<PredicateOperand> bound(const PredicateOperand& operand, const Values& values, bool isList)
{
    const auto named = [&](const auto& entry) { return entry.first == operand.variable; };
    const auto found = std::find_if(values.begin(), values.end(), named);
    if (operand.variable.empty() || found == values.end())
        return std::nullopt;
    return checked(PredicateOperand(found->second), isList);
}

/// Null for a list that is short, or not compared exactly. The texts live as long as the list.
std::shared_ptr<const std::unordered_set<std::string_view>> textsOf(const Value& list, TextOption option)
{
    constexpr std::size_t isLong = 8;
    if (option != TextOption::exact || list.asArray().size() < isLong)
        return nullptr;
    auto texts = std::make_shared<std::unordered_set<std::string_view>>();
    for (const auto& element : list.asArray())
        if (element.isString())
            texts->insert(element.asText());
    return texts;
}

int deepest(const std::vector<PredicateRef>& parts)
{
    int depth = 0;
    for (const auto& part : parts)
        depth = std::max(depth, part->depth());
    return depth;
}

} // namespace

PredicateRef StorePredicate::make(Form form, int depthBelow)
{
    if (depthBelow >= kMaximumDepth)
        throw std::invalid_argument(fmt::format("Predicate: deeper than {}", kMaximumDepth));
    return platform::makeRef<StorePredicate>(std::move(form), depthBelow + 1);
}

PredicateRef StorePredicate::always() { return make(Constant{true}, 0); }

PredicateRef StorePredicate::never() { return make(Constant{false}, 0); }

PredicateRef StorePredicate::compare(
    std::string_view keyPath, Comparator comparator, PredicateOperand operand, TextOption option)
{
    auto value = checked(std::move(operand), comparator == Comparator::in);
    auto texts = comparator == Comparator::in ? textsOf(value.value, option) : nullptr;
    return make(Comparison{std::string(keyPath), comparator, option, std::move(value), std::nullopt,
                    std::move(texts)},
        0);
}

PredicateRef StorePredicate::compareConstant(
    PredicateOperand operand, Comparator comparator, std::string_view keyPath)
{
    return make(Comparison{.keyPath = std::string(keyPath),
                    .comparator = turnedAround(comparator),
                    .option = TextOption::exact,
                    .operand = checked(std::move(operand), false),
                    .mask = std::nullopt,
                    .isConstantFirst = true},
        0);
}

PredicateRef StorePredicate::isAbsent(std::string_view keyPath)
{
    return compare(keyPath, Comparator::equal, Value());
}

PredicateRef StorePredicate::isPresent(std::string_view keyPath)
{
    return compare(keyPath, Comparator::notEqual, Value());
}

PredicateRef StorePredicate::isObject(PredicateOperand object)
{
    return compare(kSelf, Comparator::equal, std::move(object));
}

PredicateRef StorePredicate::isOneOf(PredicateOperand objects)
{
    return compare(kSelf, Comparator::in, std::move(objects));
}

PredicateRef StorePredicate::compareBits(
    std::string_view keyPath, std::int64_t mask, Comparator comparator, PredicateOperand number)
{
    auto value = checked(std::move(number), comparator == Comparator::in);
    return make(Comparison{std::string(keyPath), comparator, TextOption::exact, std::move(value), mask}, 0);
}

PredicateRef StorePredicate::compound(bool isAll, std::vector<PredicateRef> parts)
{
    if (parts.size() == 1)
        return parts.front();
    if (parts.empty())
        return isAll ? always() : never();
    const int depth = deepest(parts);
    return make(Compound{isAll, std::move(parts)}, depth);
}

PredicateRef StorePredicate::all(std::vector<PredicateRef> parts) { return compound(true, std::move(parts)); }

PredicateRef StorePredicate::any(std::vector<PredicateRef> parts)
{
    return compound(false, std::move(parts));
}

PredicateRef StorePredicate::negation(PredicateRef part)
{
    const int depth = part->depth();
    return make(Negation{std::move(part)}, depth);
}

PredicateRef StorePredicate::rows(std::string_view relationship, Rows wanted, PredicateRef condition)
{
    const int depth = condition->depth();
    return make(RowTest{std::string(relationship), wanted, std::move(condition)}, depth);
}

PredicateRef StorePredicate::rows(std::string_view relationship, Rows wanted)
{
    return make(RowTest{std::string(relationship), wanted, nullptr}, 0);
}

PredicateRef StorePredicate::memberOfGroupOrBelow(
    PredicateOperand group, std::string_view members, std::string_view children)
{
    return make(Membership{checked(std::move(group), false), std::string(members), std::string(children)}, 0);
}

namespace {

/// Rebuilds a tree around the variables that get a value; a part without any is shared.
struct Substitution {
    const StorePredicate& original;
    const Values& values;

    PredicateRef same() const { return PredicateRef(&original); }
    PredicateRef operator()(const StorePredicate::Constant&) const { return same(); }

    PredicateRef operator()(const StorePredicate::Comparison& test) const
    {
        auto operand = bound(test.operand, values, test.comparator == Comparator::in);
        if (!operand)
            return same();
        if (test.mask)
            return StorePredicate::compareBits(
                test.keyPath, *test.mask, test.comparator, std::move(*operand));
        if (test.isConstantFirst)
            return StorePredicate::compareConstant(
                std::move(*operand), turnedAround(test.comparator), test.keyPath);
        return StorePredicate::compare(test.keyPath, test.comparator, std::move(*operand), test.option);
    }

    PredicateRef operator()(const StorePredicate::Compound& compound) const
    {
        std::vector<PredicateRef> parts;
        for (const auto& part : compound.parts)
            parts.push_back(part->substituting(values));
        if (parts == compound.parts)
            return same();
        return compound.isAll ? StorePredicate::all(std::move(parts)) : StorePredicate::any(std::move(parts));
    }

    PredicateRef operator()(const StorePredicate::Negation& negation) const
    {
        auto part = negation.part->substituting(values);
        return part == negation.part ? same() : StorePredicate::negation(std::move(part));
    }

    PredicateRef operator()(const StorePredicate::RowTest& test) const
    {
        auto condition = test.condition ? test.condition->substituting(values) : nullptr;
        if (condition == test.condition)
            return same();
        return StorePredicate::rows(test.relationship, test.wanted, std::move(condition));
    }

    PredicateRef operator()(const StorePredicate::Membership& membership) const
    {
        auto group = bound(membership.group, values, false);
        if (!group)
            return same();
        return StorePredicate::memberOfGroupOrBelow(
            std::move(*group), membership.members, membership.children);
    }
};

} // namespace

PredicateRef StorePredicate::substituting(const Values& values) const
{
    return std::visit(Substitution{*this, values}, _form);
}

std::string StorePredicate::description() const { return printed(*this); }

} // namespace objectstore
