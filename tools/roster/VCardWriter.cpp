// Cards as vCards, by the library's own writer.
#include "CardWriter.h"

#include "core/ZRPerson.h"
#include "interchange/vcard/VCard40.h"

namespace {

using Append = void (*)(const ZRPerson& person, std::string& cards, ZRVCardOptions options);

/// Of any version.
template <Append append>
class VCardWriter final : public CardWriter {
public:
    explicit VCardWriter(ExportScope scope)
        : _options((scope.notes ? kZRVCardWithNote : 0) | (scope.pictures ? kZRVCardWithPhoto : 0))
    {
    }

    std::string card(ZRPerson& person) override
    {
        std::string text;
        append(person, text, _options);
        return text;
    }

private:
    const ZRVCardOptions _options;
};

void append21(const ZRPerson& person, std::string& cards, ZRVCardOptions options)
{
    person._append21vCardRepresentation(cards, options);
}

void append30(const ZRPerson& person, std::string& cards, ZRVCardOptions options)
{
    person._appendVCardRepresentation(cards, options);
}

} // namespace

std::unique_ptr<CardWriter> cardWriterFor(const std::string& format, ExportScope scope, ZRRoster& roster)
{
    if (format == "json")
        return jsonWriter(scope);
    if (format == "csv")
        return csvWriter(scope, roster);
    if (format == "vcard21")
        return std::make_unique<VCardWriter<append21>>(scope);
    if (format == "vcard4")
        return std::make_unique<VCardWriter<zrAppendVCard40>>(scope);
    return std::make_unique<VCardWriter<append30>>(scope);
}
