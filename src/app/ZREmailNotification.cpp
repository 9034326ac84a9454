// How the message is made: the people of groups, the enclosed file, the carrier.
#include "app/ZREmailNotification.h"

#include "app/MailCarrier.h"
#include "app/MeCard.h"
#include "platform/files/DefaultApplication.h"
#include "platform/files/Directories.h"
#include "platform/files/Files.h"
#include "platform/run/Log.h"
#include "platform/run/SuddenTermination.h"
#include "platform/run/Thread.h"
#include "platform/text/Utf.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <memory>

using platform::Error;
using platform::Lock;
using platform::Ref;
using platform::Result;

namespace {

/// A new folder that only the user can look into, and that goes with its contents.
class PrivateFolder {
public:
    PrivateFolder() : _path(platform::Directories::current()->temporary() + "/mail-XXXXXX")
    {
        _error = mkdtemp(_path.data()) ? 0 : errno;
    }
    ~PrivateFolder()
    {
        if (_error != 0)
            return;
        if (const auto removed = platform::removeFile(_path); !removed)
            platform::log(removed.error().text);
    }
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;

    Result<void> made() const
    {
        return _error == 0 ? Result<void>() : platform::fileError(_path, "cannot make", _error);
    }
    std::string operator/(const std::string& name) const { return _path + "/" + name; }

private:
    std::string _path;
    int _error = 0;
};

/// A file name has at most 255 bytes; a UTF-16 unit takes at most three.
constexpr std::size_t kLongestName = 80;

std::string fileNameFor(std::string_view name)
{
    std::string fileName(platform::substringUTF16(name, 0, kLongestName));
    std::ranges::replace(fileName, '/', '-');
    std::erase(fileName, '\0');
    return fileName + ".vcf";
}

/// Keeps the process from being ended before a message is on its way.
struct Unfinished {
    Unfinished() { platform::suddentermination::disable(); }
    ~Unfinished() { platform::suddentermination::enable(); }
    Unfinished(const Unfinished&) = delete;
    Unfinished& operator=(const Unfinished&) = delete;
};

Result<void> sendWithCard(const MeCard& me, MailMessage message)
{
    const PrivateFolder folder;
    if (auto made = folder.made(); !made)
        return made;
    message.file = folder / fileNameFor(me.person->compositeName());
    if (auto written = platform::writeFileAtomically(message.file, me.data); !written)
        return written;
    return MailCarrier::shared()->sendemail(message);
}

} // namespace

Ref<ZREmailNotification> ZREmailNotification::emailNotification()
{
    return emailNotification(ZRRoster::sharedRoster());
}

Ref<ZREmailNotification> ZREmailNotification::emailNotification(Ref<ZRRoster> roster)
{
    if (!roster)
        return nullptr;
    return platform::makeRef<ZREmailNotification>(std::move(roster));
}

void ZREmailNotification::setSubject(std::string subject)
{
    Lock lock(_mutex);
    _words.subject = std::move(subject);
}

void ZREmailNotification::setUserMessage(std::string message)
{
    Lock lock(_mutex);
    _words.message = std::move(message);
}

void ZREmailNotification::setSendNotificationToGroups(const std::vector<Ref<ZRGroup>>& groups)
{
    std::unordered_map<Ref<ZRPerson>, platform::Value> addresses;
    for (const auto& group : groups)
        ZRRecursivelyBuildPeopleList(*group, addresses);
    People people;
    for (const auto& [person, address] : addresses)
        if (!address.asText().empty())
            people.emplace(address.asText(), person);
    Lock lock(_mutex);
    _people.swap(people);
}

void ZREmailNotification::setSendNotificationToAddress(const std::string& address, Ref<ZRPerson> person)
{
    People people{{address, std::move(person)}};
    Lock lock(_mutex);
    _people.swap(people);
}

ZREmailNotification::People ZREmailNotification::people() const
{
    Lock lock(_mutex);
    return _people;
}

std::size_t ZREmailNotification::emailCount() const
{
    Lock lock(_mutex);
    return _people.size();
}

void ZREmailNotification::sendMailNotifications()
{
    Lock lock(_mutex);
    const bool started = platform::startThread("roster-mail",
        [unfinished = std::make_shared<Unfinished>(), roster = _roster, words = _words, people = _people] {
            _generateEmailMessages(*roster, words, people);
        });
    if (!started)
        platform::log("ZRChangeNotification has no thread to send from");
}

void ZREmailNotification::_generateEmailMessages(ZRRoster& roster, const Words& words, const People& people)
{
    std::vector<std::string> addresses;
    for (const auto& [address, person] : people)
        addresses.push_back(address);
    if (!addresses.empty())
        _generateSingleEmailto(roster, words, addresses);
}

void ZREmailNotification::_generateSingleEmailto(
    ZRRoster& roster, const Words& words, const std::vector<std::string>& addresses)
{
    const auto me = presentMeCard(roster);
    const auto sent = me
        ? sendWithCard(*me,
            {platform::defaultApplicationForURL("mailto:local"), {}, addresses, words.subject, words.message})
        : Error{"ZRRosterErrorDomain", 1, "there is no Me card to enclose"};
    if (!sent)
        platform::log("ZRChangeNotification executing quillonscript got error:" + sent.error().text);
}
