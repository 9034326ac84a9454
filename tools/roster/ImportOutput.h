// What an import tells while it works and when it is done.
#pragma once

#include "Command.h"

#include "interchange/import/ZRvCardController.h"

/// The result for programs: counts, refused cards, and what was done to others.
Json resultJson(const ZRvCardImport& result);
/// The result for people, one line.
std::string resultText(const ZRvCardImport& result);
/// "3 cards added, 2 updated": what is none is left out, but for those that are new.
std::string countsText(const ZRvCardImport& result, std::string_view added);
/// "people.vcf: card 3, line 17: N:Lima;Ana: the card is cut off".
std::string refusalText(const ZRvCardRefusal& refusal);
/// A bar on standard error while a long import runs and a terminal watches.
class ProgressBar {
public:
    explicit ProgressBar(ZRvCardController& controller);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

private:
    void show(std::uint64_t done);

    const bool _isWatched;
    std::uint64_t _total = 0;
    int _shown = -1;
};
