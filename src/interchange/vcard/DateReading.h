// How the dates of a vCard are read.
#pragma once

#include "platform/value/Value.h"

#include <optional>
#include <string_view>

/// The moment of a date in one of the forms of ISO 8601 that vCards use (RFC 2426 §3.1.5), or absent.
///
/// Eight characters without a dash are "19700501": noon of that day, GMT. All else is numbers with one
/// character between them, "1970-05-01" with a time or without, in the user's zone; what stands for a zone is
/// passed over. A time of 00:00:00, or none, is noon, which stays on its day in nearly every zone.
std::optional<platform::Date> dateFromISO8601String(std::string_view text);

/// A birthday: also "-19700501", and the "Fri, May 1, 1970" of an old writer.
std::optional<platform::Date> dateFromBirthdayString(std::string_view text);
