// Several search elements joined by AND or OR.
#pragma once

#include "search/ZRSearchElement.h"

/// All of its children, or any of them. It cannot be empty: `searchElementForConjunction` makes it.
///
/// Ownership, Threads, Errors: as ZRSearchElement.
class ZR_EXPORT ZRSearchElementConjunction final : public ZRSearchElement {
public:
    using Children = std::vector<platform::Ref<ZRSearchElement>>;

    const Children& _children() const { return _elements; }
    ZRSearchConjunction conjunction() const { return _conjunction; }
    /// A mark for rule editors: the children belong to one rule. It changes no answer.
    bool isRuleGrouping() const { return _ruleGrouping; }
    void setIsRuleGrouping(bool grouping) { _ruleGrouping = grouping; }

    using ZRSearchElement::_predicateForImplClass;
    bool nts_MatchesRecord(const ZRRecord& record) const override ZR_NTS;
    Predicate _predicateForImplClass(
        const objectstore::Entity& implClass, ZRManagedObjectContext& context) const override ZR_NTS;
    std::vector<std::string> prefetchingRelationshipKeyPathsForImplClass(
        const objectstore::Entity& implClass, ZRRoster& roster) const override ZR_NTS;
    std::vector<const ZRRecordClass*> searchRecordClasses() const override;
    bool searchPeople() const override;
    bool searchGroups() const override;
    bool searchSubscribed() const override;
    /// The earliest of the children's.
    platform::Value _withinDate() const override;
    std::vector<platform::Ref<ZRGroup>> groupsUsedInDefinition() const override;
    bool usesGroupInDefinition(const ZRGroup& group) const override;
    bool isReferencingGroup(const ZRGroup& group) const override;
    void setSearchValue(const platform::Value& value) override;
    std::string description() const override;

    /// The highest of the children's.
    std::int64_t encodingVersion() const override;
    std::string archiveClassName() const override { return "ZRSearchElementConjunction"; }
    void encodeWithCoder(platform::KeyedArchiver& coder) const override;
    static platform::Ref<ZRSearchElementConjunction> initWithCoder(platform::KeyedUnarchiver& coder);

private:
    friend class ZRSearchElement;
    template <class T, class... Arguments>
    friend platform::Ref<T> platform::makeRef(Arguments&&... arguments);

    ZRSearchElementConjunction(ZRSearchConjunction conjunction, Children children)
        : _conjunction(conjunction), _elements(std::move(children))
    {
    }
    ~ZRSearchElementConjunction() override = default;

    const ZRSearchConjunction _conjunction;
    const Children _elements;
    bool _ruleGrouping = false;
};
