// How cards become people, and people cards: vCards in and out.
#include "api/Border.h"
#include "api/ZRPeopleFunctions.h"
#include "core/ZRPerson.h"
#include "interchange/vcard/RosterReaderContext.h"
#include "interchange/vcard/ZRVCardParser.h"
#include "interchange/vcard/prepare/Preparation.h"
#include "store/ZRRoster.h"

using border::as;
using border::guarded;
using border::owned;
using platform::Ref;
using platform::Value;
using namespace vcard::prepare;

namespace {

Value finding(
    std::size_t card, std::size_t line, std::string_view subject, std::string_view what, Action done)
{
    return Value::dictionary({{"card", static_cast<ZRIndex>(card)}, {"line", static_cast<ZRIndex>(line)},
        {"subject", subject}, {"what", what}, {"done", textOf(done)}});
}

/// Reads the cards of one data, each by a parser of its own.
class CardReading {
public:
    CardReading(ZRRoster& roster, std::string_view bytes)
        : _roster(roster)
        , _context(roster)
        , _preparation(bytes, {.file = "", .preferredEncoding = _context.preferredEncoding()})
    {
    }

    void readAll()
    {
        CanonicalCard card;
        while (_preparation.next(card))
            if (!card.text.empty())
                readOne(card);
    }

    const ZRRecordList& people() const { return _people; }

    /// What the preparation found, then which cards the reader refused all the same.
    Value report() const
    {
        std::vector<Value> findings;
        for (const Report::Entry& entry : _preparation.report().entries())
            findings.push_back(finding(
                entry.card, entry.line, entry.subject, textOf(entry.finding), actionOf(entry.finding)));
        findings.insert(findings.end(), _refusals.begin(), _refusals.end());
        return Value::array(std::move(findings));
    }

private:
    void readOne(const CanonicalCard& card)
    {
        const auto parser = ZRVCardParser::initWithData(card.text, _context);
        std::size_t length = 0;
        if (const auto person = parser ? parser->nextPersonWithLength(length, _roster) : nullptr)
            _people.push_back(person);
        else
            _refusals.push_back(finding(card.number, card.line, card.firstLine,
                parser ? parser->failureReason() : "there is nothing in it", Action::refused));
    }

    ZRRoster& _roster;
    const RosterReaderContext _context;
    Preparation _preparation;
    ZRRecordList _people;
    std::vector<Value> _refusals;
};

} // namespace

ZRPersonRef ZRPersonCreateWithVCardRepresentation(ZRDataRef vCard)
{
    return guarded([&] {
        const auto bytes = as<const platform::Data>(vCard).bytes();
        if (const auto roster = ZRRoster::sharedRoster())
            border::keepPicturesOf(*roster);
        return owned(ZRPerson::initWithVCardRepresentation(bytes));
    });
}

ZRDataRef ZRPersonCopyVCardRepresentation(ZRPersonRef person)
{
    return guarded([&] {
        const auto card = as<ZRPerson>(person).vCardRepresentation();
        return card ? owned(Value::data(*card)) : nullptr;
    });
}

ZRArrayRef ZRCopyPeopleFromVCardData(ZRRosterRef roster, ZRDataRef vCards, ZRArrayRef* outReport)
{
    if (outReport)
        *outReport = nullptr;
    return guarded([&] {
        auto& target = as<ZRRoster>(roster);
        CardReading reading(target, as<const platform::Data>(vCards).bytes());
        border::keepPicturesOf(target);
        reading.readAll();
        ZRArrayRef people = owned(reading.people());
        if (outReport)
            *outReport = owned(reading.report());
        return people;
    });
}
