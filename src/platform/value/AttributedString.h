// Text of which stretches carry something that is not text.
#pragma once

#include "platform/value/Value.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// Text with attributes: stretches of it have a name and a value, such as the field that they come from.
///
/// It is not rich text: what a stretch looks like is the affair of whoever shows it.
///
/// Ownership: owns its text and its runs.
/// Threads:   changed by one thread while it is made; then read by any.
/// Errors:    none.
class PLATFORM_EXPORT AttributedString final : public Object {
public:
    /// A stretch of the text, in bytes.
    struct Run {
        std::size_t start;
        std::size_t length;
        std::string name;
        std::string value;

        friend bool operator==(const Run&, const Run&) = default;
    };

    const std::string& string() const { return _text; }
    /// In the order of the text; stretches without attributes have no run, and no run is empty.
    const std::vector<Run>& runs() const { return _runs; }

    void append(std::string_view text) { _text += text; }
    void append(std::string_view text, std::string_view name, std::string_view value);
    /// Puts the text in front of what is there.
    void prepend(std::string_view text, std::string_view name, std::string_view value);

    bool isEqual(const Object& other) const override;
    std::size_t hash() const override;
    std::string description() const override { return _text; }

private:
    ~AttributedString() override = default;

    std::string _text;
    std::vector<Run> _runs;
};

} // namespace platform
