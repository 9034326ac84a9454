// A person's picture: one private file beside the store, named after the person's UUID.
#include "core/ZRConstants.h"
#include "core/ZRPerson.h"
#include "core/ZRUniqueId.h"
#include "platform/files/Files.h"
#include "platform/notify/NotificationCenter.h"
#include "platform/run/Log.h"
#include "store/ZROSRecord.h"
#include "store/ZRPictureChanges.h"
#include "store/ZRRoster.h"
#include "store/ZRServices.h"

#include <fmt/format.h>

using platform::Ref;
using platform::Value;

namespace {

constexpr char imageDidChange[] = "ZRContactImageDidChangeNotification";

Value contentsOf(const std::optional<std::string>& path)
{
    if (!path || !platform::isPlainFile(*path))
        return {};
    const auto bytes = platform::readFile(*path);
    return bytes ? Value::data(*bytes) : Value();
}

bool writePicture(const std::string& path, const std::string& directory, const Value& data)
{
    auto written = platform::makePrivateDirectory(directory);
    if (written)
        written = platform::writeFileAtomically(path, data.asBytes());
    if (!written)
        platform::log(fmt::format("Caught exception setting image data: {}", written.error().text));
    return bool(written);
}

/// Nothing takes the file away.
bool replacePicture(const std::string& path, const std::string& directory, const Value& data)
{
    if (!data.isNothing())
        return writePicture(path, directory, data);
    if (platform::isPlainFile(path))
        static_cast<void>(platform::removeFile(path));
    return true;
}

} // namespace

std::string ZRPerson::nts_imageNameForPerson() const
{
    return nts_UniqueId().substr(0, kZRUniqueIdTextLength);
}
std::string ZRPerson::_imageNameForPerson() const
{
    return locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS { return nts_imageNameForPerson(); });
}

std::optional<std::string> ZRPerson::nts_PathForUIDTaggedImageOfKind(std::string_view kind) const
{
    std::string path = nts_Roster()->rosterImagesDirectory();
    if (path.empty())
        return {};
    const std::string_view name = std::string_view(nts_UniqueId()).substr(0, kZRUniqueIdTextLength);
    path.append("/").append(name).append(kind == zr::kZRLargeImageProperty ? ".jpeg" : "");
    return path;
}

std::optional<std::string> ZRPerson::nts_PathForUIDTaggedImage() const
{
    return nts_PathForUIDTaggedImageOfKind(zr::kZRImageProperty);
}

std::optional<std::string> ZRPerson::pathForUIDTaggedImage() const
{
    return locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS { return nts_PathForUIDTaggedImage(); });
}

std::optional<std::string> ZRPerson::largeImagePath() const
{
    return locked(*nts_Roster(), ZRAccess::read,
        [&]() ZR_NTS { return nts_PathForUIDTaggedImageOfKind(zr::kZRLargeImageProperty); });
}

Value ZRPerson::imageData() const { return imageDataOfKind(zr::kZRImageProperty); }
Value ZRPerson::largeImageData() const { return contentsOf(largeImagePath()); }

// The lock is held for what is pending and for the path only; the file is read without it.
Value ZRPerson::imageDataOfKind(std::string_view kind) const
{
    std::optional<std::string> path;
    bool isMe = false;
    const Value pending = locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS {
        path = nts_PathForUIDTaggedImageOfKind(kind);
        isMe = kind == zr::kZRImageProperty && ZRServices::registered().userPicture
            && nts_Roster()->nts_IsMe(*this);
        return nts_Roster()->nts_PendingPicture(nts_UniqueId(), kind);
    });
    if (!pending.isAbsent())
        return pending;
    if (isMe)
        if (Value picture = ZRServices::registered().userPicture(); !picture.isNothing())
            return picture;
    return contentsOf(path);
}

Value ZRPerson::nts_CustomImageData() const { return contentsOf(nts_PathForUIDTaggedImage()); }

Value ZRPerson::_customImageData() const
{
    const Value own = contentsOf(pathForUIDTaggedImage());
    const auto& userPicture = ZRServices::registered().userPicture;
    if (!own.isNothing() || !userPicture)
        return own;
    const bool isMe =
        locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS { return nts_Roster()->nts_IsMe(*this); });
    return isMe ? userPicture() : own;
}

bool ZRPerson::setImageData(const Value& data) { return setImageData(data, zr::kZRImageProperty); }

bool ZRPerson::setImageData(const Value& data, std::string_view kind)
{
    return locked(*nts_Roster(), ZRAccess::write, [&]() ZR_NTS { return nts_SetImageData(data, kind); });
}

bool ZRPerson::nts_SetImageData(const Value& data, std::string_view kind)
{
    ZRRoster& roster = *nts_Roster();
    const auto path = nts_PathForUIDTaggedImageOfKind(kind);
    if (!path)
        return false;
    const auto& setUserPicture = ZRServices::registered().setUserPicture;
    const bool isUsers =
        kind == zr::kZRImageProperty && setUserPicture && roster.nts_IsMe(*this) && setUserPicture(data);
    if (!isUsers) {
        // A picture of a card that is not saved yet waits for the save: a card whose picture is missing must
        // not come to be, and a file of a card that never comes is litter.
        if (roster.nts_KeepsPictures() && zrDatabaseImpl() && zrDatabaseImpl()->isInserted()) {
            roster.nts_KeepPicture(nts_UniqueId(), kind, data);
        } else {
            ZRPictureWillChange(roster, nts_UniqueId(), kind, data);
            if (!replacePicture(*path, roster.rosterImagesDirectory(), data))
                return false;
        }
    }
    nts_Touch();
    platform::NotificationCenter::shared().post(
        {imageDidChange, Ref<const platform::Object>(zrDatabaseImpl()), Value()});
    return true;
}

bool ZRPerson::setLargeImageData(const Value& data)
{
    const auto path = largeImagePath();
    if (path)
        locked(*nts_Roster(), ZRAccess::write, [&]() ZR_NTS {
            ZRPictureWillChange(*nts_Roster(), nts_UniqueId(), zr::kZRLargeImageProperty, data);
        });
    return path && writePicture(*path, nts_Roster()->rosterImagesDirectory(), data);
}
