// What the plain functions for addresses do, ahead of their form in C.
#pragma once

#include "core/ZRExport.h"
#include "platform/value/Value.h"

class ZRRoster;

/// The plain text of `formattedAddressFromDictionary`; absent when that fails, for whatever reason.
ZR_EXPORT platform::Value ZRCreateFormattedAddressFromDictionary(
    ZRRoster& roster, const platform::Value& address) noexcept;

/// `defaultCountryCode`; absent when that fails.
ZR_EXPORT platform::Value ZRCopyDefaultCountryCode(ZRRoster& roster) noexcept;
