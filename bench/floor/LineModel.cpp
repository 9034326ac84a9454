// How cards are split into lines and put together from them, without knowing what they mean.
#include "floor/LineModel.h"

#include <algorithm>
#include <cstddef>

namespace bench {

namespace {

std::string upperCase(std::string_view text)
{
    std::string upper(text);
    for (char& c : upper)
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - ('a' - 'A'));
    return upper;
}

std::string withoutEscapes(std::string_view text)
{
    std::size_t at = text.find('\\');
    if (at == text.npos)
        return std::string(text);
    std::string plain;
    plain.reserve(text.size());
    while (at != text.npos && at + 1 < text.size()) {
        plain.append(text.substr(0, at));
        const char code = text[at + 1];
        plain += code == 'n' || code == 'N' ? '\n' : code;
        text.remove_prefix(at + 2);
        at = text.find('\\');
    }
    return plain.append(text);
}

/// Takes one logical line off the front of `bytes`.
void takeLine(std::string_view& bytes, std::string& line)
{
    line.clear();
    do {
        const std::size_t end = std::min(bytes.find('\n'), bytes.size());
        std::string_view physical = bytes.substr(0, end);
        if (physical.ends_with('\r'))
            physical.remove_suffix(1);
        line.append(physical);
        bytes.remove_prefix(std::min(end + 1, bytes.size()));
        if (bytes.empty() || (bytes.front() != ' ' && bytes.front() != '\t'))
            return;
        bytes.remove_prefix(1);
    } while (true);
}

/// The end of a parameter: the next ";" or ":" outside quotes.
std::size_t parameterEnd(std::string_view line, std::size_t from)
{
    bool isQuoted = false;
    while (from < line.size() && (isQuoted || (line[from] != ';' && line[from] != ':')))
        isQuoted ^= line[from++] == '"';
    return from;
}

bool splitLine(std::string_view line, CardLine& out)
{
    std::size_t at = line.find_first_of(";:");
    if (at == line.npos)
        return false;
    const std::string_view head = line.substr(0, at);
    const std::size_t dot = head.find('.');
    if (dot != head.npos)
        out.group = head.substr(0, dot);
    out.name = upperCase(dot == head.npos ? head : head.substr(dot + 1));
    while (at < line.size() && line[at] == ';') {
        const std::size_t end = parameterEnd(line, at + 1);
        const std::string_view parameter = line.substr(at + 1, end - at - 1);
        const std::size_t equals = parameter.find('=');
        if (equals == parameter.npos)
            out.parameters.emplace_back("TYPE", parameter);
        else
            out.parameters.emplace_back(upperCase(parameter.substr(0, equals)), parameter.substr(equals + 1));
        at = end;
    }
    if (at == line.size())
        return false;
    out.value = withoutEscapes(line.substr(at + 1));
    return true;
}

constexpr std::size_t kLineWidth = 75;

void appendEscaped(std::string& to, std::string_view text)
{
    for (const char c : text) {
        if (c == '\n') {
            to += "\\n";
            continue;
        }
        if (c == ',')
            to += '\\';
        to += c;
    }
}

/// Cuts between characters; a blank begins each line that goes on.
void appendFolded(std::string& to, std::string_view line)
{
    std::size_t room = kLineWidth;
    while (line.size() > room) {
        std::size_t cut = room;
        while (cut > 0 && (static_cast<unsigned char>(line[cut]) & 0xc0) == 0x80)
            --cut;
        to.append(line.substr(0, cut)).append("\r\n ");
        line.remove_prefix(cut);
        room = kLineWidth - 1;
    }
    to.append(line).append("\r\n");
}

} // namespace

std::vector<LineCard> readLineModel(std::string_view bytes)
{
    std::vector<LineCard> cards;
    std::string line;
    while (!bytes.empty()) {
        takeLine(bytes, line);
        CardLine read;
        if (!splitLine(line, read))
            continue;
        if (read.name == "BEGIN")
            cards.emplace_back();
        else if (read.name != "END" && !cards.empty())
            cards.back().lines.push_back(std::move(read));
    }
    return cards;
}

std::string writeLineModel(const std::vector<LineCard>& cards)
{
    std::string text, line;
    for (const LineCard& card : cards) {
        text += "BEGIN:VCARD\r\n";
        for (const CardLine& written : card.lines) {
            line = written.group;
            if (!line.empty())
                line += '.';
            line += written.name;
            for (const auto& [name, value] : written.parameters)
                line.append(";").append(name).append("=").append(value);
            line += ':';
            appendEscaped(line, written.value);
            appendFolded(text, line);
        }
        text += "END:VCARD\r\n";
    }
    return text;
}

} // namespace bench
