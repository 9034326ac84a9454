// What labels, messaging services, kinds of relatives and pictures are called in a vCard 4.0.
#include "interchange/vcard/Names40.h"

#include "core/ZRConstants.h"

#include <algorithm>
#include <span>
#include <utility>

namespace vcard {

namespace {

using Row = std::pair<std::string_view, std::string_view>;

constexpr Row kTypes[] = {{zr::kZRHomeLabel, "home"}, {zr::kZRWorkLabel, "work"}};

constexpr Row kPhoneTypes[] = {{zr::kZRPhoneHomeLabel, "home"}, {zr::kZRPhoneWorkLabel, "work"},
    {zr::kZRPhoneMobileLabel, "cell"}, {zr::kZRPhoneHomeFAXLabel, "home,fax"},
    {zr::kZRPhoneWorkFAXLabel, "work,fax"}, {zr::kZRPhonePagerLabel, "pager"}};

constexpr std::pair<std::string_view, Relation40> kRelations[] = {
    {zr::kZRSpouseLabel, {"spouse", true}},
    {zr::kZRChildLabel, {"child", true}},
    {zr::kZRParentLabel, {"parent", true}},
    {zr::kZRFriendLabel, {"friend", true}},
    {zr::kZRMotherLabel, {"parent"}},
    {zr::kZRFatherLabel, {"parent"}},
    {zr::kZRBrotherLabel, {"sibling"}},
    {zr::kZRSisterLabel, {"sibling"}},
    {zr::kZRAssistantLabel, {"agent"}},
};

constexpr Row kSchemes[] = {{zr::kZRAIMInstantProperty, "aim"}, {zr::kZRJabberInstantProperty, "xmpp"},
    {zr::kZRMSNInstantProperty, "msnim"}, {zr::kZRYahooInstantProperty, "ymsgr"},
    {zr::kZRICQInstantProperty, "icq"}};

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

std::string_view valueOf(std::span<const Row> rows, std::string_view key)
{
    for (const auto& [known, value] : rows)
        if (known == key)
            return value;
    return {};
}

} // namespace

std::string_view typeOfLabel40(std::string_view label) { return valueOf(kTypes, label); }
std::string_view typeOfPhoneLabel40(std::string_view label) { return valueOf(kPhoneTypes, label); }

Relation40 relationOfLabel40(std::string_view label)
{
    for (const auto& [known, relation] : kRelations)
        if (known == label)
            return relation;
    return {};
}

std::string_view schemeOfService40(std::string_view property) { return valueOf(kSchemes, property); }

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
