// Pictures of people that are not saved yet: kept until just before the commit, so that none is ever missing.
#include "core/ZRConstants.h"
#include "core/ZRUniqueId.h"
#include "platform/files/Files.h"
#include "store/PictureWriting.h"
#include "store/ZRPictureChanges.h"
#include "store/ZRRosterState.h"

using platform::Value;

namespace {

ZRPictureObserver& pictureObserver()
{
    static auto* const observer = new ZRPictureObserver;
    return *observer;
}

} // namespace

void ZRObservePictures(ZRPictureObserver observer) { pictureObserver() = std::move(observer); }

void ZRPictureWillChange(
    ZRRoster& roster, const std::string& uniqueId, std::string_view kind, const Value& data)
{
    if (const auto& observer = pictureObserver())
        observer(roster, uniqueId, kind, data);
}

void ZRRoster::nts_SetKeepsPictures(bool keeps) { _state->keepsPictures = keeps; }
bool ZRRoster::nts_KeepsPictures() const { return _state->keepsPictures; }

void ZRRoster::nts_KeepPicture(const std::string& uniqueId, std::string_view kind, const Value& data)
{
    ZRPictureWillChange(*this, uniqueId, kind, data);
    _state->pictures[{uniqueId, std::string(kind)}] = data;
}

Value ZRRoster::nts_PendingPicture(const std::string& uniqueId, std::string_view kind) const
{
    if (_state->pictures.empty())
        return {};
    const auto at = _state->pictures.find({uniqueId, std::string(kind)});
    return at == _state->pictures.end() ? Value() : at->second;
}

std::string ZRRoster::picturePath(const std::string& uniqueId, std::string_view kind) const
{
    const std::string path = rosterImagesDirectory() + "/" + uniqueId.substr(0, kZRUniqueIdTextLength);
    return kind == zr::kZRLargeImageProperty ? path + ".jpeg" : path;
}

// A card that is there already has a picture to lose: should the save fail, it gets that back.
PictureWriting ZRRoster::nts_writePictures() const
{
    if (_state->pictures.empty())
        return {};
    std::vector<platform::FileContents> files;
    for (const auto& [of, data] : _state->pictures) {
        if (!data.isData())
            continue;
        std::string path = picturePath(of.first, of.second);
        if (platform::isPlainFile(path))
            if (auto replaced = platform::readFile(path))
                _state->replacedPictures[path] = std::move(*replaced);
        files.push_back({std::move(path), data.asBytes()});
    }
    return PictureWriting(rosterImagesDirectory(), std::move(files));
}

void ZRRoster::nts_removeWrittenPictures()
{
    for (const auto& [of, data] : _state->pictures) {
        const auto path = picturePath(of.first, of.second);
        if (const auto replaced = _state->replacedPictures.find(path);
            replaced != _state->replacedPictures.end())
            static_cast<void>(platform::writeFileAtomically(path, replaced->second));
        else if (platform::isPlainFile(path))
            static_cast<void>(platform::removeFile(path));
    }
    _state->replacedPictures.clear();
}
