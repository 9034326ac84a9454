// How the pictures of a person are read and compared.
#include "history/HistoryPictures.h"

#include "core/ZRConstants.h"
#include "core/ZRUniqueId.h"
#include "objectstore/ImageStream.h"
#include "platform/files/Files.h"

namespace history {

std::string picturePath(std::string_view directory, std::string_view uniqueId, std::string_view kind)
{
    std::string path(directory);
    path.append("/").append(uniqueId.substr(0, kZRUniqueIdTextLength));
    return kind == zr::kZRLargeImageProperty ? path + ".jpeg" : path;
}

Pictures picturesOf(std::string_view directory, std::string_view uniqueId)
{
    Pictures pictures;
    if (directory.empty())
        return pictures;
    for (const std::string_view kind : {zr::kZRImageProperty, zr::kZRLargeImageProperty}) {
        const std::string path = picturePath(directory, uniqueId, kind);
        if (!platform::isPlainFile(path))
            continue;
        if (auto bytes = platform::readFile(path))
            pictures.emplace(kind, std::move(*bytes));
    }
    return pictures;
}

std::int64_t hashOf(const Pictures& pictures)
{
    objectstore::ImageHash hash;
    for (const auto& [kind, bytes] : pictures)
        hash.add(kind + '\0' + bytes);
    return hash.value();
}

} // namespace history
