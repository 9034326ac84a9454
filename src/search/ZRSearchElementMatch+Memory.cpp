// What a comparison answers of one live record.
#include "core/ZRPerson.h"
#include "platform/text/Compare.h"
#include "search/ZRSearchElementMatch.h"

using platform::Value;

bool ZRSearchElementMatch::nts_MatchesRecord(const ZRRecord& record) const
{
    if (isWholeCard()) {
        const auto* person = dynamic_cast<const ZRPerson*>(&record);
        const Value text = person ? person->nts_StringForIndexing() : Value();
        return text.isString()
            && platform::contains(
                   text.asText(), _definition.value.asText(), platform::kCompareCaseInsensitive)
            != _isNegation();
    }
    return record.nts_ValueForProperty(_propertyOrEmpty()) == _definition.value;
}
