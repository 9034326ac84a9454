// Adds and removes the marks of a nickname.
#include "core/ZRNicknameFormatter.h"

#include "core/ZRFrameworkBundle.h"

namespace {

std::string mark(std::string_view key) { return ZRFrameworkBundle().localizedString(key, "ZRStrings"); }

} // namespace

ZRNicknameFormatter::ZRNicknameFormatter() : ZRNicknameFormatter(mark("START_NICKNAME"), mark("END_NICKNAME"))
{
}

std::optional<std::string> ZRNicknameFormatter::stringForObjectValue(const platform::Value& nickname) const
{
    if (!nickname.isString())
        return {};
    if (nickname.asText().empty())
        return std::string();
    return _startMark + std::string(nickname.asText()) + _endMark;
}

bool ZRNicknameFormatter::getObjectValue(
    std::string& nickname, std::string_view typed, std::string* errorDescription) const
{
    if (typed.starts_with(_startMark))
        typed.remove_prefix(_startMark.size());
    if (typed.ends_with(_endMark))
        typed.remove_suffix(_endMark.size());
    nickname = typed;
    if (errorDescription)
        errorDescription->clear();
    return true;
}
