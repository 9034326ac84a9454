// How notices travel between the processes of a user: through one file that all append to and read on in.
#pragma once

#include "platform/notify/DistributedNotificationCenter.h"
#include "platform/value/Error.h"

#include <memory>
#include <string>

namespace platform {

/// Told to subscribers of this name, or of any, when notices were passed over: what they stood for may have
/// changed in any way, so whoever keeps a copy of something looks at all of it again.
inline constexpr char kNoticesMissed[] = "org.quillon.platform.NoticesMissed";

/// The notification center over the notice file at `path`, in a private directory that exists.
///
/// A post appends one record and returns; posts of one process arrive in their order. A listener starts at
/// the end of the file and is woken by the kernel; where no host has adopted the main queue, what is posted
/// in its first twentieth of a second is heard at the end of that. One that was stopped or slow catches up
/// piece by piece, a bounded amount of memory at a time; when more was posted meanwhile than the file holds,
/// it is told `kNoticesMissed` and goes on from there. Of equal notices in a row it may hear one.
///
/// Ownership: shared; a subscription does not keep it alive.
/// Threads:   any; callbacks run on the main queue, also those of the poster's own process.
/// Errors:    what cannot be posted (over 512 KiB, no property list, no file) is logged and dropped. In a
///            forked child, posts and subscriptions do nothing.
std::shared_ptr<DistributedNotificationCenter> makeNoticeLog(std::string path);

/// The path of the user's notice file, "roster-notices" in the run-time directory; an Error where that is
/// refused. The file is made by the first who listens or posts.
Result<std::string> userNoticeFile();

/// The one of this process, over that file. Null, and logged, where the directory is refused; installing null
/// makes the service absent.
std::shared_ptr<DistributedNotificationCenter> userNoticeLog();

} // namespace platform
