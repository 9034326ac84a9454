// What goes into a roster when it is first opened.
#include "store/ZRInitialImports.h"

#include "core/ZRConstants.h"
#include "core/ZRLog.h"
#include "core/ZRMutableMultiValue.h"
#include "core/ZRPerson.h"
#include "objectstore/StoreCoordinator.h"
#include "platform/files/Directories.h"
#include "platform/files/Files.h"
#include "platform/files/Resources.h"
#include "platform/notify/DistributedNotificationCenter.h"
#include "platform/run/Clock.h"
#include "platform/run/Log.h"
#include "platform/run/MainQueue.h"
#include "platform/run/Thread.h"
#include "platform/value/PropertyList.h"
#include "store/ZRRosterState.h"
#include "store/ZRServices.h"

#include <fmt/format.h>

#include <pwd.h>
#include <unistd.h>

using platform::Ref;
using platform::Value;
using Entries = std::vector<std::pair<std::string, Value>>;

namespace {

std::string answer(const Value& answers, std::string_view key) { return std::string(answers[key].asText()); }

/// A name with its kanji form has the plain one as its reading.
void addName(Entries& properties, const Value& answers, std::string_view plain, std::string_view kanji,
    std::string_view property, std::string_view phonetic)
{
    const std::string written = answer(answers, kanji), reading = answer(answers, plain);
    if (!written.empty()) {
        properties.emplace_back(property, Value(written));
        if (!reading.empty())
            properties.emplace_back(phonetic, Value(reading));
    } else if (!reading.empty()) {
        properties.emplace_back(property, Value(reading));
    }
}

Value entries(std::initializer_list<std::pair<std::string, std::string_view>> labelled)
{
    const auto values = platform::makeRef<ZRMutableMultiValue>();
    for (const auto& [text, label] : labelled)
        if (!text.empty())
            values->addValue(Value(text), label);
    return values->count() > 0 ? Value(values) : Value();
}

std::string joined(const std::string& a, const char* between, const std::string& b)
{
    return a.empty() || b.empty() ? a + b : a + between + b;
}

Value address(const Value& answers, const std::string& countryCode)
{
    Entries parts;
    const auto add = [&](std::string_view key, const std::string& text) {
        if (!text.empty())
            parts.emplace_back(key, Value(text));
    };
    add(zr::kZRAddressStreetKey,
        joined(answer(answers, "StreetAddr1"), "\n", answer(answers, "StreetAddr2")));
    add(zr::kZRAddressCityKey, answer(answers, "City"));
    add(zr::kZRAddressStateKey, answer(answers, "StateProv"));
    add(zr::kZRAddressZIPKey, answer(answers, "ZipPostal"));
    if (const std::string country = answer(answers, "CountryName"); !country.empty()) {
        add(zr::kZRAddressCountryKey, country);
        add(zr::kZRAddressCountryCodeKey, countryCode);
    }
    if (parts.empty())
        return {};
    const auto values = platform::makeRef<ZRMutableMultiValue>();
    values->addValue(Value::dictionary(std::move(parts)), zr::kZRAddressHomeLabel);
    return Value(values);
}

std::string realName()
{
    if (const auto& service = ZRServices::registered().userRealName)
        return service();
    const passwd* user = getpwuid(geteuid());
    const std::string full = user && user->pw_gecos ? user->pw_gecos : "";
    return full.substr(0, full.find(','));
}

/// The first-run assistant's answers; else the user's name, split at the blank.
Value meProperties(ZRRoster& roster)
{
    const auto file =
        platform::readFile(platform::Directories::current()->home() + "/Library/Preferences/RosterMe.plist");
    if (file)
        if (const auto answers = platform::decodePropertyList(*file))
            return firstRunMeProperties(*answers, roster.defaultCountryCode());
    const std::string name = realName();
    const auto blank = std::min(name.find(' '), name.size());
    Entries properties;
    if (blank > 0)
        properties.emplace_back(zr::kZRFirstNameProperty, Value(name.substr(0, blank)));
    if (blank + 1 < name.size())
        properties.emplace_back(zr::kZRLastNameProperty, Value(name.substr(blank + 1)));
    return Value::dictionary(std::move(properties));
}

void nts_ImportFirstRunMeCard(ZRRoster& roster) ZR_NTS
{
    auto& flags = ZRRosterAccess::state(roster).flags;
    if (!flags.importMe)
        return;
    flags.importMe = false;
    const Value properties = meProperties(roster);
    auto me = platform::refCast<ZRPerson>(
        ZRRecord::nts_initWithUniqueId(ZRPerson::recordClassDescription, std::nullopt, roster));
    for (const auto& [property, value] : properties.asDictionary()->entries())
        me->nts_SetValue(value, property);
    roster.nts_SetMe(me.get());
    roster.nts_SaveWithFileLock(false);
}

void _threadedImportTipCards(const Ref<ZRRoster>& roster)
{
    const auto& readCard = ZRServices::registered().readCard;
    auto card = platform::resource("TipCards-" + roster->defaultCountryCode(), "vcf");
    if (!card)
        card = platform::resource("TipCards-us", "vcf");
    if (!card || !readCard)
        return;
    try {
        if (const auto person = readCard(*card, roster); person && roster->addRecord(person))
            roster->save();
    } catch (const std::exception& failure) {
        platform::log(fmt::format("-ZRRoster failed importing tip cards {}", failure.what()));
    }
}

// The card comes in on a thread of its own, so that whoever opens the roster does not wait for it; the thread
// holds the roster, and takes the lock like any other caller.
void nts_ImportTipCards(ZRRoster& roster) ZR_NTS
{
    auto& flags = ZRRosterAccess::state(roster).flags;
    if (!flags.importTips)
        return;
    flags.importTips = false;
    if (!platform::startThread(
            "roster-samples", [owned = Ref<ZRRoster>(&roster)] { _threadedImportTipCards(owned); }))
        platform::log("-ZRRoster no thread to import the tip cards");
}

void tellOthers(const char* name, const char* word, ZRRoster& roster, ZRRoster::UserInfo& info)
{
    const Value told = Value::dictionary({info.begin(), info.end()});
    if (__ZRLogNotifications)
        platform::log(
            fmt::format("nts_RestoreFromMetaDataIfNeeded: posting {}: {}", word, told.description()));
    platform::DistributedNotificationCenter::shared()->post({name, roster.notificationID(), told});
}

} // namespace

