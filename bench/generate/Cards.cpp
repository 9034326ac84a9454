// How lines of cards are escaped, encoded and folded.
#include "generate/Cards.h"

#include <fmt/format.h>

#include <array>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace bench {

namespace {

constexpr std::size_t kLineWidth = 75;

bool isAscii(std::string_view text)
{
    for (const char c : text)
        if (static_cast<unsigned char>(c) > 126)
            return false;
    return true;
}

std::string escaped(std::string_view text)
{
    std::string out;
    for (const char c : text) {
        if (c == '\n') {
            out += "\\n";
            continue;
        }
        if (c == '\\' || c == ',' || c == ';')
            out += '\\';
        out += c;
    }
    return out;
}

std::string base64(std::string_view bytes)
{
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        const std::string_view group = bytes.substr(at, 3);
        std::uint32_t bits = 0;
        for (std::size_t i = 0; i < 3; ++i)
            bits = bits << 8 | (i < group.size() ? static_cast<unsigned char>(group[i]) : 0u);
        for (std::size_t i = 0; i < 4; ++i)
            out += i <= group.size() ? digits[bits >> (18 - 6 * i) & 63] : '=';
    }
    return out;
}

void appendFolded(std::string& out, std::string_view line)
{
    std::size_t room = kLineWidth;
    while (line.size() > room) {
        std::size_t cut = room;
        while ((static_cast<unsigned char>(line[cut]) & 0xc0) == 0x80)
            --cut;
        out.append(line.substr(0, cut)).append("\r\n ");
        line.remove_prefix(cut);
        room = kLineWidth - 1;
    }
    out.append(line).append("\r\n");
}

/// UTF-8 as ISO-8859-1, where that has all the characters.
std::optional<std::string> latin1(std::string_view text)
{
    std::string out;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const auto byte = static_cast<unsigned char>(text[at]);
        if (byte < 0x80) {
            out += text[at];
        } else if (byte == 0xc2 || byte == 0xc3) {
            const auto second = static_cast<unsigned char>(text[++at]);
            out += static_cast<char>((byte & 3) << 6 | (second & 63));
        } else {
            return std::nullopt;
        }
    }
    return out;
}

void appendQuotedPrintable(std::string& out, std::string_view header, std::string_view bytes)
{
    out.append(header);
    std::size_t width = header.size();
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        std::array<char, 6> piece{c};
        std::size_t length = 1;
        if (c == '\n') {
            piece = {'=', '0', 'D', '=', '0', 'A'};
            length = 6;
        } else if (c == '=' || byte < 32 || byte > 126) {
            constexpr std::string_view digits = "0123456789ABCDEF";
            piece = {'=', digits[byte >> 4], digits[byte & 15]};
            length = 3;
        }
        if (width + length > kLineWidth) {
            out += "=\r\n";
            width = 0;
        }
        out.append(piece.data(), length);
        width += length;
    }
    out += "\r\n";
}

/// Writes lines of one 2.1 card.
class Writer21 {
public:
    Writer21(std::string& out, bool prefersLatin1) : _out(out), _prefersLatin1(prefersLatin1) { }

    void line(std::string_view name, std::string_view value)
    {
        if (isAscii(value) && value.find('\n') == value.npos) {
            _out.append(name).append(":").append(value).append("\r\n");
            return;
        }
        std::string header(name);
        const auto narrow = _prefersLatin1 ? latin1(value) : std::nullopt;
        if (!isAscii(value))
            header += narrow ? ";CHARSET=ISO-8859-1" : ";CHARSET=UTF-8";
        appendQuotedPrintable(_out, header + ";ENCODING=QUOTED-PRINTABLE:", narrow ? *narrow : value);
    }

    void fields(std::string_view name, std::initializer_list<std::string_view> values)
    {
        std::string joined;
        for (const std::string_view value : values) {
            for (const char c : value) {
                if (c == ';')
                    joined += '\\';
                joined += c;
            }
            joined += ';';
        }
        joined.pop_back();
        line(name, joined);
    }

    void photo(std::string_view bytes)
    {
        _out += "PHOTO;TYPE=JPEG;ENCODING=BASE64:\r\n";
        const std::string text = base64(bytes);
        for (std::size_t at = 0; at < text.size(); at += kLineWidth - 1)
            _out.append(" ").append(text, at, kLineWidth - 1).append("\r\n");
        _out += "\r\n";
    }

private:
    std::string& _out;
    bool _prefersLatin1;
};

} // namespace

