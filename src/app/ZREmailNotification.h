// The message that tells others of a changed Me card: to whom, with which words, and how it is sent.
#pragma once

#include "core/ZRExport.h"
#include "core/ZRGroup.h"
#include "core/ZRPerson.h"
#include "platform/run/Mutex.h"
#include "store/ZRRoster.h"

#include <map>
#include <string>
#include <vector>

/// One message to be, with the vCard of the Me card enclosed.
///
/// It asks nobody and shows nothing: see ZRChangeNotification.
///
/// Ownership: shares the roster and the people it goes to.
/// Threads:   any.
/// Errors:    sending answers nothing; what fails is logged.
class ZR_EXPORT ZREmailNotification final : public platform::Object {
public:
    /// The Me card of the shared roster, or of the one given; absent when there is none.
    static platform::Ref<ZREmailNotification> emailNotification();
    static platform::Ref<ZREmailNotification> emailNotification(platform::Ref<ZRRoster> roster);

    void setSubject(std::string subject);
    void setUserMessage(std::string message);
    /// It goes to the members of these groups and of the groups in them: each by the address that the group
    /// uses, without Me and without those who have no address. It replaces who was to get it.
    void setSendNotificationToGroups(const std::vector<platform::Ref<ZRGroup>>& groups);
    /// It goes to this address alone.
    void setSendNotificationToAddress(const std::string& address, platform::Ref<ZRPerson> person);

    using People = std::map<std::string, platform::Ref<ZRPerson>>;
    /// To whom it goes: address and person. Two people of one address get one message.
    People people() const;
    std::size_t emailCount() const;

    /// Hands the message with its present words and people to the carrier, on a new thread. The enclosed
    /// file lies for so long in a private folder within the temporary directory.
    void sendMailNotifications();

private:
    template <class T, class... Arguments>
    friend platform::Ref<T> platform::makeRef(Arguments&&...);
    explicit ZREmailNotification(platform::Ref<ZRRoster> roster) : _roster(std::move(roster)) { }

    struct Words {
        std::string subject;
        std::string message;
    };
    static void _generateEmailMessages(ZRRoster& roster, const Words& words, const People& people);
    static void _generateSingleEmailto(
        ZRRoster& roster, const Words& words, const std::vector<std::string>& addresses);

    const platform::Ref<ZRRoster> _roster;
    mutable platform::Mutex _mutex;
    Words _words ZR_GUARDED_BY(_mutex);
    People _people ZR_GUARDED_BY(_mutex);
};
