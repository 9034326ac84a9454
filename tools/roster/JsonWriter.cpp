// Cards as one JSON array, a card at a time.
#include "CardJson.h"
#include "CardWriter.h"

#include "core/ZRConstants.h"
#include "core/ZRPerson.h"

namespace {

class JsonWriter final : public CardWriter {
public:
    explicit JsonWriter(ExportScope scope) : _scope(scope) { }

    // An array of one card, less its brackets, stands as deep as in the array of all.
    std::string card(ZRPerson& person) override
    {
        Json card = cardJson(person);
        if (!_scope.notes)
            card["properties"].erase(zr::kZRNoteProperty);
        const std::string array = jsonText(Json::array({std::move(card)}));
        constexpr std::size_t bracket = 2;
        const bool isFirst = !std::exchange(_hasCards, true);
        return (isFirst ? "[\n" : ",\n") + array.substr(bracket, array.size() - 2 * bracket);
    }

    std::string end() override { return _hasCards ? "\n]\n" : "[]\n"; }

private:
    const ExportScope _scope;
    bool _hasCards = false;
};

} // namespace

std::unique_ptr<CardWriter> jsonWriter(ExportScope scope) { return std::make_unique<JsonWriter>(scope); }
