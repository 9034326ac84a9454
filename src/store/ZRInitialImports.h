// What goes into a roster when it is first opened.
#pragma once

#include "core/ZRGlobalLock.h"

#include "platform/value/Value.h"

class ZRRoster;

/// Once a process for each directory: what is legacy is converted, what is lost rebuilt, and a new roster
/// gets its Me card and its sample cards. The global lock and the file lock are held.
void nts_DoInitialImports(ZRRoster& roster) ZR_NTS;

/// Converts the legacy file of the roster's directory, if there is one and a service that reads it.
void nts_ImportRosterFromMetaKitIfNeeded(ZRRoster& roster) ZR_NTS;

/// Rebuilds the roster from its metadata files when its store was lost; true when there was nothing to do or
/// it worked.
bool nts_RestoreFromMetaDataIfNeeded(ZRRoster& roster) ZR_NTS;

/// The properties of the Me card that the first-run assistant's answers give: property names with their
/// values.
platform::Value firstRunMeProperties(const platform::Value& answers, const std::string& defaultCountryCode);
