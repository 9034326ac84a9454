// How a notice becomes a record of the notice file, and such bytes a notice.
#include "platform/processes/NoticeForm.h"

#include "platform/value/PropertyList.h"

#include <cstring>
#include <vector>

namespace platform {

namespace {

constexpr std::string_view kFileMagic = "ZRNOTES1";
constexpr std::uint32_t kRecordMagic = 0x215a524e;

struct RecordHead {
    std::uint32_t magic = kRecordMagic;
    std::uint32_t length = 0;
    std::uint32_t checksum = 0;
};

constexpr PropertyListLimits kLimits{.depth = 16, .nodes = std::size_t(1) << 14, .bytes = kLargestNotice};

constexpr std::string_view kName = "name";
constexpr std::string_view kObject = "object";
constexpr std::string_view kUserInfo = "userInfo";

/// FNV-1a: it finds damage, not forgery.
std::uint32_t checksumOf(std::string_view bytes)
{
    std::uint32_t sum = 2166136261U;
    for (const char byte : bytes)
        sum = (sum ^ static_cast<unsigned char>(byte)) * 16777619U;
    return sum;
}

template <class Plain>
std::string_view bytesOf(const Plain& plain)
{
    return {reinterpret_cast<const char*>(&plain), sizeof plain};
}

} // namespace

std::string NoticeHeader::encode() const
{
    std::string bytes(kFileMagic);
    return bytes.append(bytesOf(generation)).append(bytesOf(end));
}

std::optional<NoticeHeader> NoticeHeader::decode(std::string_view bytes)
{
    if (bytes.size() < kLength || !bytes.starts_with(kFileMagic))
        return {};
    NoticeHeader header;
    std::memcpy(&header.generation, bytes.data() + kFileMagic.size(), sizeof header.generation);
    std::memcpy(&header.end, bytes.data() + kFileMagic.size() + sizeof header.generation, sizeof header.end);
    if (header.end < kLength)
        return {};
    return header;
}

Result<std::string> encodeNotice(const DistributedNotification& notice)
{
    std::vector<std::pair<std::string, Value>> entries{{std::string(kName), notice.name}};
    if (notice.object)
        entries.emplace_back(kObject, *notice.object);
    if (!notice.userInfo.isAbsent())
        entries.emplace_back(kUserInfo, notice.userInfo);
    const auto payload =
        encodePropertyList(Value::dictionary(std::move(entries)), PropertyListFormat::binary, kLimits);
    if (!payload)
        return payload.error();
    const RecordHead head{
        .length = static_cast<std::uint32_t>(payload->size()), .checksum = checksumOf(*payload)};
    return std::string(bytesOf(head)) + *payload;
}

NoticeRecord frontNotice(std::string_view bytes)
{
    RecordHead head;
    if (bytes.size() < sizeof head)
        return {NoticeRecord::State::partial, sizeof head};
    std::memcpy(&head, bytes.data(), sizeof head);
    if (head.magic != kRecordMagic || head.length > kLargestNotice)
        return {};
    const std::size_t length = sizeof head + head.length;
    if (bytes.size() < length)
        return {NoticeRecord::State::partial, length};
    const auto payload = bytes.substr(sizeof head, head.length);
    if (checksumOf(payload) != head.checksum)
        return {};
    return {NoticeRecord::State::whole, length, payload};
}

std::optional<DistributedNotification> decodeNotice(std::string_view payload)
{
    const auto list = decodePropertyList(payload, kLimits);
    if (!list || !(*list)[kName].isString())
        return {};
    DistributedNotification notice{std::string((*list)[kName].asText()), std::nullopt, (*list)[kUserInfo]};
    if (const auto& object = (*list)[kObject]; object.isString())
        notice.object = object.asText();
    return notice;
}

} // namespace platform
