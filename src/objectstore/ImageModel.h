// Which tables hold what belongs to a whole object: its parts, and what ties it to others.
#pragma once

#include "objectstore/Model.h"

#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace objectstore {

/// What an upper room says of the roots that it wants images of.
struct ImageRules {
    /// Their entities; those below them are meant, too.
    std::vector<std::string_view> roots;
    /// Attributes that are kept and do not count when images are compared.
    std::vector<std::string_view> uncounted;
    /// Bits of an integer that do not count, and that stay as they are where an image is brought back.
    std::string_view flagsKey = {};
    std::int64_t uncountedFlags = 0;
    /// Attributes that together are a root's name; the first list with a text in it names it.
    std::vector<std::vector<std::string_view>> names;
};

/// The tables behind whole objects, found once from the model.
///
/// A root's *content* is its attributes and its parts. Its *ties* are the links in which it is the member,
/// those parts of others that cascade from it too (a group's choice of an entry of it), and the roots that
/// point at it. Ties have two ends, and stand in the image of one.
///
/// Ownership: borrows the model, which outlives it.
/// Threads:   never changes after it is made.
/// Errors:    an unknown entity in the rules throws std::logic_error.
class ImageModel {
public:
    /// A table of objects found by that to-one.
    struct Found {
        const Family* family = nullptr;
        const Slot* by = nullptr;
    };
    /// The roots of one table.
    struct Roots {
        const Family* family = nullptr;
        const Slot* uniqueId = nullptr;
        std::vector<Found> parts;
        std::vector<Found> ties;
        /// Of join tables in which the root is the member, and in which it leads.
        std::vector<const Slot*> memberships;
        std::vector<const Slot*> leads;
        /// To-ones of other roots that may point here, by the slot that follows them back.
        std::vector<const Slot*> pointers;
        std::vector<const Slot*> large;
    };

    ImageModel(const Model& model, ImageRules rules);

    const Model& model() const { return _model; }
    const ImageRules& rules() const { return _rules; }
    const std::vector<Roots>& roots() const { return _roots; }
    /// Those that objects of this entity are among, or null.
    const Roots* rootsOf(const Entity& entity) const;

    /// A field of an entity. Only what counts is compared, less the bits that do not; derived fields never
    /// count.
    struct Field {
        const Slot* slot = nullptr;
        bool isCounted = false;
        std::int64_t uncountedBits = 0;
    };
    /// The fields of an entity of the model, in its order.
    const std::vector<Field>& fieldsOf(const Entity& entity) const { return _fields.at(&entity); }
    Field fieldOf(const Slot& slot) const;

private:
    void addSlots(Roots& roots, const Entity& entity);
    bool isTie(const Entity& entity) const;

    const Model& _model;
    const ImageRules _rules;
    std::vector<const Entity*> _rootEntities;
    std::vector<const Entity*> _tieEntities;
    std::vector<Roots> _roots;
    std::unordered_map<const Entity*, std::vector<Field>> _fields;
};

/// The slot whose value tells roots of that entity apart, or null.
const Slot* uniqueSlot(const Entity& entity);

} // namespace objectstore
