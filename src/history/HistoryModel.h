// Which records have a history, and what of them counts.
#pragma once

#include "objectstore/ImageModel.h"

namespace history {

/// People and groups of all kinds. Their modification dates, what a smart group remembers of its members, and
/// the mark of the last import are kept, and do not count.
const objectstore::ImageModel& imageModel();

} // namespace history
