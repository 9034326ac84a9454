// What the action on an address leaves on the pasteboard.
#include "app/ZRActionAddressCopyMailingLabel.h"
#include "platform/files/Pasteboard.h"
#include "store/RosterWorld.h"

#include <gtest/gtest.h>

namespace test {

namespace {

class MailingLabel : public testing::Test {
protected:
    MailingLabel() { platform::Pasteboard::install(platform::makePasteboard()); }
    ~MailingLabel() override { platform::Pasteboard::install(nullptr); }

    Ref<ZRPerson> ana(const Value& company, const Value& first = "Ana") const
    {
        const auto home = Value::dictionary({{"Street", "Ring 1"}, {"ZIP", "1010"}, {"City", "Wien"},
            {"Country", "Austria"}, {"CountryCode", "at"}});
        const auto office = Value::dictionary(
            {{"Street", "Way\x0E 2\x0F"}, {"City", "Austin"}, {"State", "TX"}, {"CountryCode", "us"}});
        return person(roster,
            {{kZRFirstNameProperty, first}, {kZROrganizationProperty, company},
                {kZRAddressProperty,
                    multiValue({{home, kZRAddressHomeLabel}, {office, kZRAddressWorkLabel}})}});
    }

    /// The label that is copied for the address at `index`.
    Value copied(const Ref<ZRPerson>& person, ZRIndex index) const
    {
        const Value addresses = person->valueForProperty(kZRAddressProperty);
        action.performActionForPerson(*person, addresses.as<ZRMultiValue>()->identifierAtIndex(index));
        return platform::Pasteboard::general()->valueForType("text/plain;charset=utf-8");
    }

    const Ref<ZRRoster> roster = ZRRoster::emptyMemoryBackedRoster();
    const ZRActionAddressCopyMailingLabel action{};
};

} // namespace

TEST_F(MailingLabel, HasTheNameThenTheCompanyExceptAtHome)
{
    const std::string home = "Ring 1\n1010\u200E Wien\nAustria", office = "Way 2\nAustin\u200E TX\u200E \n";
    EXPECT_EQ(copied(ana("Acme"), 0), Value("Ana\n" + home));
    EXPECT_EQ(copied(ana("Acme"), 1), Value("Ana\nAcme\n" + office));
    EXPECT_EQ(copied(ana({}), 1), Value("Ana\n" + office));
    EXPECT_EQ(copied(ana("Acme", {}), 1), Value("Acme\n" + office));
}

TEST_F(MailingLabel, LeavesThePasteboardAloneWithoutAnAddress)
{
    const auto pasteboard = platform::Pasteboard::general();
    pasteboard->setValue("kept", "text");
    const auto before = pasteboard->changeCount();
    action.performActionForPerson(*ana("Acme"), "no such entry");
    action.performActionForPerson(*person(roster, {{kZRFirstNameProperty, "Bo"}}), "");
    EXPECT_EQ(pasteboard->changeCount(), before);
    EXPECT_EQ(pasteboard->valueForType("text"), Value("kept"));
}

TEST_F(MailingLabel, IsOfferedForAddresses)
{
    const auto anybody = ana({});
    EXPECT_EQ(action.actionProperty(), kZRAddressProperty);
    EXPECT_EQ(action.titleForPerson(*anybody, ""), "Copy Mailing Label");
    EXPECT_TRUE(action.shouldEnableActionForPerson(*anybody, ""));
}

} // namespace test
