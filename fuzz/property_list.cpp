// Any bytes as a property list: refused with a reason, or a value that comes back the same through both
// forms.
#include "Target.h"
#include "platform/value/KeyedArchive.h"
#include "platform/value/PropertyList.h"

namespace {

using namespace platform;
using fuzz::require;

/// Small, so that arrays which hold one another twice are unfolded in no time when they are written again.
constexpr PropertyListLimits kLimits{.depth = 512, .nodes = 1 << 16, .bytes = 1 << 22};

/// Holds whatever it finds under two keys, so that forged archives can nest.
class Pair : public Object {
public:
    explicit Pair(KeyedUnarchiver& coder)
        : _first(coder.decodeValue("a")), _second(coder.decodeValue("b")) { }

private:
    const Value _first, _second;
};

/// Writing ends at a fixed point: once written and read, the same bytes come again. Compared as bytes, since
/// a NaN is not equal to itself.
void checkRoundTrip(const Value& value, PropertyListFormat format)
{
    const auto first = encodePropertyList(value, format, kLimits);
    if (!first) {
        require(format == PropertyListFormat::xml
                || first.error().code == static_cast<long>(PropertyListFault::tooLarge),
            "a value that was read cannot be written", first.error().text);
        return;
    }
    const auto again = decodePropertyList(*first, kLimits);
    require(bool(again), "what was written cannot be read", again ? "" : again.error().text);
    const auto second = encodePropertyList(*again, format, kLimits);
    require(second && *second == *first, "written twice, not the same");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(bytes), size);
    const auto value = decodePropertyList(text, kLimits);
    if (!value) {
        require(!value.error().text.empty(), "refused without a reason");
        return 0;
    }
    checkRoundTrip(*value, PropertyListFormat::binary);
    checkRoundTrip(*value, PropertyListFormat::xml);
    static const ArchiveClasses classes{
        {"Pair", [](KeyedUnarchiver& coder) -> Ref<const Object> { return makeRef<Pair>(coder); }}};
    KeyedUnarchiver(text, classes, kLimits).decodeValue("root");
    return 0;
}
