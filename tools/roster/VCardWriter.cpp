// Cards as vCards, by the library's own writer.
#include "CardWriter.h"

#include "core/ZRPerson.h"

namespace {

/// Version 3.0 or 2.1.
template <auto append>
class VCardWriter final : public CardWriter {
public:
    explicit VCardWriter(ExportScope scope)
        : _options((scope.notes ? kZRVCardWithNote : 0) | (scope.pictures ? kZRVCardWithPhoto : 0))
    {
    }

    std::string card(ZRPerson& person) override
    {
        std::string text;
        (person.*append)(text, _options);
        return text;
    }

private:
    const ZRVCardOptions _options;
};

} // namespace

std::unique_ptr<CardWriter> cardWriterFor(const std::string& format, ExportScope scope, ZRRoster& roster)
{
    if (format == "json")
        return jsonWriter(scope);
    if (format == "csv")
        return csvWriter(scope, roster);
    if (format == "vcard21")
        return std::make_unique<VCardWriter<&ZRPerson::_append21vCardRepresentation>>(scope);
    return std::make_unique<VCardWriter<&ZRPerson::_appendVCardRepresentation>>(scope);
}
