// Any bytes as a card: it is written and read back, and nothing may differ but what the list of losses says.
#include "Target.h"
#include "core/ZRConstants.h"
#include "interchange/vcard/Journey.h"
#include "platform/text/Utf.h"

#include <array>

namespace {

constexpr std::array kTexts = {kZRLastNameProperty, kZRFirstNameProperty, kZRMiddleNameProperty,
    kZRTitleProperty, kZRSuffixProperty, kZRNicknameProperty, kZRMaidenNameProperty,
    kZRFirstNamePhoneticProperty, kZROrganizationProperty, kZRDepartmentProperty, kZRJobTitleProperty,
    kZRNoteProperty};
constexpr std::array kEntries = {kZREmailProperty, kZRPhoneProperty, kZRAddressProperty, kZRURLsProperty,
    kZRCalendarURIsProperty, kZRRelatedNamesProperty, kZRAIMInstantProperty, kZRYahooInstantProperty};
constexpr std::array kAddressParts = {
    kZRAddressStreetKey, kZRAddressCityKey, kZRAddressStateKey, kZRAddressZIPKey, kZRAddressCountryKey};
constexpr std::array kLabels = {kZRHomeLabel, kZRWorkLabel, kZRPhoneMobileLabel, kZROtherLabel};
/// A name of 256 characters counts as none, wherever it is shown.
constexpr std::size_t kLongestText = 120;

/// Takes a card off the front of the input.
class Input {
public:
    Input(const std::uint8_t* bytes, std::size_t size) : _rest(reinterpret_cast<const char*>(bytes), size) { }

    std::uint8_t number()
    {
        const auto first = _rest.empty() ? std::uint8_t(0) : static_cast<std::uint8_t>(_rest.front());
        _rest.remove_prefix(_rest.empty() ? 0 : 1);
        return first;
    }

    /// Up to the next byte that no UTF-8 has. No NUL, which ends a text for the reader, and a letter behind
    /// each backslash: what one does in front of an escape is not on the list word for word. Nor does a
    /// text begin like a URI of a telephone or an e-mail address, which the preparation takes apart.
    std::string text()
    {
        const std::size_t end = std::min(_rest.find('\xFF'), std::min(_rest.size(), kLongestText));
        std::string text;
        for (const char c : platform::repairedUTF8(_rest.substr(0, end))) {
            if (!text.empty() && text.back() == '\\')
                text += 'x';
            if (c != '\0')
                text += c;
        }
        if (text.ends_with('\\'))
            text += 'n';
        if (text.find(':') != text.npos)
            text.insert(text.begin(), 'x');
        _rest.remove_prefix(std::min(end + 1, _rest.size()));
        return text;
    }

    bool isEmpty() const { return _rest.empty(); }

private:
    std::string_view _rest;
};

test::PlainEntry entryOf(Input& input, std::string_view property, std::uint8_t kind)
{
    test::PlainEntry entry;
    entry.label = kind < 200 ? std::string(kLabels[kind % kLabels.size()]) : input.text();
    if (entry.label.empty())
        entry.label.push_back(' ');
    if (property != kZRAddressProperty)
        entry.value[""] = input.text();
    else
        for (const auto part : kAddressParts)
            entry.value[std::string(part)] = input.text();
    return entry;
}

test::PlainCard cardOf(Input& input)
{
    test::PlainCard card;
    card.flags = input.number() & 63;
    for (int fields = 0; fields < 16 && !input.isEmpty(); ++fields) {
        const std::uint8_t what = input.number();
        if (what % 2 == 0) {
            card.texts[std::string(kTexts[what / 2 % kTexts.size()])] = input.text();
        } else {
            const auto property = kEntries[what / 2 % kEntries.size()];
            card.entries[std::string(property)].push_back(entryOf(input, property, input.number()));
        }
    }
    for (auto& [property, entries] : card.entries)
        entries.back().isPrimary = true;
    return card;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    static const fuzz::Home home;
    static const auto roster = [] {
        ZRRoster::setShouldCreateEmptyDatabase(true);
        auto made = ZRRoster::emptyMemoryBackedRoster();
        made->setDefaultCountryCode("us");
        return made;
    }();
    Input input(bytes, size);
    const std::uint8_t way = input.number();
    // The bits that chose 3.0 and 2.1 still do, so that seeds of old mean what they meant.
    const bool is40 = (way & 8) != 0;
    const test::Road road{.version = is40 ? test::Version::v40
            : (way & 1) != 0              ? test::Version::v21
                                          : test::Version::v30,
        .isPrepared = is40 || (way & 2) != 0,
        .withNote = (way & 4) == 0,
        .withPhoto = true,
        .countryCode = "us"};
    const auto person = cardOf(input).addTo(roster);
    const test::PlainCard before = test::PlainCard::of(*person);
    const std::string data = test::written(*person, road);
    roster->removeRecord(person);
    std::set<std::string_view> met;
    const test::PlainCard wanted = test::expected(before, road, met),
                          got = test::comesBack(data, road, roster);
    if (got != wanted) {
        std::fprintf(stderr, "before:\n%s\nwanted:\n%s\ngot:\n%s\n%s", before.text().c_str(),
            wanted.text().c_str(), got.text().c_str(), data.c_str());
        std::abort();
    }
    return 0;
}
