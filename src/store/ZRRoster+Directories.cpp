// Where a roster lives: its directory, and the files in it.
#include "platform/files/Directories.h"
#include "platform/files/Files.h"
#include "platform/files/UserDefaults.h"
#include "platform/files/ZRUserDefaults.h"
#include "platform/run/NeverDestroyed.h"
#include "store/ZRRosterState.h"
#include "store/ZRStoreFile.h"

#include <mutex>

namespace {

constexpr std::string_view storeFile = "/Roster-v22.zrosdb";
constexpr std::string_view mailRecentsFile = "/MailRecents-v4.zrosmr";
constexpr std::string_view legacyFile = "/Roster.data";
constexpr std::string_view lockFile = "/.database.lock";
constexpr std::string_view saveFile = "/.savefile";
constexpr std::string_view metadataDirectory = "/Metadata";
constexpr std::string_view imagesDirectory = "/Images";

std::string preferredDirectory()
{
    for (const char* key : {"ZRAlternateDataStoreDirectory", "ZRDatabaseDirectory"})
        if (const auto path = platform::UserDefaults::standard().objectForKey(key); !path.asText().empty())
            return platform::standardizedPath(path.asText());
    return ZRRoster::defaultRosterDirectory();
}

std::string under(const std::string& directory, std::string_view name)
{
    return directory.empty() ? std::string() : directory + std::string(name);
}

} // namespace

bool zrHasStoreFile(const std::string& directory)
{
    return platform::fileExists(under(directory, storeFile));
}

std::string ZRRoster::defaultRosterDirectory()
{
    return platform::standardizedPath(platform::Directories::current()->dataHome() + "/Roster");
}

std::string ZRRoster::rosterDirectory()
{
    // Threads of ours may still ask while the process ends.
    static const platform::NeverDestroyed<const std::string> directory(preferredDirectory());
    return *directory;
}

std::string ZRRoster::rosterTempImagesDirectory()
{
    return platform::Directories::current()->temporary() + "/org.quillon.Roster.thumbnailcache";
}

std::string ZRRoster::classRosterImagesDirectory() { return under(rosterDirectory(), imagesDirectory); }
std::string ZRRoster::classRosterDataFile() { return under(rosterDirectory(), legacyFile); }
std::string ZRRoster::classRosterSaveFile() { return under(rosterDirectory(), saveFile); }
std::string ZRRoster::rosterMetadataDirectory() { return under(rosterDirectory(), metadataDirectory); }

std::string ZRRoster::databaseDirectory() const { return _state->directory; }
std::string ZRRoster::rosterObjectStoreDatabaseFile() const { return under(_state->directory, storeFile); }
std::string ZRRoster::mailRecentsObjectStoreDatabaseFile() const
{
    return under(_state->directory, mailRecentsFile);
}
std::string ZRRoster::rosterDataFile() const { return under(_state->directory, legacyFile); }
std::string ZRRoster::rosterLockFile() const { return under(_state->directory, lockFile); }
std::string ZRRoster::rosterSaveFile() const { return under(_state->directory, saveFile); }
std::string ZRRoster::rosterMetaDataDirectory() const { return under(_state->directory, metadataDirectory); }

std::string ZRRoster::rosterImagesDirectory() const
{
    const platform::Lock guard(_state->monitor);
    return _state->imagesDirectory.empty() ? under(_state->directory, imagesDirectory)
                                           : _state->imagesDirectory;
}

void ZRRoster::setRosterImagesDirectory(const std::string& directory)
{
    const platform::Lock guard(_state->monitor);
    _state->imagesDirectory = directory;
}
