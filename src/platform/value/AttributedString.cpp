// How runs keep their place when text comes in front of them.
#include "platform/value/AttributedString.h"

namespace platform {

void AttributedString::append(std::string_view text, std::string_view name, std::string_view value)
{
    if (!text.empty())
        _runs.push_back({_text.size(), text.size(), std::string(name), std::string(value)});
    _text += text;
}

void AttributedString::prepend(std::string_view text, std::string_view name, std::string_view value)
{
    if (text.empty())
        return;
    for (auto& run : _runs)
        run.start += text.size();
    _runs.insert(_runs.begin(), {0, text.size(), std::string(name), std::string(value)});
    _text.insert(0, text);
}

bool AttributedString::isEqual(const Object& other) const
{
    const auto* const same = dynamic_cast<const AttributedString*>(&other);
    return same && same->_text == _text && same->_runs == _runs;
}

std::size_t AttributedString::hash() const { return std::hash<std::string>{}(_text); }

} // namespace platform
