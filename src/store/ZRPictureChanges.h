// Who is told before the picture of a person changes.
#pragma once

#include "core/ZRGlobalLock.h"
#include "platform/value/Value.h"

#include <functional>
#include <string>
#include <string_view>

class ZRRoster;

/// Called with the global lock held, while the former picture is still there; `data` is what comes, nothing
/// for a picture that goes. The person may be one that is not saved yet, the picture one that is only kept
/// until the save.
using ZRPictureObserver = std::function<void(
    ZRRoster& roster, const std::string& uniqueId, std::string_view kind, const platform::Value& data)>;

/// Exchanges the observer of this process; empty for none, as at first.
void ZRObservePictures(ZRPictureObserver observer) ZR_NTS;
/// For whoever changes pictures.
void ZRPictureWillChange(
    ZRRoster& roster, const std::string& uniqueId, std::string_view kind, const platform::Value& data) ZR_NTS;
