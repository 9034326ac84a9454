// Cards as other programs may write them: any property, any parameters, any packing, from a seed.
#pragma once

#include "platform/text/Escape.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace test {

/// A card, and what it says. Each value holds a word that nothing else has.
struct ForeignCard {
    struct Word {
        /// As it may stand in what is read: a day has two spellings.
        std::vector<std::string> spellings;
        /// Of its property, from 1.
        std::size_t line;
    };

    std::string bytes;
    std::vector<Word> words;
};

/// Ownership: a plain value. Threads: one. Errors: none.
class ForeignCards {
public:
    /// `version` is "2.1", "3.0" or "4.0".
    ForeignCards(std::string_view version, std::uint32_t seed) : _version(version), _random(seed) { }

    ForeignCard next()
    {
        _card = {};
        _card.bytes = "BEGIN:VCARD\r\nVERSION:" + _version + "\r\n";
        _line = 3;
        for (auto count = 1 + number(25); count > 0; --count)
            addProperty();
        _card.bytes += "END:VCARD\r\n";
        return _card;
    }

private:
    static constexpr std::array kFront = {"", "", "Ana ", "é", "a\\, ", "a\\; ", "x\\n", "日本 ", "\\\\ ",
        "7:30 ", "=3D", "\"so\" ", "ö^n", "<b> "};
    static constexpr std::array kBehind = {
        "", "", " Lima", " é", "\\, b", "\\nx", " 日本", " =", ".", "\\\\"};
    static constexpr std::array kParameters21 = {
        "", "", ";HOME", ";WORK;PREF", ";TYPE=CELL", ";LANGUAGE=en", ";X-FOO", ";DOM;FAX", ";VALUE=TEXT"};
    static constexpr std::array kParameters = {"", "", ";TYPE=home", ";TYPE=work,pref",
        ";TYPE=\"cell,voice\"", ";PREF=1", ";PREF=70", ";LANGUAGE=en", ";X-PARAM=\"a:b;c\"", ";ALTID=1",
        ";VALUE=text", ";X-Y=^n^^", ";TYPE=x y", ";SORT-AS=\"b,a\"", ";PID=1.1", ";HOME"};
    static constexpr std::array kGroups = {"", "", "", "", "item1.", "item2.", "a.b.", "X-1."};
    static constexpr std::array kSchemes = {"xmpp:", "aim:", "skype:", "sip:", "foo:", "", "ICQ:", "gtalk:"};
    static constexpr std::array kLinks = {
        "http://a.example/", "ftp://b.example/", "urn:x:", "mailto:", "data:text/plain,", ""};

    enum class Shape { text, list, fields, link, message, telephone, day, binary };

    /// Properties that are alike.
    struct Kind {
        Shape shape;
        std::size_t most;
        std::vector<const char*> names;
    };

    static const std::vector<Kind>& kinds()
    {
        static const auto* const all = new std::vector<Kind>{
            {Shape::text, 1,
                {"FN", "TITLE", "ROLE", "NOTE", "X-MAIDENNAME", "X-PHONETIC-FIRST-NAME", "EMAIL", "X-AIM",
                    "X-ICQ", "X-JABBER", "X-MSN", "X-YAHOO", "X-SKYPE", "X-GTALK", "X-SPOUSE", "X-MANAGER",
                    "X-ASSISTANT", "X-ZRRELATEDNAMES", "X-LABEL", "TZ", "LANG", "MAILER", "UID", "REV",
                    "PRODID", "CLASS", "SORT-STRING", "NAME", "LABEL", "KIND", "X-SIP", "RELATED", "BDAY",
                    "ANNIVERSARY", "GEO"}},
            {Shape::list, 3, {"NICKNAME", "CATEGORIES", "GENDER"}},
            {Shape::fields, 9, {"N", "ADR", "ADD", "ORG", "N", "ADR"}},
            {Shape::link, 1,
                {"URL", "CALURI", "CALADRURI", "FBURL", "SOURCE", "RELATED", "MEMBER", "PHOTO", "LOGO",
                    "SOUND", "KEY"}},
            {Shape::message, 1, {"IMPP"}},
            {Shape::telephone, 1, {"TEL", "TEL"}},
            {Shape::day, 1, {"BDAY", "ANNIVERSARY", "X-ANNIVERSARY", "X-ZRDATE"}},
            {Shape::binary, 1, {"PHOTO", "LOGO", "SOUND", "KEY", "X-BINARY"}},
        };
        return *all;
    }

    std::uint32_t number(std::uint32_t below) { return static_cast<std::uint32_t>(_random() % below); }
    bool once(unsigned of) { return number(of) == 0; }
    template <class List>
    auto& oneOf(const List& list)
    {
        return list[number(static_cast<std::uint32_t>(std::size(list)))];
    }

