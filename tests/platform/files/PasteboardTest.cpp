// What was copied: its forms, and how one sees that something else was copied since.
#include "platform/files/Pasteboard.h"

#include <gmock/gmock.h>

namespace platform {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(Pasteboard, HoldsOneValueForEachTypeUntilTheNextCopy)
{
    const auto pasteboard = makePasteboard();
    const auto first = pasteboard->clearContents();
    EXPECT_TRUE(pasteboard->setValue("b", "text"));
    EXPECT_TRUE(pasteboard->setValue(5, "number"));
    EXPECT_TRUE(pasteboard->setValue("a", "text"));
    EXPECT_THAT(pasteboard->types(), ElementsAre("text", "number"));
    EXPECT_EQ(pasteboard->valueForType("text").asText(), "a");
    EXPECT_TRUE(pasteboard->valueForType("image").isAbsent());
    EXPECT_EQ(pasteboard->changeCount(), first) << "more forms of the same";
    EXPECT_GT(pasteboard->clearContents(), first);
    EXPECT_THAT(pasteboard->types(), IsEmpty());
}

} // namespace
} // namespace platform