void appendCard30(std::string& out, const Person& p)
{
    const auto line = [&]<class... Values>(fmt::format_string<Values...> format, Values&&... values) {
        appendFolded(out, fmt::format(format, std::forward<Values>(values)...));
    };
    out += "BEGIN:VCARD\r\nVERSION:3.0\r\n";
    line("UID:{}", p.uniqueId);
    line("REV:{}", p.revised);
    line("N:{};{};{};{};", escaped(p.last), escaped(p.first), escaped(p.middle), escaped(p.title));
    line("FN:{}", escaped(p.fullName));
    line("ORG:{};{}", escaped(p.organization), escaped(p.department));
    line("TITLE:{}", escaped(p.jobTitle));
    line("EMAIL;TYPE=INTERNET,WORK,PREF:{}", p.workEmail);
    line("EMAIL;TYPE=INTERNET;TYPE=HOME:{}", p.homeEmail);
    line("TEL;TYPE=WORK,VOICE:{}", p.workPhone);
    line("TEL;TYPE=CELL:{}", p.cellPhone);
    line("ADR;TYPE=HOME:;;{};{};{};{};{}", escaped(p.street), escaped(p.city), escaped(p.state),
        escaped(p.zipCode), escaped(p.country));
    line("BDAY:{}", p.birthday);
    line("NOTE:{}", escaped(p.note));
    if (p.labelledPhone) {
        line("item1.TEL:{}", p.labelledPhone->number);
        line("item1.X-ZRLabel:{}", escaped(p.labelledPhone->label));
    }
    if (!p.photo.empty())
        line("PHOTO;ENCODING=b;TYPE=JPEG:{}", base64(p.photo));
    out += "END:VCARD\r\n";
}

void appendCard21(std::string& out, const Person& p, std::size_t number)
{
    Writer21 card(out, number % 4 == 0);
    out += "BEGIN:VCARD\r\nVERSION:2.1\r\n";
    card.line("UID", p.uniqueId);
    card.line("REV", p.revised);
    card.fields("N", {p.last, p.first, p.middle, p.title, ""});
    card.line("FN", p.fullName);
    card.fields("ORG", {p.organization, p.department});
    card.line("TITLE", p.jobTitle);
    card.line("EMAIL;PREF;INTERNET;WORK", p.workEmail);
    card.line("EMAIL;INTERNET;HOME", p.homeEmail);
    card.line("TEL;WORK;VOICE", p.workPhone);
    card.line("TEL;CELL", p.cellPhone);
    card.fields("ADR;HOME", {"", "", p.street, p.city, p.state, p.zipCode, p.country});
    card.line("BDAY", p.birthday);
    card.line("NOTE", p.note);
    if (p.labelledPhone) {
        card.line("item1.TEL", p.labelledPhone->number);
        card.line("item1.X-ZRLabel", p.labelledPhone->label);
    }
    if (!p.photo.empty())
        card.photo(p.photo);
    out += "END:VCARD\r\n";
}

void appendFields(std::string& out, const Person& p)
{
    const auto field = [&](std::string_view text) {
        for (const char c : text) {
            const char* const code = c == '\n' ? "\\n" : c == '\t' ? "\\t" : c == '\\' ? "\\\\" : nullptr;
            code ? out.append(code) : out.append(1, c);
        }
        out += '\t';
    };
    const LabelledPhone own = p.labelledPhone.value_or(LabelledPhone());
    for (const std::string_view text : {std::string_view(p.uniqueId), std::string_view(p.first),
             std::string_view(p.middle), std::string_view(p.last), std::string_view(p.title),
             std::string_view(p.fullName), std::string_view(p.organization), std::string_view(p.department),
             std::string_view(p.jobTitle), std::string_view(p.workEmail), std::string_view(p.homeEmail),
             std::string_view(p.workPhone), std::string_view(p.cellPhone), std::string_view(own.label),
             std::string_view(own.number), std::string_view(p.street), std::string_view(p.city),
             std::string_view(p.state), std::string_view(p.zipCode), std::string_view(p.country),
             std::string_view(p.birthday), std::string_view(p.revised), std::string_view(p.note)})
        field(text);
    out += fmt::format("{}\n", p.photo.size());
}

} // namespace bench
