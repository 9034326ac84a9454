// How search elements are put away, and what becomes of an archive that is newer, damaged or hostile.
#include "core/ZRConstants.h"
#include "core/ZRGroup.h"
#include "platform/run/NeverDestroyed.h"
#include "search/SearchedGroups.h"
#include "search/ZRSearchElementConjunction.h"
#include "search/ZRSearchElementMatch.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

#include <atomic>
#include <filesystem>
#include <utility>

using platform::KeyedArchiver;
using platform::KeyedUnarchiver;
using platform::Ref;
using platform::Result;
using platform::Value;

namespace {

/// The first version that this one cannot read.
constexpr std::int64_t firstIncompatibleVersion = 10501;

/// A search that a person makes has a handful of levels; walking one must never exhaust a stack.
constexpr platform::PropertyListLimits archiveLimits{.depth = 256, .nodes = 1 << 18};

std::atomic<std::int64_t> matchVersion = 1;

const platform::ArchiveClasses& elementClasses()
{
    static const platform::NeverDestroyed<const platform::ArchiveClasses> classes(platform::ArchiveClasses{
        {"ZRSearchElementMatch",
            [](KeyedUnarchiver& coder) { return ZRSearchElementMatch::initWithCoder(coder); }},
        {"ZRSearchElementConjunction",
            [](KeyedUnarchiver& coder) { return ZRSearchElementConjunction::initWithCoder(coder); }}});
    return *classes;
}

/// An archived text, or null; anything else under the key is a failure.
ZRSearchElementMatch::Text textOrNull(KeyedUnarchiver& coder, std::string_view key)
{
    return coder.contains(key) ? ZRSearchElementMatch::Text(coder.decodeString(key)) : std::nullopt;
}

/// Written only where there is a text: a missing key is null.
void encodeText(KeyedArchiver& coder, std::string_view key, const ZRSearchElementMatch::Text& text)
{
    if (text)
        coder.encodeString(key, *text);
}

/// A comparison's code; a number that is none is a failure.
ZRSearchComparison decodedComparison(KeyedUnarchiver& coder)
{
    const std::int64_t code = coder.decodeInteger("ZRSearchComparison");
    if (code >= kZREqual && code <= kZRNotMemberOfGroup)
        return static_cast<ZRSearchComparison>(code);
    coder.fail({"ZRSearchElement", 4, fmt::format("ZRSearchComparison is {}, which is no comparison", code)});
    return kZREqual;
}

/// The roster whose archive this thread is reading; null for one that no roster keeps. Factories of the
/// unarchiver get nothing but the coder.
thread_local ZRRoster* archiveOwner = nullptr;

/// Names the owner for a scope.
class OwnerScope {
public:
    explicit OwnerScope(ZRRoster* owner) : _before(std::exchange(archiveOwner, owner)) { }
    ~OwnerScope() { archiveOwner = _before; }
    OwnerScope(const OwnerScope&) = delete;
    OwnerScope& operator=(const OwnerScope&) = delete;

private:
    ZRRoster* const _before;
};

/// The roster of an archived group: that of its directory while there is one, else the one that keeps the
/// archive. A directory without a store is never made into a roster.
Ref<ZRRoster> nts_rosterOfGroup(const std::string& directory) ZR_NTS
{
    const auto shared = ZRRoster::nts_SharedRoster();
    const auto owner = archiveOwner ? Ref<ZRRoster>(archiveOwner) : shared;
    if (!shared || directory.empty() || directory == owner->databaseDirectory())
        return owner;
    if (directory == shared->databaseDirectory())
        return shared;
    const auto store = std::filesystem::path(directory)
        / std::filesystem::path(shared->rosterObjectStoreDatabaseFile()).filename();
    std::error_code unreadable;
    if (!std::filesystem::is_regular_file(store, unreadable))
        return owner;
    auto other = ZRRoster::nts_RosterWithDatabaseDirectory(directory, false);
    return other ? other : owner;
}

/// What a membership is compared with: the marker, or the group of an archived id while it exists.
Value nts_membershipValue(KeyedUnarchiver& coder) ZR_NTS
{
    const Value stored = coder.decodeValue("ZRSearchValue");
    if (!stored.isString() || isAnyGroupMarker(stored))
        return stored.isString() ? stored : Value();
    const auto roster = nts_rosterOfGroup(coder.decodeString("ZRDatabasePath"));
    return roster ? Value(roster->nts_RecordForUniqueId(stored.asText())) : Value();
}

} // namespace

