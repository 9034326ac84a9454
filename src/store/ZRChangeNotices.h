// The keys of a change notice that only the library's own processes read, and its bounds.
#pragma once

#include "core/ZRConstants.h"

#include <cstddef>
#include <string_view>

/// The keys of the lists of unique ids.
inline constexpr std::string_view kZRNoticeLists[] = {
    zr::kZRInsertedRecords, zr::kZRUpdatedRecords, zr::kZRDeletedRecords};

/// The effective user of the sender: a number.
inline constexpr char kZRUserUIDKey[] = "kZRUserUID";
/// The standardised directory of the roster; absent for the default directory, as it is before any
/// preference.
inline constexpr char kZRDatabaseDirectoryKey[] = "kZRDatabaseDirectory";
/// True in place of the lists of ids, when there were too many: whoever hears it looks at all that it holds.
inline constexpr char kZRReloadRecords[] = "ZRReloadRecords";
/// So many ids travel at most.
inline constexpr std::size_t kZRMostIdsInNotice = 1000;
