// Any bytes become canonical cards, and canonical cards stay as they are.
#include "interchange/vcard/prepare/Preparation.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

std::string canonicalText(std::string_view bytes, std::string& report)
{
    vcard::prepare::Preparation preparation(bytes, {"input", 0});
    std::string all;
    for (vcard::prepare::CanonicalCard card; preparation.next(card);)
        all += card.text;
    report = preparation.report().text();
    return all;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    std::string report;
    const auto once = canonicalText({reinterpret_cast<const char*>(bytes), size}, report);
    const auto twice = canonicalText(once, report);
    if (once != twice || !report.empty()) {
        std::fprintf(
            stderr, "--- once\n%s--- twice\n%s--- report\n%s", once.c_str(), twice.c_str(), report.c_str());
        std::abort();
    }
    return 0;
}