void ZRSearchElement::checkCurrentVersionCompatibleWithCoder(KeyedUnarchiver& coder)
{
    const std::int64_t version = coder.decodeInteger("ZRSearchVersion");
    if (version >= firstIncompatibleVersion)
        throw ZRIncompatibleSearchElementVersionException(version);
}

Result<std::string> ZRSearchElement::archivedData() const
{
    KeyedArchiver coder(archiveLimits);
    coder.encodeObject("root", Ref<const ZRSearchElement>(this));
    return coder.finish();
}

Result<Ref<ZRSearchElement>> ZRSearchElement::nts_unarchivedElement(std::string_view data, ZRRoster* owner)
{
    const OwnerScope scope(owner);
    KeyedUnarchiver coder(data, elementClasses(), archiveLimits);
    auto element = coder.decodeObject<ZRSearchElement>("root");
    if (coder.failure())
        return *coder.failure();
    if (!element)
        return platform::Error{"ZRSearchElement", 1, "the archive holds no search element"};
    return element;
}

std::int64_t ZRSearchElementMatch::baseVersion() { return matchVersion; }

void ZRSearchElementMatch::setEncodingVersion(std::int64_t version) { matchVersion = version; }

void ZRSearchElementMatch::encodeWithCoder(KeyedArchiver& coder) const
{
    coder.encodeInteger("ZRSearchVersion", encodingVersion());
    const auto* group = _definition.value.as<ZRGroup>();
    if (_propertyOrEmpty() != zr::kZRParentGroupsProperty) {
        coder.encodeValue("ZRSearchValue", _definition.value);
    } else if (group) {
        coder.encodeString("ZRSearchValue", group->uniqueId());
        coder.encodeString("ZRDatabasePath", group->roster()->databaseDirectory());
    } else if (_definition.value.isString()) {
        coder.encodeValue("ZRSearchValue", _definition.value);
    }
    encodeText(coder, "ZRSearchProperty", _definition.property);
    encodeText(coder, "ZRSearchLabel", _definition.label);
    encodeText(coder, "ZRSearchKey", _definition.key);
    coder.encodeBool("ZRSearchPeople", _definition.searchPeople);
    coder.encodeBool("ZRDiacriticInsensitive", _definition.diacriticInsensitive);
    coder.encodeInteger("ZRSearchComparison", _definition.comparison);
}

Ref<ZRSearchElementMatch> ZRSearchElementMatch::initWithCoder(KeyedUnarchiver& coder)
{
    zrGlobalLockIsHeld();
    checkCurrentVersionCompatibleWithCoder(coder);
    Definition definition{.property = textOrNull(coder, "ZRSearchProperty"),
        .label = textOrNull(coder, "ZRSearchLabel"),
        .key = textOrNull(coder, "ZRSearchKey"),
        .searchPeople = coder.decodeBool("ZRSearchPeople"),
        .diacriticInsensitive = coder.decodeBool("ZRDiacriticInsensitive"),
        .comparison = decodedComparison(coder)};
    const bool isMembership = definition.property == zr::kZRParentGroupsProperty;
    definition.value = isMembership ? nts_membershipValue(coder) : coder.decodeValue("ZRSearchValue");
    return platform::makeRef<ZRSearchElementMatch>(std::move(definition));
}

void ZRSearchElementConjunction::encodeWithCoder(KeyedArchiver& coder) const
{
    coder.encodeInteger("ZRSearchVersion", encodingVersion());
    coder.encodeInteger("ZRSearchConjunction", _conjunction);
    coder.encodeValue("ZRSearchChildren", Value::array({_elements.begin(), _elements.end()}));
    coder.encodeBool("ZRRuleGrouping", _ruleGrouping);
}

Ref<ZRSearchElementConjunction> ZRSearchElementConjunction::initWithCoder(KeyedUnarchiver& coder)
{
    checkCurrentVersionCompatibleWithCoder(coder);
    Children children;
    const Value stored = coder.decodeValue("ZRSearchChildren");
    for (const auto& child : stored.asArray())
        if (children.emplace_back(child.as<ZRSearchElement>()); !children.back()) {
            coder.fail({"ZRSearchElement", 2, "ZRSearchChildren holds something that is no search element"});
            return nullptr;
        }
    if (children.empty()) {
        coder.fail({"ZRSearchElement", 3, "a conjunction without children"});
        return nullptr;
    }
    auto element = platform::makeRef<ZRSearchElementConjunction>(
        coder.decodeInteger("ZRSearchConjunction") == 0 ? kZRConjunctionAnd : kZRConjunctionOr,
        std::move(children));
    element->setIsRuleGrouping(coder.decodeBool("ZRRuleGrouping"));
    return element;
}
