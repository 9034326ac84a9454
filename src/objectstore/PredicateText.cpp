// What does a text test say about the trigram index, before any row is read?
#include "objectstore/PredicateText.h"

#include "objectstore/PredicateKeys.h"
#include "objectstore/PredicateLiterals.h"
#include "platform/text/Fold.h"
#include "platform/text/Utf.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

namespace objectstore {

namespace {

/// Of an OR with more different parts than this, a scan is as good.
constexpr std::size_t kMostAlternatives = 8;

bool isPositive(Comparator comparator)
{
    return comparator == Comparator::equal || comparator >= Comparator::beginsWith;
}

bool isTextIndex(const Slot& slot) { return slot.entity->textIndex() == &slot; }

/// Looks through the tests that must all be true.
class DriverSearch {
public:
    DriverSearch(const Entity& entry, const std::function<bool()>& hasEveryEntry)
        : _entry(entry), _hasEveryEntry(hasEveryEntry)
    {
    }

    void add(const StorePredicate& predicate, const Entity& entity)
    {
        std::visit([&](const auto& form) { add(form, entity); }, predicate.form());
    }

    TextDriver found;

private:
    void add(const StorePredicate::Constant&, const Entity&) { }
    void add(const StorePredicate::Negation&, const Entity&) { }
    void add(const StorePredicate::Membership&, const Entity&) { }

    void add(const StorePredicate::Compound& compound, const Entity& entity)
    {
        if (!compound.isAll && compound.parts.size() > 1)
            return addAny(compound, entity);
        for (const auto& part : compound.parts)
            add(*part, entity);
    }

    /// What fulfils one of the parts has what that part asks for: so each must ask for something.
    void addAny(const StorePredicate::Compound& compound, const Entity& entity)
    {
        std::vector<std::string> queries;
        for (const auto& part : compound.parts) {
            DriverSearch search(_entry, _hasEveryEntry);
            search._isInPart = _isInPart;
            search.add(*part, entity);
            if (search.found.query.empty() || queries.size() == kMostAlternatives)
                return;
            if (std::ranges::find(queries, search.found.query) == queries.end())
                queries.push_back(std::move(search.found.query));
        }
        std::string any;
        for (const auto& query : queries)
            any += fmt::format("{}({})", any.empty() ? "" : " OR ", query);
        addQuery("(" + any + ")");
    }

    void addQuery(const std::string& query) { found.query += (found.query.empty() ? "" : " AND ") + query; }

    void add(const StorePredicate::RowTest& test, const Entity& entity)
    {
        const Slot& slot = toManySlot(entity, test.relationship);
        if (test.wanted == Rows::some && test.condition && leadsToParts(slot) && !_isInPart) {
            _isInPart = true;
            add(*test.condition, *slot.destination);
            _isInPart = false;
        }
    }

    void add(const StorePredicate::Comparison& test, const Entity& entity)
    {
        const auto [key, rest] = SplitPath(test.keyPath);
        if (key == kSelf)
            return;
        const Slot& first = predicateSlot(entity, key);
        if (rest.empty())
            return addLeaf(test, first, _isInPart);
        if (!_isInPart && leadsToParts(first) && rest.find('.') == std::string_view::npos)
            addLeaf(test, lastSlot(*first.destination, rest), true);
    }

    void addLeaf(const StorePredicate::Comparison& test, const Slot& slot, bool isInPart)
    {
        const bool isEntry = isInPart && slot.entity == &_entry && isTextIndex(slot);
        const auto trigrams = necessaryTrigrams(test, test.comparator, slot);
        if (trigrams && (isEntry || _hasEveryEntry()))
            addQuery(*trigrams);
        else if (!trigrams && isEntry && !_isInPart && isWalkable(test))
            found.walked = &test;
    }

    bool isWalkable(const StorePredicate::Comparison& test) const
    {
        return _entry.family()->entities.size() == 1 && test.comparator == Comparator::contains
            && test.option == TextOption::exact && test.operand.variable.empty()
            && test.operand.value.isString() && !test.operand.value.asText().empty();
    }

    const Entity& _entry;
    const std::function<bool()>& _hasEveryEntry;
    bool _isInPart = false;
};

} // namespace

std::optional<std::string> necessaryTrigrams(
    const StorePredicate::Comparison& test, Comparator comparator, const Slot& slot)
{
    const bool isRaw = isTextIndex(slot) && test.option == TextOption::exact;
    if (!isRaw && (slot.flags & kFeedsTextIndex) == 0)
        return std::nullopt;
    if (!isPositive(comparator) || test.mask || !test.operand.value.isString())
        return std::nullopt;
    const std::string_view wanted = test.operand.value.asText();
    // Bytes that are no text can be found in the middle of a character, where folds know nothing of them.
    if (test.option == TextOption::exact && !platform::isValidUTF8(wanted))
        return std::nullopt;
    std::string part = isRaw ? std::string(wanted) : platform::foldCaseAndDiacritics(wanted);
    std::ranges::replace(part, '\0', kIndexedForNul);
    if (characterCount(part) < kTrigram)
        return std::nullopt;
    return trigramQuery(part);
}

bool isWholeTrigram(const StorePredicate::Comparison& test, Comparator comparator, const Slot& slot)
{
    if (!isTextIndex(slot) || test.option != TextOption::exact || comparator != Comparator::contains)
        return false;
    const std::string_view wanted = test.operand.value.asText();
    return wanted.size() == kTrigram
        && std::ranges::all_of(wanted, [](char c) { return c > kIndexedForNul && c < '\x7f'; });
}

std::optional<TextDriver> textDriver(
    const StorePredicate& predicate, const Entity& entity, const std::function<bool()>& hasEveryEntry)
{
    if (!entity.textEntry() || entity.families().size() != 1)
        return std::nullopt;
    DriverSearch search(*entity.textEntry(), hasEveryEntry);
    search.add(predicate, entity);
    TextDriver driver = std::move(search.found);
    driver.entry = entity.textEntry();
    if (!driver.query.empty())
        driver.walked = nullptr;
    return driver.walked || !driver.query.empty() ? std::optional(std::move(driver)) : std::nullopt;
}

bool leadsToParts(const Slot& slot)
{
    if (slot.kind != SlotKind::toOneInverse && slot.kind != SlotKind::toMany)
        return false;
    const Slot* owner = slot.destination->owner();
    return owner && slot.inverse->column == owner->column;
}

} // namespace objectstore
