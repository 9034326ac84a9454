// Reads all cards of the input into dictionaries: every attempt must move on, and every value must be text
// where text is said to be.
#include "interchange/vcard/ZRVCardDictionaryValueSetter.h"
#include "interchange/vcard/ZRVCardParser.h"
#include "platform/text/Utf.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

void checkText(const platform::Value& value)
{
    if (value.isString() && !platform::isValidUTF8(value.asText()))
        std::abort();
    if (const auto* dictionary = value.asDictionary())
        for (const auto& [key, part] : dictionary->entries())
            checkText(part);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const auto parser =
        ZRVCardParser::initWithData(std::string_view(reinterpret_cast<const char*>(bytes), size));
    for (std::size_t attempts = 0; parser && !parser->atEnd(); ++attempts) {
        if (attempts > size)
            std::abort();
        ZRVCardDictionaryValueSetter setter;
        const bool imported = parser->importToValueSetter(setter);
        if (imported != parser->failureReason().empty())
            std::abort();
        checkText(std::move(setter).dictionaryRep());
    }
    return 0;
}
