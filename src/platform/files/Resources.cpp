// Where a resource is found, and which text is shown for a key.
#include "platform/files/Resources.h"

#include "platform/files/Directories.h"
#include "platform/files/EmbeddedResources.h"
#include "platform/files/Files.h"
#include "platform/run/Mutex.h"
#include "platform/run/NeverDestroyed.h"

#include <algorithm>
#include <cstdlib>

namespace platform {

namespace {

constexpr std::string_view kLastLanguage = "en";

using Table = std::map<std::string, std::string, std::less<>>;

/// Takes the text up to `separator` off `rest`.
std::string_view takeUntil(std::string_view& rest, char separator)
{
    const auto part = rest.substr(0, rest.find(separator));
    rest.remove_prefix(std::min(rest.size(), part.size() + 1));
    return part;
}

std::string unescaped(std::string_view text)
{
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            plain += text[i];
            continue;
        }
        const char escaped = text[++i];
        plain += escaped == 'n' ? '\n' : escaped == 't' ? '\t' : escaped;
    }
    return plain;
}

/// The place of the "=" that parts key and text.
std::size_t separatorOf(std::string_view line)
{
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '\\')
            ++i;
        else if (line[i] == '=')
            return i;
    }
    return std::string_view::npos;
}

std::string variable(const char* name)
{
    const char* const value = std::getenv(name);
    return value ? value : "";
}

/// Whoever reads a variety of which there are no texts reads another one before the language in general.
constexpr std::pair<std::string_view, std::string_view> kKin[] = {{"zh_HK", "zh_TW"}, {"zh_MO", "zh_TW"}};

void addOnce(std::vector<std::string>& languages, std::string_view name)
{
    if (std::ranges::find(languages, name) == languages.end())
        languages.emplace_back(name);
}

std::string_view languageOf(std::string_view locale) { return locale.substr(0, locale.find_first_of(".@")); }

/// The language of a program that was not translated.
bool isUntranslated(std::string_view locale) { return locale == "C" || locale == "POSIX"; }

void addLanguage(std::vector<std::string>& languages, std::string_view locale)
{
    const auto full = languageOf(locale);
    if (full.empty() || isUntranslated(full) || full.find('/') != std::string_view::npos)
        return;
    addOnce(languages, full);
    for (const auto& [variety, kin] : kKin)
        if (full == variety)
            addOnce(languages, kin);
    addOnce(languages, full.substr(0, full.find('_')));
}

} // namespace

std::optional<std::string> resource(std::string_view name, std::string_view extension)
{
    std::string file(name);
    if (!extension.empty())
        file.append(".").append(extension);
    for (const auto& library : Directories::current()->libraries())
        if (auto bytes = readFile(library + "/Roster/" + file))
            return std::move(*bytes);
    const auto& embedded = embeddedResources();
    const auto at = std::ranges::find(embedded, file, &EmbeddedResource::name);
    if (at == embedded.end())
        return std::nullopt;
    return std::string(at->bytes);
}

std::vector<std::string_view> embeddedResourceNames()
{
    std::vector<std::string_view> names;
    for (const auto& embedded : embeddedResources())
        names.push_back(embedded.name);
    return names;
}

Table parseStringTable(std::string_view text)
{
    Table table;
    if (text.starts_with("\xEF\xBB\xBF"))
        text.remove_prefix(3);
    while (!text.empty()) {
        auto line = takeUntil(text, '\n');
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        const auto separator = separatorOf(line);
        if (separator == std::string_view::npos || line.starts_with('#'))
            continue;
        table.insert_or_assign(unescaped(line.substr(0, separator)), unescaped(line.substr(separator + 1)));
    }
    return table;
}

struct StringTables::State {
    Mutex mutex;
    std::map<std::string, Table> tables ZR_GUARDED_BY(mutex);

    /// The table in one language; kept for ever, so the answer stays good.
    const Table& table(const std::string& file)
    {
        Lock lock(mutex);
        const auto known = tables.find(file);
        if (known != tables.end())
            return known->second;
        const auto text = resource(file, "strings");
        return tables.emplace(file, text ? parseStringTable(*text) : Table()).first->second;
    }
};

StringTables::StringTables(std::vector<std::string> languages)
    : _languages(std::move(languages)), _state(std::make_unique<State>())
{
    if (std::ranges::find(_languages, kLastLanguage) == _languages.end())
        _languages.emplace_back(kLastLanguage);
}

StringTables::~StringTables() = default;

StringTables& StringTables::shared()
{
    static const NeverDestroyed<StringTables> tables(userLanguages());
    return *tables;
}

std::optional<std::string> StringTables::find(std::string_view key, std::string_view table) const
{
    for (const auto& language : _languages) {
        const auto& texts = _state->table("strings/" + language + "/" + std::string(table));
        if (const auto at = texts.find(key); at != texts.end())
            return at->second;
    }
    return std::nullopt;
}

std::string StringTables::string(
    std::string_view key, std::string_view table, std::optional<std::string_view> missing) const
{
    auto found = find(key, table);
    return found ? std::move(*found) : std::string(missing.value_or(key));
}

std::vector<std::string> userLanguages()
{
    std::string locale;
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"})
        if (locale.empty())
            locale = variable(name);
    // As gettext has it: the list of languages counts only where a locale was chosen, and ends at "C".
    if (locale.empty() || isUntranslated(locale))
        return {};
    std::vector<std::string> languages;
    const auto list = variable("LANGUAGE");
    for (std::string_view rest = list; !rest.empty();) {
        const auto name = takeUntil(rest, ':');
        if (isUntranslated(name))
            break;
        addLanguage(languages, name);
    }
    if (list.empty())
        addLanguage(languages, locale);
    return languages;
}

} // namespace platform
