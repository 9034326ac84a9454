// What labels, messaging services, kinds of relatives and pictures are called in a vCard 4.0.
#include "interchange/vcard/Names40.h"

#include "core/ZRConstants.h"

#include <algorithm>
#include <span>
#include <utility>

namespace vcard {

namespace {

using TypeRow = std::pair<std::string_view, Type40>;

constexpr TypeRow kTypes[] = {{zr::kZRHomeLabel, {"home", true}}, {zr::kZRWorkLabel, {"work", true}}};

/// A line without a type is that of a home page.
constexpr TypeRow kURLTypes[] = {{zr::kZRHomePageLabel, {"", true}}, kTypes[0], kTypes[1]};

/// "main" is no word of the standard, but one that programs know.
constexpr TypeRow kPhoneTypes[] = {kTypes[0], kTypes[1], {zr::kZRPhoneMobileLabel, {"cell", true}},
    {zr::kZRPhoneHomeFAXLabel, {"home,fax", true}}, {zr::kZRPhoneWorkFAXLabel, {"work,fax", true}},
    {zr::kZRPhonePagerLabel, {"pager", true}}, {zr::kZRPhoneMainLabel, {"main", true}},
    {zr::kZROtherLabel, {"", true}}};

constexpr TypeRow kRelations[] = {{zr::kZRSpouseLabel, {"spouse", true}},
    {zr::kZRChildLabel, {"child", true}}, {zr::kZRParentLabel, {"parent", true}},
    {zr::kZRFriendLabel, {"friend", true}}, {zr::kZROtherLabel, {"", true}}, {zr::kZRMotherLabel, {"parent"}},
    {zr::kZRFatherLabel, {"parent"}}, {zr::kZRBrotherLabel, {"sibling"}}, {zr::kZRSisterLabel, {"sibling"}},
    {zr::kZRAssistantLabel, {"agent"}}};

constexpr std::pair<std::string_view, std::string_view> kSchemes[] = {{zr::kZRAIMInstantProperty, "aim"},
    {zr::kZRJabberInstantProperty, "xmpp"}, {zr::kZRMSNInstantProperty, "msnim"},
    {zr::kZRYahooInstantProperty, "ymsgr"}, {zr::kZRICQInstantProperty, "icq"}};

struct Picture {
    std::string_view begin, type;
    /// What the ninth byte begins, where that tells more.
    std::string_view behind;
};

constexpr Picture kPictures[] = {
    {"\xFF\xD8\xFF", "image/jpeg", {}},
    {"\x89PNG\r\n\x1A\n", "image/png", {}},
    {"GIF8", "image/gif", {}},
    {{"II*\0", 4}, "image/tiff", {}},
    {{"MM\0*", 4}, "image/tiff", {}},
    {"BM", "image/bmp", {}},
    {"RIFF", "image/webp", "WEBP"},
};

/// Nothing where there is no row.
template <class Value>
Value valueOf(std::span<const std::pair<std::string_view, Value>> rows, std::string_view key)
{
    for (const auto& [known, value] : rows)
        if (known == key)
            return value;
    return {};
}

} // namespace

Type40 typeOfEntry40(std::string_view label) { return valueOf<Type40>(kTypes, label); }
Type40 typeOfPhone40(std::string_view label) { return valueOf<Type40>(kPhoneTypes, label); }
Type40 typeOfURL40(std::string_view label) { return valueOf<Type40>(kURLTypes, label); }
Type40 typeOfRelated40(std::string_view label) { return valueOf<Type40>(kRelations, label); }

std::string_view schemeOfService40(std::string_view property)
{
    return valueOf<std::string_view>(kSchemes, property);
}

std::string_view mediaTypeOfPicture(std::string_view bytes)
{
    constexpr std::size_t kBehind = 8;
    for (const Picture& picture : kPictures)
        if (bytes.starts_with(picture.begin)
            && bytes.substr(std::min(kBehind, bytes.size())).starts_with(picture.behind))
            return picture.type;
    return "application/octet-stream";
}

} // namespace vcard
