// What passes between C and the library: handles in, owned handles out, and never an exception.
#include "api/Border.h"

#include "core/ZRFailure.h"
#include "objectstore/StoreErrors.h"
#include "platform/run/Log.h"
#include "platform/value/Unicode.h"
#include "search/ZRSearchElement.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

#include <cstdint>

using platform::Object;
using platform::Ref;
using platform::Value;

namespace border {

namespace {

void log(std::string_view what) noexcept
try {
    platform::log(fmt::format("A plain function failed: {}", what));
} catch (...) {
    platform::log("A plain function failed, for want of memory");
}

} // namespace

void tellOfException() noexcept
try {
    throw;
} catch (const Refused&) {
} catch (const ZRInvalidArgument&) {
} catch (const ZRUnimplementedOperation&) {
} catch (const ZRForkedProcess&) {
} catch (const ZRIncompatibleSearchElementVersionException&) {
} catch (const objectstore::InaccessibleObject&) {
} catch (const std::exception& other) {
    log(other.what());
} catch (...) {
    log("an unknown exception");
}

const Object* objectBehind(ZRTypeRef handle)
{
    return isBareWord(handle) ? nullptr : reinterpret_cast<const Object*>(handle);
}

Value value(ZRTypeRef handle)
{
    const Object* const object = objectBehind(handle);
    if (handle && !object)
        throw Refused();
    return valueOf(object);
}

std::string_view text(const char* utf8)
{
    if (!utf8 || !platform::propertylist::isUTF8(utf8))
        throw Refused();
    return utf8;
}

std::optional<std::string_view> optionalText(const char* utf8)
{
    return utf8 ? std::optional(text(utf8)) : std::nullopt;
}

ZRTypeRef handedOver(Ref<const Object> object) { return borrowed(object.leak()); }

ZRTypeRef owned(const Value& value) { return handedOver(objectOf(value)); }

ZRTypeRef ownedText(const std::optional<std::string>& text) { return text ? owned(Value(*text)) : nullptr; }

ZRTypeRef owned(const ZRRecordList& records)
{
    return owned(Value::array(std::vector<Value>(records.begin(), records.end())));
}

ZRTypeRef owned(const std::vector<std::string>& texts)
{
    return owned(Value::array(std::vector<Value>(texts.begin(), texts.end())));
}

void keepPicturesOf(ZRRoster& roster)
{
    locked(roster, ZRAccess::write, [&]() ZR_NTS { roster.nts_SetKeepsPictures(true); });
}

} // namespace border
