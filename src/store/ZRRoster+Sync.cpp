// What a roster keeps for its synchronisation: whether it is wanted, and how far it came.
#include "core/ZRInfo.h"
#include "platform/files/UserDefaults.h"
#include "store/ZRRosterState.h"
#include "store/ZRSyncManager.h"

using platform::Value;

namespace {

constexpr char anchorKey[] = "syncAnchor";
constexpr char contactAnchor[] = "org.quillon.contacts.Contact";
/// What stands for no anchor.
constexpr std::string_view unsynched = "unsynched";

} // namespace

bool ZRRoster::shouldDisableSync()
{
    const auto forced = __shouldDisableSync.load();
    return forced < 0 ? platform::UserDefaults::standard().boolForKey("ZRDisableSync") : forced != 0;
}

Value ZRRoster::syncAnchors()
{
    return locked(*this, ZRAccess::read, [&]() ZR_NTS {
        const auto info = nts_Info();
        const Value anchor = info ? info->nts_ValueForProperty(anchorKey) : Value();
        if (anchor.isAbsent() || anchor.asText() == unsynched)
            return Value();
        return Value::dictionary({{contactAnchor, anchor}});
    });
}

bool ZRRoster::setSyncAnchorsFromString(const Value& anchor)
{
    return locked(*this, ZRAccess::write, [&]() ZR_NTS {
        const auto info = nts_Info();
        return info && info->nts_SetValue(anchor.isAbsent() ? Value("") : anchor, anchorKey);
    });
}
