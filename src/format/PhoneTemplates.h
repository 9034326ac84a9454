// How a telephone number meets a list of templates.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// What was typed as a number, taken apart: what may belong to the number, and the extension behind it.
///
/// Ownership: owns its texts.
/// Threads:   like any plain value.
/// Errors:    none; any text can be taken apart, though it may hold no digits.
class PhoneNumberText {
public:
    explicit PhoneNumberText(std::string_view typed);

    /// All of it in compatibility composition, which makes full-width digits plain ones.
    const std::string& text() const { return _text; }
    /// What templates are asked for: the digits, and each "+", in front of the extension.
    const std::string& digits() const { return _digits; }
    /// The whole again, where `formatted` stands for the number: the extension follows behind one blank.
    std::string withNumber(std::string formatted) const;

private:
    std::string _text;
    /// Where the extension begins; the text's size when there is none.
    std::size_t _headLength;
    std::string _digits;
};

/// Templates in order of preference, made ready once, so that trying them is looking at a few characters.
///
/// In a template "#" stands for the next digit of a number; a digit or "+" must be the number's character at
/// its place; everything else is copied.
///
/// Ownership: owns its texts.
/// Threads:   constant.
/// Errors:    none; any text is a template.
class PhoneTemplates {
public:
    PhoneTemplates() = default;
    explicit PhoneTemplates(const std::vector<std::string>& templates);

    bool isEmpty() const { return _templates.empty(); }
    /// The number by the first template that fits all of `digits`; absent when none does.
    std::optional<std::string> format(std::string_view digits) const;
    /// `number` by the first template that fits it, or else as it is.
    std::string write(const PhoneNumberText& number) const;

private:
    struct Blank {
        std::size_t offset;
        std::size_t place;
    };
    struct Template {
        std::string text;
        std::vector<Blank> blanks;

        std::string filled(std::string_view digits) const;
    };
    /// The first characters of a number, or of what a template says of them: compared all at once.
    struct Front {
        std::array<std::uint64_t, 2> words{};

        void set(std::size_t place, char character);
        bool isEqual(const Front& other, const Front& mask) const;
    };
    /// What trying a template looks at: apart from the template, so that a list of them is a few lines of
    /// memory.
    struct Trial {
        /// How many characters of a number it takes.
        std::size_t count = 0;
        std::size_t index = 0;
        Front literals, mask;
        /// Those that lie behind the front.
        std::vector<std::pair<std::size_t, char>> later;

        bool fits(std::string_view digits, const Front& front) const;
    };

    void add(std::string_view source);

    std::vector<Template> _templates;
    /// By count, and those of one count in their order.
    std::vector<Trial> _trials;
};