Value firstRunMeProperties(const Value& answers, const std::string& defaultCountryCode)
{
    Entries properties;
    addName(properties, answers, "FirstName", "KanjiFirstName", zr::kZRFirstNameProperty,
        zr::kZRFirstNamePhoneticProperty);
    addName(properties, answers, "LastName", "KanjiLastName", zr::kZRLastNameProperty,
        zr::kZRLastNamePhoneticProperty);
    if (const std::string company = answer(answers, "Company"); !company.empty())
        properties.emplace_back(zr::kZROrganizationProperty, Value(company));
    properties.emplace_back(zr::kZREmailProperty,
        entries({{answer(answers, "ExistingEmailAddress"), zr::kZREmailHomeLabel},
            {answer(answers, "Email"), zr::kZROtherLabel}}));
    properties.emplace_back(
        zr::kZRAIMInstantProperty, entries({{answer(answers, "AIMHandle"), zr::kZRAIMHomeLabel}}));
    if (const std::string number = answer(answers, "LocalPhoneNumber"); !number.empty())
        properties.emplace_back(zr::kZRPhoneProperty,
            entries({{joined(answer(answers, "AreaCode"), " ", number), zr::kZRPhoneHomeLabel}}));
    properties.emplace_back(zr::kZRAddressProperty, address(answers, defaultCountryCode));
    return Value::dictionary(std::move(properties));
}

void nts_ImportRosterFromMetaKitIfNeeded(ZRRoster& roster)
{
    if (const auto& import = ZRServices::registered().importFromLegacyFile)
        import(roster);
}

bool nts_RestoreFromMetaDataIfNeeded(ZRRoster& roster)
{
    auto& flags = ZRRosterAccess::state(roster).flags;
    if (!flags.restoreFromMetaData)
        return true;
    auto info = roster.allocCommonNotificationUserInfoDictionary();
    tellOthers(kZRWillRestoreFromMetadataPriv, "kZRWillRestoreFromMetadataPriv", roster, info);
    bool restored = true;
    std::exception_ptr failure;
    try {
        if (const auto& restore = ZRServices::registered().restoreFromMetaData)
            restored = restore(roster);
    } catch (...) {
        failure = std::current_exception();
    }
    roster.nts_SetNeedsToRestoreRosterFromMetaData(false);
    info.insert_or_assign(kZRRestoreFromMetadata, Value(true));
    tellOthers(kZRDatabaseChangedNotification, "kZRDatabaseChangedNotification", roster, info);
    if (failure)
        std::rethrow_exception(failure);
    return restored;
}

void nts_DoInitialImports(ZRRoster& roster)
{
    constexpr double validationDelay = 3.0;
    if (!nts_shouldImportInto(roster.databaseDirectory()))
        return;
    const auto& services = ZRServices::registered();
    nts_ImportRosterFromMetaKitIfNeeded(roster);
    nts_RestoreFromMetaDataIfNeeded(roster);
    nts_ImportFirstRunMeCard(roster);
    nts_ImportTipCards(roster);
    if (!ZRRoster::isInert() && services.validateMetaData)
        platform::MainQueue::shared()
            .after(validationDelay,
                [owned = Ref<ZRRoster>(&roster)] { ZRServices::registered().validateMetaData(*owned); })
            .detach();
}
