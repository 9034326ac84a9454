// What the public telephone metadata says of each country, as JSON lines: the input of phone_formats.py.
#include <phonenumbers/phonemetadata.pb.h>

#include <nlohmann/json.hpp>

#include <iostream>

// Exported by the library, which has no header for them.
namespace i18n::phonenumbers {
int metadata_size();
const void* metadata_get();
} // namespace i18n::phonenumbers

namespace {

using namespace i18n::phonenumbers;
using nlohmann::json;

json kindOfNumber(const PhoneNumberDesc& kind)
{
    return {{"pattern", kind.national_number_pattern()}, {"lengths", kind.possible_length()},
        {"localLengths", kind.possible_length_local_only()}, {"example", kind.example_number()}};
}

json rule(const NumberFormat& format)
{
    return {{"pattern", format.pattern()}, {"format", format.format()},
        {"leadingDigits", format.leading_digits_pattern()},
        {"trunk", format.national_prefix_formatting_rule()},
        {"trunkOptional", format.national_prefix_optional_when_formatting()}};
}

template <class Formats>
json rules(const Formats& formats)
{
    json all = json::array();
    for (const auto& format : formats)
        all.push_back(rule(format));
    return all;
}

json country(const PhoneMetadata& data)
{
    return {{"id", data.id()}, {"code", data.country_code()}, {"trunkPrefix", data.national_prefix()},
        {"main", data.main_country_for_code()}, {"leadingDigits", data.leading_digits()},
        {"national", rules(data.number_format())}, {"international", rules(data.intl_number_format())},
        {"kinds",
            {{"general", kindOfNumber(data.general_desc())}, {"fixed", kindOfNumber(data.fixed_line())},
                {"mobile", kindOfNumber(data.mobile())}, {"free", kindOfNumber(data.toll_free())},
                {"premium", kindOfNumber(data.premium_rate())}, {"shared", kindOfNumber(data.shared_cost())},
                {"personal", kindOfNumber(data.personal_number())}, {"voip", kindOfNumber(data.voip())},
                {"pager", kindOfNumber(data.pager())}, {"company", kindOfNumber(data.uan())},
                {"voicemail", kindOfNumber(data.voicemail())}}}};
}

} // namespace

int main()
{
    PhoneMetadataCollection all;
    if (!all.ParseFromArray(metadata_get(), metadata_size())) {
        std::cerr << "The library's metadata cannot be read.\n";
        return 1;
    }
    for (const auto& data : all.metadata())
        std::cout << country(data).dump() << "\n";
}
