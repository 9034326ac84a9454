// Which files an import reads: those that it is given, those in folders, and those that a program promised.
#include "interchange/import/ZRvCardController+State.h"

#include "core/ZRGroup.h"
#include "core/ZRPerson.h"
#include "interchange/import/ImportFile.h"
#include "platform/files/Directories.h"
#include "platform/files/Files.h"
#include "platform/run/Log.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include <pwd.h>
#include <unistd.h>

using platform::Ref;
namespace fs = std::filesystem;

namespace {

/// The work is shown when there is more than this to read.
constexpr std::uint64_t kBytesToShow = 204'800;
constexpr std::size_t kFilesToShow = 51;

bool isCardFile(const fs::path& path)
{
    std::string extension = path.extension().string();
    std::ranges::transform(
        extension, extension.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
    return extension == ".vcf" || extension == ".vcard";
}

std::vector<std::string> cardFilesIn(const std::string& folder)
{
    std::vector<std::string> files;
    std::error_code failure;
    for (fs::recursive_directory_iterator at(folder, fs::directory_options::skip_permission_denied, failure),
         end;
         !failure && at != end; at.increment(failure))
        if (isCardFile(at->path()) && platform::isPlainFile(at->path().string()))
            files.push_back(at->path().string());
    std::ranges::sort(files);
    return files;
}

std::string resolved(const std::string& path)
{
    std::error_code failure;
    const auto canonical = fs::weakly_canonical(path, failure);
    return failure ? path : canonical.string();
}

std::uint64_t sizeOf(const std::string& path)
{
    std::error_code failure;
    const auto size = fs::is_regular_file(path, failure) ? fs::file_size(path, failure) : 0;
    return failure ? 0 : size;
}

std::string userName()
{
    const passwd* const user = ::getpwuid(::geteuid());
    return user && user->pw_name ? user->pw_name : fmt::format("{}", ::geteuid());
}

} // namespace

std::vector<std::string> ZRvCardController::allImportableFilesFromPaths(const std::vector<std::string>& paths)
{
    std::vector<std::string> files;
    for (const auto& path : paths) {
        if (path == interchange::kStandardInput || !platform::isDirectory(path)) {
            files.push_back(path);
            continue;
        }
        for (auto& file : cardFilesIn(path))
            files.push_back(std::move(file));
    }
    return files;
}

bool ZRvCardController::containsMetaDataCacheCards(const std::vector<std::string>& paths) const
{
    const std::string directory =
        _state->target ? _state->target->rosterMetaDataDirectory() : ZRRoster::rosterMetadataDirectory();
    return !paths.empty() && !directory.empty()
        && resolved(paths.front()).starts_with(resolved(directory) + "/");
}

bool ZRvCardController::importVCardFiles(const std::vector<std::string>& paths, const Ref<ZRGroup>& group)
{
    const auto files = allImportableFilesFromPaths(paths);
    if (containsMetaDataCacheCards(files)) {
        if (const auto cached = platform::readFile(files.front()))
            static_cast<void>(ZRPerson::initWithVCardRepresentation(*cached));
        _state->result.skipped += files.size();
        if (importFinished)
            importFinished();
        return true;
    }
    _state->group = group;
    _state->sources.clear();
    _state->totalBytes = 0;
    for (const auto& file : files) {
        const bool isStandardInput = file == interchange::kStandardInput;
        _state->sources.push_back({isStandardInput ? "standard input" : file, file, {}});
        _state->totalBytes += isStandardInput ? 0 : sizeOf(file);
    }
    return importVCards();
}

bool ZRvCardController::importFile(const std::string& path) { return importVCardFiles({path}); }

bool ZRvCardController::importVCardData(std::string_view data, const Ref<ZRGroup>& group)
{
    _state->group = group;
    _state->sources = {{"data", "", data}};
    _state->totalBytes = data.size();
    return importVCards();
}

bool ZRvCardController::showsImportProgress() const
{
    return _state->totalBytes > kBytesToShow || _state->sources.size() >= kFilesToShow;
}

bool ZRvCardController::importPromisedFiles(
    const std::function<std::vector<std::string>(const std::string& folder)>& drop, const Ref<ZRGroup>& group)
{
    const std::string folder = fmt::format(
        "{}/{}/ZRPromise{}", platform::Directories::current()->temporary(), userName(), ::getpid());
    if (const auto made = platform::makePrivateDirectory(folder); !made)
        return fail(made.error());
    _state->promisedFolder = folder;
    return importVCardFiles(drop(folder), group);
}

void ZRvCardController::cleanUp()
{
    if (_state->promisedFolder.empty())
        return;
    if (const auto removed = platform::removeFile(_state->promisedFolder); !removed)
        platform::log(removed.error().text);
    _state->promisedFolder.clear();
}
