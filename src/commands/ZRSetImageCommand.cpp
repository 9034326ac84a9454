// How a card's pictures are exchanged: the small one by the card, the large one between two files.
#include "commands/ZRSetImageCommand.h"

#include "core/ZRConstants.h"
#include "platform/files/Directories.h"
#include "platform/files/Files.h"
#include "platform/run/Log.h"
#include "store/ZRDBCache.h"
#include "store/ZRPictureChanges.h"

#include <fmt/format.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <unistd.h>
#include <utility>

using platform::Ref;
using platform::Value;

namespace {

std::string cachesDirectory()
{
    return platform::Directories::current()->cacheHome() + "/org.quillon.Roster";
}

/// A number that no other command of this user has now.
std::uint64_t newIdentity()
{
    static std::atomic<std::uint32_t> last = 0;
    return static_cast<std::uint64_t>(getpid()) << 32 | ++last;
}

void logFailure(const platform::Result<void>& result)
{
    if (!result)
        platform::log(fmt::format("Error deleting large image: {}", result.error().text));
}

/// Caches may lie on another volume than the pictures.
platform::Result<void> moveFile(const std::string& from, const std::string& to)
{
    if (std::rename(from.c_str(), to.c_str()) == 0)
        return {};
    if (errno != EXDEV)
        return platform::fileError(from, "cannot be moved", errno);
    const auto bytes = platform::readFile(from);
    if (!bytes)
        return bytes.error();
    const auto written = platform::writeFileAtomically(to, *bytes);
    return written ? platform::removeFile(from) : written;
}

void moveIfThere(const std::string& from, const std::string& to)
{
    if (platform::isPlainFile(from))
        logFailure(moveFile(from, to));
}

} // namespace

ZRSetImageCommand::ZRSetImageCommand(
    Ref<ZRPerson> person, Value imageData, const Value& largeImageData, Ref<ZRRoster> roster)
    : ZRCommand(std::move(roster))
    , _person(std::move(person))
    , _imageData(std::move(imageData))
    , _identity(newIdentity())
{
    if (!_person)
        return;
    _alternatePath =
        fmt::format("{}/{}-{:x}.tiff", cachesDirectory(), _person->_imageNameForPerson(), _identity);
    if (!largeImageData.isData())
        return;
    auto written = platform::makePrivateDirectory(cachesDirectory());
    if (written)
        written = platform::writeFileAtomically(_alternatePath, largeImageData.asBytes());
    if (!written)
        platform::log(fmt::format("Could not keep the large image: {}", written.error().text));
}

// What waits there is of use to nobody any more.
ZRSetImageCommand::~ZRSetImageCommand()
{
    if (platform::isPlainFile(_alternatePath))
        static_cast<void>(platform::removeFile(_alternatePath));
}

bool ZRSetImageCommand::doIt()
{
    if (!_person)
        return false;
    _switchImage();
    return true;
}

void ZRSetImageCommand::undoIt() { _switchImage(); }
void ZRSetImageCommand::redoIt() { _switchImage(); }

void ZRSetImageCommand::_switchImage()
{
    const Value data = std::exchange(_imageData, _person->imageData());
    _person->setImageData(data);
    announceLargeImage();
    cache().nonThreadedSave();
    switchLargeImage();
}

/// Absent where there is no large picture, shown or waiting.
std::optional<std::string> ZRSetImageCommand::pathOfLargeImage() const
{
    auto path = _person->largeImagePath();
    return path && (platform::isPlainFile(*path) || platform::isPlainFile(_alternatePath)) ? path
                                                                                           : std::nullopt;
}

/// Who keeps a history of what the save writes must know of both pictures before it.
void ZRSetImageCommand::announceLargeImage() const
{
    if (!pathOfLargeImage())
        return;
    const auto coming = platform::readFile(_alternatePath);
    ZRRoster& roster = *_person->roster();
    locked(roster, ZRAccess::write, [&]() ZR_NTS {
        ZRPictureWillChange(
            roster, _person->uniqueId(), zr::kZRLargeImageProperty, coming ? Value::data(*coming) : Value());
    });
}

void ZRSetImageCommand::switchLargeImage() const
{
    const auto large = pathOfLargeImage();
    if (!large)
        return;
    logFailure(platform::makePrivateDirectory(cachesDirectory()));
    const std::string swap = fmt::format("{}/zrimageswap-{:x}.tiff", cachesDirectory(), _identity);
    logFailure(platform::removeFile(swap));
    moveIfThere(*large, swap);
    moveIfThere(_alternatePath, *large);
    moveIfThere(swap, _alternatePath);
}
