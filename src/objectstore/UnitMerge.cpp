// How units are merged.
#include "objectstore/UnitMerge.h"

namespace objectstore {

void UnitMerge::plan() { }
void UnitMerge::finishWriting() { }

} // namespace objectstore
