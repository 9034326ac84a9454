// Which properties and labels an editor of cards may offer.
#pragma once

#include "core/ZRExport.h"
#include "core/ZRRecordClass.h"
#include "platform/value/Object.h"

#include <string>
#include <string_view>
#include <vector>

class ZROSRecord;
struct ZRLabelsDelegate;

/// What one record class offers to an editor.
///
/// Ownership: shared.
/// Threads:   never changes after `initWithRecordClass`.
/// Errors:    none.
class ZR_EXPORT ZRRecordConstraint : public platform::Object {
public:
    static platform::Ref<ZRRecordConstraint> initWithRecordClass(const ZRRecordClass& recordClass);

    /// The properties of the class, as they were when the constraint was made.
    const std::vector<std::string>& validProperties() const { return _validProperties; }
    /// Those that the preferences show in a new card.
    std::vector<std::string> initialProperties() const;
    std::vector<std::string> initialLabelsForProperty(std::string_view property) const;
    /// The built-in labels, then those in use on the contact; repeats stay.
    std::vector<std::string> availableLabelsForProperty(
        std::string_view property, ZROSRecord& contact, const ZRLabelsDelegate& delegate) const;
    /// Multi-value properties always; others only while the contact has no value.
    std::vector<std::string> availablePropertiesForContact(ZROSRecord& contact) const;

private:
    template <class T, class... Arguments>
    friend platform::Ref<T> platform::makeRef(Arguments&&... arguments);
    explicit ZRRecordConstraint(const ZRRecordClass& recordClass);
    ~ZRRecordConstraint() override = default;

    const ZRRecordClass& _constraintClass;
    const std::vector<std::string> _validProperties;
};
