// How the user of the lists saves, and is told why a save failed.
#include "store/ZRDBCacheState.h"

#include "platform/files/Resources.h"
#include "platform/run/Dispatch.h"
#include "platform/run/Log.h"
#include "platform/run/Thread.h"
#include "store/ZRServices.h"

#include <fmt/format.h>

#include <filesystem>
#include <optional>
#include <unistd.h>

using platform::Ref;

namespace {

constexpr std::uintmax_t kKilobyte = 1024;

/// The key of the text that says why a save to `file` may have failed; absent where nobody can say.
std::optional<std::string_view> causeOfFailure(const std::string& file)
{
    std::error_code unknown;
    const auto size = std::filesystem::file_size(file, unknown) / kKilobyte;
    if (unknown)
        return {};
    const auto volume = std::filesystem::space(file, unknown);
    if (unknown)
        return {};
    // A save may need the file again for its log, and room to move.
    if (3 * size + 10 >= volume.available / kKilobyte)
        return "LOW_DISK_SPACE";
    return access(file.c_str(), R_OK | W_OK) != 0 ? "DB_ADJUST_PERMISSIONS" : "DB_CORRUPT";
}

ZRAlert alertFor(std::string_view messageKey)
{
    const auto text = [](std::string_view key) {
        return platform::StringTables::shared().string(key, "ZRStrings");
    };
    return {.messageKey = std::string(messageKey),
        .title = text("DB_ERROR"),
        .message = text(messageKey),
        .button = text("QUIT")};
}

} // namespace

bool ZRDBCache::nonThreadedSave()
{
    if (_state->roster->_isReadOnly())
        return false;
    if (_state->roster->save())
        return true;
    _saveFailed();
    return false;
}

bool ZRDBCache::threadedSave()
{
    if (!_state->roster->hasUnsavedChanges())
        return true;
    const auto save = [cache = Ref<ZRDBCache>(this)] { cache->_threadedSave(); };
    // Without a thread to give, it is done here: late is better than never.
    if (!platform::startThread("roster-save", save))
        save();
    return true;
}

void ZRDBCache::_threadedSave()
{
    const platform::Lock oneAtATime(_state->threadedSaveLock);
    if (_state->roster->_isReadOnly() || _state->roster->save())
        return;
    zr_dispatch_main([cache = Ref<ZRDBCache>(this)] { cache->_saveFailed(); });
}

void ZRDBCache::_saveFailed()
{
    const std::string file = _state->roster->rosterObjectStoreDatabaseFile();
    const auto cause = causeOfFailure(file);
    if (!cause)
        return;
    const ZRAlert alert = alertFor(*cause);
    platform::log(fmt::format("{}: {}", alert.title, alert.message));
    if (const auto& run = ZRServices::registered().runAlert)
        run(alert);
}
