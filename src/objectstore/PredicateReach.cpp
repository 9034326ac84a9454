// Whose unsaved changes can alter an answer, beside those of the object that is asked?
#include "objectstore/PredicateKeys.h"
#include "objectstore/PredicateSQL.h"
#include "objectstore/StoreObject.h"

#include <algorithm>
#include <utility>

namespace objectstore {

namespace {

/// Collects what stands behind relationships that lead out of the object.
class Reach {
public:
    void add(const StorePredicate& predicate, const Entity& entity)
    {
        std::visit([&](const auto& form) { add(form, entity); }, predicate.form());
    }

    std::vector<const Entity*> entities;

private:
    void add(const StorePredicate::Constant&, const Entity&) { }
    void add(const StorePredicate::Negation& negation, const Entity& entity) { add(*negation.part, entity); }
    void add(const StorePredicate::Compound& compound, const Entity& entity)
    {
        for (const auto& part : compound.parts)
            add(*part, entity);
    }
    void add(const StorePredicate::RowTest& test, const Entity& entity)
    {
        const Slot& slot = toManySlot(entity, test.relationship);
        if (test.condition)
            across(slot, [&] { add(*test.condition, *slot.destination); });
    }
    void add(const StorePredicate::Membership& membership, const Entity&)
    {
        if (const auto* group = constant(membership.group).as<const StoreObject>())
            note(*twoWaySlot(group->entity(), membership.children).entity);
    }
    void add(const StorePredicate::Comparison& test, const Entity& entity) { follow(test.keyPath, entity); }

    void follow(std::string_view path, const Entity& entity)
    {
        const auto [key, rest] = SplitPath(path);
        if (rest.empty())
            return;
        if (key == kSelf)
            return follow(rest, entity);
        const Slot& slot = toOneSlot(entity, key);
        across(slot, [&, rest = rest] { follow(rest, *slot.destination); });
    }

    /// A change of a part counts as one of the object that is asked, so that object's own parts need no note.
    template <class Inner>
    void across(const Slot& slot, Inner inner)
    {
        const Slot* owner = slot.destination->owner();
        const bool isPart = owner && slot.inverse && slot.inverse->column == owner->column;
        if (_isAway || !isPart)
            note(*slot.destination);
        const bool before = std::exchange(_isAway, true);
        inner();
        _isAway = before;
    }

    void note(const Entity& entity)
    {
        if (std::ranges::find(entities, &entity) == entities.end())
            entities.push_back(&entity);
    }

    /// Behind a relationship of the object that is asked.
    bool _isAway = false;
};

} // namespace

std::vector<const Entity*> entitiesBehind(const StorePredicate& predicate, const Entity& entity)
{
    Reach reach;
    reach.add(predicate, entity);
    return std::move(reach.entities);
}

} // namespace objectstore
