// The visual order, by ICU.
#include "platform/text/Bidi.h"

#include <unicode/ubidi.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <numeric>

namespace platform {

namespace {

constexpr std::size_t kNowhere = std::numeric_limits<std::size_t>::max();

struct CloseBidi {
    void operator()(UBiDi* bidi) const { ubidi_close(bidi); }
};

// For each UTF-16 unit of the text the place where it stands on the line, counted from the left.
std::vector<int32_t> visualPlaces(const std::u16string& units)
{
    const std::unique_ptr<UBiDi, CloseBidi> bidi(ubidi_open());
    std::vector<int32_t> places(units.size());
    UErrorCode status = U_ZERO_ERROR;
    ubidi_setPara(
        bidi.get(), units.data(), static_cast<int32_t>(units.size()), UBIDI_DEFAULT_LTR, nullptr, &status);
    ubidi_getLogicalMap(bidi.get(), places.data(), &status);
    if (U_FAILURE(status))
        std::iota(places.begin(), places.end(), 0);
    return places;
}

std::vector<std::size_t> leftEdges(std::string_view text, std::span<const TextRange> ranges)
{
    const std::vector<int32_t> places = visualPlaces(toUTF16(text));
    std::vector<std::size_t> edges;
    for (const TextRange& range : ranges) {
        const auto first =
            places.begin() + static_cast<std::ptrdiff_t>(utf16Length(text.substr(0, range.start)));
        const auto last = first + static_cast<std::ptrdiff_t>(utf16Length(range.of(text)));
        const auto lowest = std::min_element(first, last == first && last != places.end() ? last + 1 : last);
        edges.push_back(lowest == places.end() ? kNowhere : static_cast<std::size_t>(*lowest));
    }
    return edges;
}

} // namespace

std::vector<std::size_t> visualOrder(std::string_view text, std::span<const TextRange> ranges)
{
    std::vector<std::size_t> edges(ranges.size());
    if (isASCII(text))
        std::transform(
            ranges.begin(), ranges.end(), edges.begin(), [](const TextRange& r) { return r.start; });
    else
        edges = leftEdges(text, ranges);
    std::vector<std::size_t> order(ranges.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [&](auto a, auto b) { return edges[a] < edges[b]; });
    return order;
}

} // namespace platform
