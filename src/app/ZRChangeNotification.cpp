// When the user is asked, what is remembered, and what the panel does.
#include "app/ZRChangeNotification.h"

#include "app/MeCard.h"
#include "core/ZRConstants.h"
#include "core/ZRFrameworkBundle.h"
#include "platform/files/ZRUserDefaults.h"
#include "platform/run/NeverDestroyed.h"

#include <algorithm>

using platform::Notification;
using platform::Object;
using platform::Ref;
using platform::Value;

namespace {

constexpr std::string_view kEnabled = "ZRMailNotificationEnabled";
constexpr std::string_view kMeRecord = "ZRMailNotificationMeRecordUID";
constexpr std::string_view kMeCard = "ZRMailNotificationMeVCardData";
constexpr std::string_view kGroups = "ZRMailNotificationSelectedGroups";

std::string text(std::string_view key)
{
    return ZRFrameworkBundle().localizedString(key, "ZRMailNotification");
}

std::string countText(std::size_t count)
{
    if (count == 1)
        return text("MAIL_NOTIFICATION_MESSAGE_COUNT");
    std::string counts = text("MAIL_NOTIFICATION_MESSAGE_COUNTS");
    if (const auto at = counts.find("%d"); at != std::string::npos)
        counts.replace(at, 2, std::to_string(count));
    return counts;
}

bool names(const Value& userInfo, std::string_view uniqueId)
{
    for (const auto key : {zr::kZRInsertedRecords, zr::kZRUpdatedRecords, zr::kZRDeletedRecords})
        if (std::ranges::any_of(
                userInfo[key].asArray(), [&](const Value& id) { return id.asText() == uniqueId; }))
            return true;
    return false;
}

} // namespace

ZRChangeNotification::ZRChangeNotification(Ref<ZRRoster> roster) : _roster(std::move(roster))
{
    const Value ids = ZRUserDefaults::rosterPreferences()->objectForKey(kGroups);
    for (const auto& id : ids.asArray())
        _selectedGroups.emplace(id.asText());
}

ZRChangeNotification::~ZRChangeNotification()
{
    platform::Lock lock(_mutex);
    ZRSafeNotificationCenter::defaultCenter()->removeObserversInCollection(_entries);
}

Ref<ZRChangeNotification> ZRChangeNotification::sharedChangeNotification()
{
    static const platform::NeverDestroyed<Ref<ZRChangeNotification>> only(
        initWithRoster(ZRRoster::sharedRoster()));
    if (*only)
        (*only)->observeChanges();
    return *only;
}

Ref<ZRChangeNotification> ZRChangeNotification::initWithRoster(Ref<ZRRoster> roster)
{
    if (!roster)
        return nullptr;
    return platform::makeRef<ZRChangeNotification>(std::move(roster));
}

bool ZRChangeNotification::enabled() { return ZRUserDefaults::rosterPreferences()->boolForKey(kEnabled); }

void ZRChangeNotification::observeChanges()
{
    platform::Lock lock(_mutex);
    if (!_entries.empty() || !enabled())
        return;
    for (const auto name : {zr::kZRDatabaseChangedNotification, zr::kZRDatabaseChangedExternallyNotification})
        _entries.push_back(ZRSafeNotificationCenter::defaultCenter()->addSafeObserver(
            *this, &ZRChangeNotification::databaseChanged, std::string(name), nullptr));
}

void ZRChangeNotification::databaseChanged(const Notification& notification)
{
    if (!enabled())
        return;
    const auto me = _roster->me();
    if (me && names(notification.userInfo, me->uniqueId()) && _checkIfMeRecordHasChanged())
        askUserToNotify();
}

bool ZRChangeNotification::_checkIfMeRecordHasChanged()
{
    const auto me = presentMeCard(*_roster);
    if (!me)
        return false;
    const auto preferences = ZRUserDefaults::rosterPreferences();
    return preferences->objectForKey(kMeRecord).asText() != me->person->uniqueId()
        || preferences->objectForKey(kMeCard).asBytes() != me->data;
}

void ZRChangeNotification::updateDefaults()
{
    const auto me = presentMeCard(*_roster);
    const auto preferences = ZRUserDefaults::rosterPreferences();
    preferences->setObject(me ? Value(me->person->uniqueId()) : Value(), kMeRecord);
    preferences->setObject(me ? Value::data(me->data) : Value(), kMeCard);
    preferences->setObject(Value::array({_selectedGroups.begin(), _selectedGroups.end()}), kGroups);
}

void ZRChangeNotification::askUserToNotify(const Object*)
{
    if (!_host || _isAsking || _emailNotification || simpleGroups().empty())
        return;
    updateDefaults();
    _isAsking = true;
    _host->askUser({text("MAIL_NOTIFICATION_ALERT_TITLE"), text("MAIL_NOTIFICATION_ALERT_MSG"),
                       text("MAIL_NOTIFICATION_ALERT_NOTIFY"), text("MAIL_NOTIFICATION_ALERT_CANCEL")},
        [self = Ref<ZRChangeNotification>(this)](bool notify) {
            self->_isAsking = false;
            if (notify)
                self->showNotificationPanel();
        });
}

void ZRChangeNotification::showNotificationPanel(const Object*)
{
    _oneEmail = false;
    _emailNotification = ZREmailNotification::emailNotification(_roster);
    _emailNotification->setSendNotificationToGroups(selectedGroups());
    openPanel();
}

void ZRChangeNotification::requestIndividualUpdateFrom(const std::string& address, Ref<ZRPerson> person)
{
    _oneEmail = true;
    _emailNotification = ZREmailNotification::emailNotification(_roster);
    _emailNotification->setSendNotificationToAddress(address, std::move(person));
    openPanel();
}

void ZRChangeNotification::openPanel()
{
    if (_host)
        _host->showPanel();
    sendEnabled();
}

void ZRChangeNotification::send(const Object*)
{
    if (emailCount() == 0)
        return;
    if (!_oneEmail)
        updateDefaults();
    _emailNotification->sendMailNotifications();
    closePanel();
}

void ZRChangeNotification::cancel(const Object*) { closePanel(); }

void ZRChangeNotification::closePanel()
{
    _emailNotification = nullptr;
    if (_host)
        _host->hidePanel();
}

bool ZRChangeNotification::sendEnabled(const Object*)
{
    const auto count = emailCount();
    if (_host)
        _host->showEmailCount(countText(count), count > 0);
    return count > 0;
}

std::vector<Ref<ZRGroup>> ZRChangeNotification::simpleGroups() const
{
    std::vector<Ref<ZRGroup>> simple;
    for (const auto& group : _roster->groups())
        if (&group->recordClass() == &ZRGroup::recordClassDescription)
            simple.push_back(platform::refCast<ZRGroup>(group));
    return simple;
}

std::vector<Ref<ZRGroup>> ZRChangeNotification::selectedGroups() const
{
    auto selected = simpleGroups();
    std::erase_if(selected, [&](const auto& group) { return !_selectedGroups.contains(group->uniqueId()); });
    return selected;
}

void ZRChangeNotification::setSelectedGroups(const std::vector<Ref<ZRGroup>>& groups)
{
    _selectedGroups.clear();
    for (const auto& group : groups)
        _selectedGroups.insert(group->uniqueId());
    if (!_emailNotification || _oneEmail)
        return;
    _emailNotification->setSendNotificationToGroups(selectedGroups());
    sendEnabled();
}
