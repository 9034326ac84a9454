// Pictures of people that are not saved yet: kept until just before the commit, so that none is ever missing.
#include "core/ZRConstants.h"
#include "core/ZRUniqueId.h"
#include "platform/files/Files.h"
#include "platform/run/Log.h"
#include "store/ZRRosterState.h"

#include <fmt/format.h>

using platform::Value;

void ZRRoster::nts_SetKeepsPictures(bool keeps) { _state->keepsPictures = keeps; }
bool ZRRoster::nts_KeepsPictures() const { return _state->keepsPictures; }

void ZRRoster::nts_KeepPicture(const std::string& uniqueId, std::string_view kind, const Value& data)
{
    _state->pictures[{uniqueId, std::string(kind)}] = data;
}

Value ZRRoster::nts_PendingPicture(const std::string& uniqueId, std::string_view kind) const
{
    const auto at = _state->pictures.find({uniqueId, std::string(kind)});
    return at == _state->pictures.end() ? Value() : at->second;
}

std::string ZRRoster::picturePath(const std::string& uniqueId, std::string_view kind) const
{
    const std::string path = rosterImagesDirectory() + "/" + uniqueId.substr(0, kZRUniqueIdTextLength);
    return kind == zr::kZRLargeImageProperty ? path + ".jpeg" : path;
}

// Before the commit: a crash in between leaves a file that no card has, never a card whose picture is
// missing.
bool ZRRoster::nts_writePictures()
{
    if (_state->pictures.empty())
        return true;
    auto written = platform::makePrivateDirectory(rosterImagesDirectory());
    std::vector<platform::FileContents> files;
    for (const auto& [of, data] : _state->pictures)
        if (data.isData())
            files.push_back({picturePath(of.first, of.second), data.asBytes()});
    if (written)
        written = platform::writeFilesAtomically(files);
    if (written)
        return true;
    _state->lastSaveError = written.error();
    platform::log(fmt::format("Caught exception setting image data: {}", written.error().text));
    nts_removeWrittenPictures();
    return false;
}

void ZRRoster::nts_removeWrittenPictures()
{
    for (const auto& [of, data] : _state->pictures)
        if (const auto path = picturePath(of.first, of.second); platform::isPlainFile(path))
            static_cast<void>(platform::removeFile(path));
}
