// What is asked of a stored object: the tree of a condition, and how it is made.
#pragma once

#include "platform/value/Object.h"
#include "platform/value/Value.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <variant>
#include <vector>

namespace objectstore {

class StorePredicate;
using PredicateRef = platform::Ref<const StorePredicate>;

/// The key path of the object itself.
inline constexpr std::string_view kSelf = "self";

/// How a comparison treats two texts. On anything but text it changes nothing.
enum class TextOption : std::uint8_t { exact, ignoringCase, ignoringCaseAndDiacritics };

enum class Comparator : std::uint8_t {
    equal,
    notEqual,
    less,
    lessOrEqual,
    greater,
    greaterOrEqual,
    in,
    beginsWith,
    contains,
    endsWith
};

/// The comparator with its sides exchanged; one that is no ordering stays.
constexpr Comparator turnedAround(Comparator comparator)
{
    switch (comparator) {
    case Comparator::less:
        return Comparator::greater;
    case Comparator::lessOrEqual:
        return Comparator::greaterOrEqual;
    case Comparator::greater:
        return Comparator::less;
    case Comparator::greaterOrEqual:
        return Comparator::lessOrEqual;
    default:
        return comparator;
    }
}

/// Whether a test on the rows of a to-many relationship wants some of them or none.
enum class Rows : std::uint8_t { some, none };

/// What a key is compared with: a constant, or a `$variable` that gets its value later.
struct PredicateOperand {
    platform::Value value;
    std::string variable;

    template <class T>
    requires std::constructible_from<platform::Value, T> PredicateOperand(T constant)
        : value(std::move(constant))
    {
    }
    static PredicateOperand named(std::string_view variable)
    {
        PredicateOperand operand{platform::Value()};
        operand.variable = variable;
        return operand;
    }
};

/// One condition on an object of the store: immutable, printable, answered by SQL or in memory.
///
/// It is not text that is parsed, and it knows no entity: the same tree is asked of any entity that has its
/// keys. `printed` shows it, `translate` makes SQL of it, `matches` asks it of one object; the last two give
/// the same answer for every predicate and object:
///
/// - A key path is attributes and to-one relationships joined by dots; "self" is the object. A path through
/// an
///   absent relationship is absent, and so is the null marker.
/// - A comparison with an absent value, on either side, is false; of the values themselves. Only `== null`
/// and
///   `!= null` ask for absence. So `key != "x"` is false for an absent key, and `NOT (key == "x")` true.
/// - Every condition is true or false; NOT turns one into the other.
/// - Texts are compared as bytes of UTF-8, `<` and `>` too; with an option both sides are folded first. The
///   empty text begins, ends and is contained in every present text.
/// - Values of different kinds (text, number, date, data, object) are neither equal nor ordered: `!=` is true
///   of them when both are present. Booleans, whole and floating numbers are one kind and compare by amount.
/// - Objects are equal when they stand for one row of one store.
///
/// Ownership: shared by reference; shares ownership of its parts and constants.
/// Threads:   never changes; any thread may read it.
/// Errors:    a key that the entity lacks, and a variable without a value, are the caller's mistake: asking
///            throws std::invalid_argument. A tree deeper than `kMaximumDepth` is refused the same way.
class StorePredicate final : public platform::Object {
public:
    /// How deep a tree may be, so that walking it never exhausts a stack.
    static constexpr int kMaximumDepth = 1000;

    struct Constant {
        bool value;
    };
    /// `key OP operand`, or `bitwiseAnd:with:(key, mask) OP operand`.
    struct Comparison {
        std::string keyPath;
        Comparator comparator;
        TextOption option;
        PredicateOperand operand;
        std::optional<std::int64_t> mask;
        /// The texts of a long list that is compared exactly, so that thousands of ids are found at once.
        std::shared_ptr<const std::unordered_set<std::string_view>> texts = nullptr;
        /// Written `operand OP key`, with the comparator turned around.
        bool isConstantFirst = false;
    };
    struct Compound {
        bool isAll;
        std::vector<PredicateRef> parts;
    };
    struct Negation {
        PredicateRef part;
    };
    /// `SUBQUERY(relationship, $rmo, condition).@count`, or `relationship.@count` without a condition.
    struct RowTest {
        std::string relationship;
        Rows wanted;
        PredicateRef condition;
    };
    /// Whether the object is in `members` of the operand's group, or of any group below it by `children`.
    struct Membership {
        PredicateOperand group;
        std::string members;
        std::string children;
    };
    using Form = std::variant<Constant, Comparison, Compound, Negation, RowTest, Membership>;

    static PredicateRef always();
    static PredicateRef never();

    /// `keyPath OP operand`. With Comparator::in the operand is an array; of absent elements none is found.
    static PredicateRef compare(std::string_view keyPath, Comparator comparator, PredicateOperand operand,
        TextOption option = TextOption::exact);
    /// `operand OP keyPath` of an ordering: the same test as the other way around, as ranges are written.
    static PredicateRef compareConstant(
        PredicateOperand operand, Comparator comparator, std::string_view keyPath);
    static PredicateRef isAbsent(std::string_view keyPath);
    static PredicateRef isPresent(std::string_view keyPath);
    /// `self == object` and `self IN objects`.
    static PredicateRef isObject(PredicateOperand object);
    static PredicateRef isOneOf(PredicateOperand objects);
    /// `bitwiseAnd:with:(keyPath, mask) OP number`; an absent key, or one that is no number, is false.
    static PredicateRef compareBits(
        std::string_view keyPath, std::int64_t mask, Comparator comparator, PredicateOperand number);

    /// Without parts, `all` is true and `any` is false; of one part, that part.
    static PredicateRef all(std::vector<PredicateRef> parts);
    static PredicateRef any(std::vector<PredicateRef> parts);
    static PredicateRef negation(PredicateRef part);

    /// Whether a to-many relationship has some row, or none, that fulfils a condition on the row's own keys.
    static PredicateRef rows(std::string_view relationship, Rows wanted, PredicateRef condition);
    /// The same of all its rows: `relationship.@count > 0`, `relationship.@count == 0`.
    static PredicateRef rows(std::string_view relationship, Rows wanted);

    /// Member of the group or of any group below it. `members` and `children` are to-many relationships of
    /// the group with inverses; a group that is reached twice, or contains itself, does no harm.
    static PredicateRef memberOfGroupOrBelow(
        PredicateOperand group, std::string_view members, std::string_view children);

    /// The same tree with values in the place of those variables; others stay.
    PredicateRef substituting(const std::vector<std::pair<std::string, platform::Value>>& values) const;

    const Form& form() const { return _form; }
    /// 1 for a leaf.
    int depth() const { return _depth; }
    /// As `printed`.
    std::string description() const override;

private:
    template <class T, class... Arguments>
    friend platform::Ref<T> platform::makeRef(Arguments&&... arguments);

    StorePredicate(Form form, int depth) : _form(std::move(form)), _depth(depth) { }
    ~StorePredicate() override = default;
    static PredicateRef make(Form form, int depthBelow);
    static PredicateRef compound(bool isAll, std::vector<PredicateRef> parts);

    const Form _form;
    const int _depth;
};

} // namespace objectstore
