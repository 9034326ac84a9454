// Which program the user has chosen for links of a kind.
#pragma once

#include <string>
#include <string_view>

namespace platform {

/// The identifier, such as "org.example.Mail.desktop", of the program that opens `url`, as the freedesktop
/// "mimeapps.list" files name it: the user's before the system's, those of the running desktop before the
/// common ones. Empty when none does. Whether the program is installed is not looked at. Any thread.
std::string defaultApplicationForURL(std::string_view url);

} // namespace platform