    /// Letters and digits, which no escape or packing touches.
    std::string word()
    {
        std::string word = fmt::format("w{:05}z", ++_lastWord);
        _card.words.push_back({{word}, _line});
        return word;
    }

    std::string text() { return oneOf(kFront) + word() + oneOf(kBehind); }

    std::string several(std::size_t most, char separator)
    {
        std::string all;
        for (auto count = 1 + number(static_cast<std::uint32_t>(most)); count > 0; --count) {
            all += all.empty() ? "" : std::string(1, separator);
            if (once(4))
                all += separator;
            all += text();
            if (separator == ';' && once(6))
                all += "," + text();
        }
        return all;
    }

    std::string day()
    {
        const auto year = 1800 + number(250), month = 1 + number(12), date = 1 + number(28);
        const auto plain = fmt::format("{:04}{:02}{:02}", year, month, date),
                   dashes = fmt::format("{:04}-{:02}-{:02}", year, month, date);
        constexpr std::array times = {"", "", "T102200Z", "T10:22:00-05:00"};
        _card.words.push_back({{plain, dashes}, _line});
        return (once(2) ? plain : dashes) + oneOf(times);
    }

    std::string picture() { return platform::encodeBase64("GIF89a" + word() + std::string(60, '\1')); }

    std::string nobodysName()
    {
        std::string name = once(4) ? "" : "X-";
        for (auto letters = 1 + number(22); letters > 0; --letters)
            name += static_cast<char>('A' + number(26));
        return name + "Q";
    }

    std::string parameters()
    {
        std::string all;
        for (auto count = number(3); count > 0; --count)
            all += _version == "2.1" ? oneOf(kParameters21) : oneOf(kParameters);
        return all;
    }

    /// With soft line breaks (RFC 2045 §6.7).
    std::string quotedPrintable(const std::string& value)
    {
        std::string packed;
        for (const char c : value) {
            const bool isPlain = c > 0x20 && c != '=' && c != 0x7F;
            packed += isPlain ? std::string(1, c) : fmt::format("={:02X}", static_cast<unsigned char>(c));
            if (once(20))
                packed += "=\r\n";
        }
        return packed;
    }

    /// 2.1 folds in front of a blank, which stays; the others anywhere between characters.
    std::string folded(std::string line)
    {
        const bool isOld = _version == "2.1";
        for (std::size_t at = line.find(':') + 2; at < line.size(); ++at) {
            const bool isCharacter = (line[at] & 0xC0) != 0x80, isBlank = line[at] == ' ';
            if (!isCharacter || (isOld && !isBlank) || !once(isOld ? 2 : 20))
                continue;
            const std::string break_ = isOld ? "\r\n" : once(4) ? "\r\n\t" : "\r\n ";
            line.insert(at, break_);
            at += break_.size() + 1;
        }
        return line;
    }

    void addLine(const std::string& header, const std::string& value, bool mayBePacked)
    {
        std::string line;
        if (mayBePacked && _version != "4.0" && once(4))
            line = header + ";ENCODING=QUOTED-PRINTABLE;CHARSET=UTF-8:" + quotedPrintable(value);
        else
            line = once(3) ? folded(header + ":" + value) : header + ":" + value;
        line += "\r\n";
        _line += static_cast<std::size_t>(std::ranges::count(line, '\n'));
        _card.bytes += line;
    }

    void addProperty()
    {
        const Kind& kind = oneOf(kinds());
        const bool isUnknown = kind.shape == Shape::text && once(3);
        const std::string header =
            oneOf(kGroups) + (isUnknown ? nobodysName() : oneOf(kind.names)) + parameters();
        switch (kind.shape) {
        case Shape::text:
            return addLine(header, text(), true);
        case Shape::list:
            return addLine(header, several(kind.most, ','), true);
        case Shape::fields:
            return addLine(header, several(kind.most, ';'), true);
        case Shape::link:
            return addLine(header, oneOf(kLinks) + word(), false);
        case Shape::message:
            return addLine(header, oneOf(kSchemes) + word() + (once(3) ? "%20b" : ""), false);
        case Shape::telephone:
            return addLine(header, once(2) ? "tel:+1-" + word() + (once(2) ? ";ext=5" : "") : text(), false);
        case Shape::day:
            return addLine(header, day(), false);
        case Shape::binary:
            if (_version == "4.0")
                return addLine(header, "data:image/gif;base64," + picture(), false);
            if (_version == "3.0")
                return addLine(header + ";ENCODING=b", picture(), false);
            return addLine(header + ";ENCODING=BASE64", "\r\n  " + picture() + "\r\n", false);
        }
    }

    const std::string _version;
    std::mt19937 _random;
    std::uint32_t _lastWord = 0;
    ForeignCard _card;
    std::size_t _line = 0;
};

} // namespace test
