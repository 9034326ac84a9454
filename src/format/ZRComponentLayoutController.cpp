// How parts are joined to the line whose layout is asked for.
#include "format/ZRComponentLayoutController.h"

#include "platform/text/Bidi.h"

const ZRComponentLayoutController& ZRComponentLayoutController::sharedInstance()
{
    static constexpr ZRComponentLayoutController controller;
    return controller;
}

std::vector<std::size_t> ZRComponentLayoutController::layoutOrderOfComponents(
    const std::vector<std::string>& components, std::string_view joiner) const
{
    std::string line;
    std::vector<platform::TextRange> ranges;
    for (const auto& component : components) {
        if (!ranges.empty())
            line += joiner;
        ranges.push_back({line.size(), component.size()});
        line += component;
    }
    return platform::visualOrder(line, ranges);
}

std::vector<std::size_t> layoutOrderOfComponentsJoinedByString(
    const std::vector<std::string>& components, std::string_view joiner)
{
    return ZRComponentLayoutController::sharedInstance().layoutOrderOfComponents(components, joiner);
}
