// One damaged card among five good ones: the five are read, and the sixth is told.
#include "interchange/import/ImportWorld.h"

#include "interchange/import/CardFeed.h"

#include <algorithm>
#include <functional>

namespace {

using test::ImportTest;

/// What happens to a card at a place in its text, and whether somebody must be told.
struct Damage {
    const char* name;
    std::function<std::string(const std::string& card, std::size_t at)> inflict;
    bool isAlwaysTold;
};

const Damage damages[] = {
    {"cut off", [](const auto& card, auto at) { return card.substr(0, at) + "\r\n"; }, true},
    {"cut off without a line end", [](const auto& card, auto at) { return card.substr(0, at); }, true},
    {"its beginning lost", [](const auto& card, auto at) { return card.substr(at + 1); }, true},
    {"a stray BEGIN",
        [](const auto& card, auto at) {
            return card.substr(0, at) + "\r\nBEGIN:VCARD\r\n" + card.substr(at);
        },
        true},
    {"a stray END",
        [](const auto& card, auto at) { return card.substr(0, at) + "\r\nEND:VCARD\r\n" + card.substr(at); },
        true},
    {"zeros",
        [](const auto& card, auto at) { return card.substr(0, at) + std::string(7, '\0') + card.substr(at); },
        false},
    {"bytes of no character",
        [](const auto& card, auto at) { return card.substr(0, at) + "\xff\xfe\xc3" + card.substr(at); },
        false},
    {"a line end", [](const auto& card, auto at) { return card.substr(0, at) + "\n" + card.substr(at); },
        false},
    {"a quote", [](const auto& card, auto at) { return card.substr(0, at) + "\"" + card.substr(at); }, false},
    {"a soft break", [](const auto& card, auto at) { return card.substr(0, at) + "=\r\n" + card.substr(at); },
        false},
    {"a long line",
        [](const auto& card, auto at) {
            return card.substr(0, at) + std::string(100'000, 'x') + card.substr(at);
        },
        false},
    {"a piece lost",
        [](const auto& card, auto at) {
            return card.substr(0, at) + card.substr(std::min(card.size(), at + 30));
        },
        false},
};

constexpr std::size_t kPlaces = 40;

class DamageTest : public ImportTest {
protected:
    /// Imports `damaged` as the third of six cards; the names of those that were read, and all that was told.
    void import(const std::string& damaged)
    {
        good.clear();
        told = 0;
        ZRvCardController controller(roster);
        controller.setOutcome(ZRvCardController::Outcome::readOnly);
        controller.cardWasRead = [&](const auto& read) {
            if (!read.person)
                return;
            const std::string family(read.person->valueForProperty(kZRLastNameProperty).asText());
            const auto phone = read.person->valueForProperty(kZRPhoneProperty);
            if (family.starts_with("Family") && !phone.isNothing())
                good.insert(family);
        };
        std::string text = cards(5);
        const auto third = text.find("END:VCARD", text.find("END:VCARD") + 1) + 11;
        controller.importVCardData(text.insert(third, damaged));
        told = controller.result().refused;
        for (const auto& report : controller.result().reports)
            told += report.entries().size();
    }

    std::set<std::string> good;
    std::size_t told = 0;
};

TEST_F(DamageTest, HarmsNoOtherCard)
{
    const std::string whole = "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Damaged;Card;;;\r\nFN:Card "
                              "Damaged\r\nEMAIL;TYPE=WORK:d@example.com\r\n"
                              "NOTE;ENCODING=QUOTED-PRINTABLE:soft =\r\n "
                              "break\r\nPHOTO;ENCODING=b;TYPE=JPEG:/9j/4AAQSkZJRg\r\n ==\r\n"
                              "ADR;TYPE=\"HOME\":;;Street;City;;1;Land\r\nEND:VCARD\r\n";
    const std::set<std::string> five{"Family0", "Family1", "Family2", "Family3", "Family4"};
    for (const auto& damage : damages)
        for (std::size_t place = 0; place < kPlaces; ++place) {
            // From behind the first character to before the END of the card.
            const std::size_t at = 1 + place * (whole.find("END:VCARD") - 2) / kPlaces;
            SCOPED_TRACE(std::string(damage.name) + " at " + std::to_string(at));
            import(damage.inflict(whole, at));
            EXPECT_EQ(good, five);
            if (damage.isAlwaysTold) {
                EXPECT_GT(told, 0U);
            }
        }
}

} // namespace
