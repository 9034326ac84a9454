// How one data is read, card by card.
#include "interchange/import/CardReader.h"

#include "interchange/import/ImportPlan.h"
#include "interchange/vcard/ZRVCardParser.h"

#include <algorithm>

namespace interchange {

CardReader::CardReader(std::string_view bytes, const VCardReaderContext& context)
    : _bytes(bytes), _parser(ZRVCardParser::initWithData(bytes, context))
{
}

CardReader::~CardReader() = default;

bool CardReader::next(ReadCard& card)
{
    const bool isAtEnd = _done > 0 && rest().find_first_not_of(" \t\r\n") == std::string_view::npos;
    if (!_parser || _isBroken || isAtEnd)
        return false;
    _isBroken = !_parser->importToValueSetter(card.values.emplace());
    card.length = _parser->cursor() - _done;
    if (_isBroken) {
        card.values.reset();
        card.refusal = _parser->failureReason();
    } else {
        card.digest = digestOfCard(_bytes.substr(_done, card.length));
    }
    _done += card.length;
    return true;
}

std::string_view firstLineOf(std::string_view text)
{
    constexpr std::size_t longest = 200;
    const auto from = std::min(text.find_first_not_of("\r\n"), text.size());
    return text.substr(from, std::min(text.find_first_of("\r\n", from) - from, longest));
}

} // namespace interchange
