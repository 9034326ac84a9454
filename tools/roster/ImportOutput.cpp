// The words, the JSON and the bar of an import.
#include "ImportOutput.h"

#include <fmt/format.h>

#include <array>
#include <utility>

#include <unistd.h>

namespace {

using vcard::prepare::Action;
using vcard::prepare::Report;

std::string count(std::size_t number, std::string_view one, std::string_view many)
{
    return fmt::format("{} {}", number, number == 1 ? one : many);
}

Json refusalJson(const ZRvCardRefusal& refusal)
{
    return Json{{"file", refusal.file}, {"card", refusal.card}, {"line", refusal.line},
        {"text", refusal.firstLine}, {"reason", refusal.reason}};
}

/// The findings of one file, refused cards aside; of a kind that came too often to be held, how many more.
void appendRepairs(Json& repairs, const Report& report)
{
    using vcard::prepare::Finding;
    std::array<std::size_t, vcard::prepare::kFindings> held{};
    for (const auto& entry : report.entries()) {
        ++held[static_cast<std::size_t>(entry.finding)];
        if (actionOf(entry.finding) != Action::refused)
            repairs.push_back({{"file", report.file()}, {"card", entry.card}, {"line", entry.line},
                {"what", std::string(textOf(entry.finding))}, {"subject", entry.subject},
                {"done", std::string(textOf(actionOf(entry.finding)))}});
    }
    for (std::size_t kind = 0; kind < held.size(); ++kind) {
        const auto finding = static_cast<Finding>(kind);
        if (const auto more = report.count(finding) - held[kind];
            more > 0 && actionOf(finding) != Action::refused)
            repairs.push_back({{"file", report.file()}, {"more", more},
                {"what", std::string(textOf(finding))}, {"done", std::string(textOf(actionOf(finding)))}});
    }
}

} // namespace

Json resultJson(const ZRvCardImport& result)
{
    Json errors = Json::array(), repairs = Json::array();
    for (const auto& refusal : result.refusals)
        errors.push_back(refusalJson(refusal));
    for (const auto& report : result.reports)
        appendRepairs(repairs, report);
    Json json{{"added", result.added}, {"updated", result.updated}, {"same", result.same},
        {"skipped", result.skipped + result.kept}, {"refused", result.refused}, {"errors", std::move(errors)},
        {"repairs", std::move(repairs)}};
    if (result.groups > 0)
        json["groups"] = result.groups;
    return json;
}

std::string resultText(const ZRvCardImport& result)
{
    // What other programs keep their books with is nothing that its owner would miss.
    std::size_t kept = 0, dropped = 0;
    for (const auto& report : result.reports) {
        kept += report.count(Action::keptInNote);
        dropped += report.count(Action::dropped) - report.count(vcard::prepare::Finding::bookkeeping);
    }
    std::string text = countsText(result, "added");
    if (result.groups > 0)
        text += ", " + count(result.groups, "group", "groups");
    if (result.skipped > 0)
        text += ", " + count(result.skipped, "file", "files") + " of this roster itself skipped";
    if (kept + dropped > 0)
        text +=
            fmt::format(" ({} without a place: {} kept in notes, {} dropped; --plan --explain tells which)",
                count(kept + dropped, "line", "lines"), kept, dropped);
    return text + "\n";
}

std::string countsText(const ZRvCardImport& result, std::string_view added)
{
    std::string text = fmt::format("{} {}", count(result.added, "card", "cards"), added);
    for (const auto& [number, what] : {std::pair{result.updated, "updated"}, {result.same, "there already"},
             {result.kept, "passed over for those who are there"}, {result.refused, "refused"}})
        if (number > 0)
            text += fmt::format(", {} {}", number, what);
    return text;
}

std::string refusalText(const ZRvCardRefusal& refusal)
{
    if (refusal.card == 0)
        return fmt::format("{}: {}", refusal.file, refusal.reason);
    const std::string line = refusal.firstLine.empty() ? "" : refusal.firstLine + ": ";
    return fmt::format(
        "{}: card {}, line {}: {}{}", refusal.file, refusal.card, refusal.line, line, refusal.reason);
}

// ---- progress

ProgressBar::ProgressBar(ZRvCardController& controller) : _isWatched(::isatty(STDERR_FILENO) == 1)
{
    if (!_isWatched)
        return;
    controller.importBegan = [this, &controller](std::uint64_t total) {
        _total = controller.showsImportProgress() ? total : 0;
    };
    controller.importContinued = [this](std::uint64_t done) { show(done); };
}

ProgressBar::~ProgressBar()
{
    if (_shown >= 0)
        fmt::print(stderr, "\r\x1b[K");
}

void ProgressBar::show(std::uint64_t done)
{
    constexpr int width = 40, all = 100;
    if (_total == 0)
        return;
    const int percent = static_cast<int>(std::min<std::uint64_t>(done * all / _total, all));
    if (percent == _shown)
        return;
    _shown = percent;
    const int filled = percent * width / all;
    fmt::print(stderr, "\r[{:#>{}}{:>{}}] {:>3} %", "", filled, "", width - filled, percent);
}
