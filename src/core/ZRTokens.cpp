// How typed text is cut into terms.
#include "core/ZRTokens.h"

#include "platform/text/Tokenizer.h"

#include <algorithm>

std::vector<std::string> zrTokens(std::string_view text)
{
    constexpr std::string_view joining = "-@._";
    const auto words = platform::wordRanges(text);
    std::vector<std::string> tokens;
    std::size_t done = 0;
    for (std::size_t word = 0; word < words.size();) {
        std::size_t from = words[word].start;
        while (from > done && joining.find(text[from - 1]) != std::string_view::npos)
            --from;
        do {
            done = words[word++].end();
            done = std::min(text.find_first_not_of(joining, done), text.size());
        } while (word < words.size() && words[word].start <= done);
        tokens.emplace_back(text.substr(from, done - from));
    }
    return tokens;
}
