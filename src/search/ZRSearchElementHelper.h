// How a search reads as the rows of a rule editor.
#pragma once

#include "search/ZRSearchElement.h"

#include <optional>
#include <string>
#include <vector>

/// One row of a rule editor: "name contains Ana".
struct ZRSearchRule {
    /// A rule that goes through several properties, such as a name, has the first of them here.
    std::string property;
    std::optional<std::string> label;
    std::optional<std::string> key;
    platform::Value value;
    ZRSearchComparison comparison = kZREqual;
};

/// What takes the rows of a search: a rule editor, or the text of one.
///
/// `order` is the place among those of the same list, `level` the number of lists around it.
///
/// Ownership: borrowed for the call that fills it.
/// Threads:   the caller's.
/// Errors:    what it throws ends the call.
class ZR_EXPORT ZRSearchRuleBuilder {
public:
    virtual ~ZRSearchRuleBuilder() = default;

    virtual void addRule(const ZRSearchRule& rule, std::int64_t order, std::int64_t level) = 0;
    /// What is added from here to the matching `endList` is joined by AND or OR.
    virtual void beginList(ZRSearchConjunction conjunction, std::int64_t order, std::int64_t level) = 0;
    virtual void endList(std::int64_t order, std::int64_t level) = 0;
};

enum class ZRDateUnit { days, weeks, months, years };

/// An interval as people say it: "3 weeks".
struct ZRDateSpan {
    ZRDateUnit unit = ZRDateUnit::days;
    double count = 0;
};

/// Reads the searches of smart groups for a rule editor, which shows one row where a search may need a whole
/// conjunction: a name is looked for in several properties.
///
/// It edits nothing: an editor makes new elements.
///
/// Ownership: none; class-level operations.
/// Threads:   any.
/// Errors:    none; what cannot be read as asked is absent.
class ZR_EXPORT ZRSearchElementHelper {
public:
    ZRSearchElementHelper() = delete;

    /// The properties that a search for a name goes through, in this order.
    static const std::vector<std::string>& nameProperties();
    /// The keys that a search for an address goes through.
    static const std::vector<std::string>& AddressKeys();
    /// The properties that a search for an instant-messaging address goes through.
    static const std::vector<std::string>& IMProperties();

    /// The properties of the comparisons among `elements`; whole-card searches and conjunctions have none.
    static std::vector<std::string> propertiesOfSearchElements(
        const std::vector<platform::Ref<ZRSearchElement>>& elements);

    /// What a conjunction over the name properties looks for, and how. Of a conjunction of such ones it is
    /// their texts joined by a blank, and the comparison of the last. Absent when there is no name in it; the
    /// comparison is unchanged then.
    static platform::Value nameValueForConjoinedSearchElement(
        const ZRSearchElement& element, ZRSearchComparison& comparison);

    /// The element as one row: a comparison, or a conjunction that asks the same of all name properties, all
    /// instant-messaging properties or all keys of an address. A conjunction of several names is a row below
    /// the first level or when marked as a rule grouping; else it is a list of rows. Absent for a list.
    static std::optional<ZRSearchRule> isSingleSearchElement(
        const ZRSearchElement& element, std::int64_t level);

    /// Hands all rows and lists of the element to `builder`, in their order.
    static void buildRepresentationFromSearchElement(const ZRSearchElement& element,
        ZRSearchRuleBuilder& builder, std::int64_t order = 0, std::int64_t level = 0);

    /// The largest unit in which `seconds` is nearly a whole number; else days, with their fraction. Years,
    /// months (of 31 days) and weeks count a second more than those of the calendar, so that what an editor
    /// stores comes back as it was entered.
    static ZRDateSpan calculateBestDateType(double seconds);
};
