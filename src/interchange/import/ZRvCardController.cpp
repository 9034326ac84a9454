// One import: from data to people, and from people to the disk.
#include "interchange/import/ZRvCardController+State.h"

#include "core/ZRConstants.h"
#include "core/ZRGroup.h"
#include "core/ZRLog.h"
#include "core/ZRPerson.h"
#include "interchange/import/ZRImportServices.h"
#include "interchange/vcard/ZRVCardParser.h"
#include "platform/files/ZRUserDefaults.h"
#include "platform/run/Clock.h"

#include <algorithm>

using interchange::CardData;
using interchange::CardFeed;
using platform::Ref;

namespace {

/// What one transaction holds at most: so many cards, or so many bytes of their text, pictures included.
constexpr std::size_t kCardsInTransaction = 2000;
constexpr std::size_t kBytesInTransaction = 64U << 20;
/// How many cards there are between two reports of progress.
constexpr std::size_t kCardsBetweenReports = 10;

TextEncoding preferredEncoding()
{
    const auto name = ZRUserDefaults::rosterPreferences()->objectForKey(zr::kZR21vCardEncoding);
    const TextEncoding encoding =
        name.isString() ? platform::encodingForName(name.asText()) : platform::invalidTextEncoding;
    return encoding == platform::invalidTextEncoding ? 0 : encoding;
}

/// The first line that holds something.
std::string_view firstLineOf(std::string_view text)
{
    constexpr std::size_t longest = 200;
    const auto from = std::min(text.find_first_not_of("\r\n"), text.size());
    return text.substr(from, std::min(text.find_first_of("\r\n", from) - from, longest));
}

bool isBlank(std::string_view text) { return text.find_first_not_of(" \t\r\n") == std::string_view::npos; }

} // namespace

ZRImportServices& ZRImportServices::registered()
{
    static auto* const services = new ZRImportServices;
    return *services;
}

ZRvCardController::ZRvCardController(Ref<ZRRoster> target) : _state(std::make_unique<State>())
{
    _state->target = std::move(target);
}

ZRvCardController::~ZRvCardController() { cleanUp(); }

void ZRvCardController::setPreparation(Preparation preparation) { _state->preparation = preparation; }
void ZRvCardController::setOutcome(Outcome outcome) { _state->outcome = outcome; }
void ZRvCardController::setDuplicateHandling(interchange::DuplicateHandling handling)
{
    _state->handling = handling;
}
void ZRvCardController::cancel() { _state->isCancelled = true; }
const ZRvCardImport& ZRvCardController::result() const { return _state->result; }
bool ZRvCardController::hasImportErrors() const { return _state->hasImportErrors; }

// ---- the work

bool ZRvCardController::importVCards()
{
    const double start = platform::Clock::current().monotonic();
    if (!openRosters())
        return false;
    const CardFeed::Form form =
        _state->preparation == Preparation::full ? CardFeed::Form::prepared : CardFeed::Form::raw;
    _state->feed.emplace(_state->sources, CardFeed::Options{form, preferredEncoding()});
    if (importBegan)
        importBegan(_state->totalBytes);
    while (const CardData* data = nextData())
        importData(*data);
    _state->result.reports = _state->feed->reports();
    nameUnread();
    _state->feed.reset();
    if (!_state->isCancelled)
        commit();
    forgetPeople();
    if (importFinished)
        importFinished();
    if (ZRPerfFlagIsSet(ZRPerfFlag::importVCard))
        ZRPerfLog("[LogImportVCardTimes] Time to import vCard data = {:3.3f}",
            platform::Clock::current().monotonic() - start);
    return !_state->hasImportErrors && !_state->isCancelled;
}

bool ZRvCardController::openRosters()
{
    auto& state = *_state;
    if (state.outcome == Outcome::readOnly) {
        state.roster = ZRRoster::emptyMemoryBackedRoster();
    } else {
        const auto& defaultTarget = ZRImportServices::registered().defaultTarget;
        if (!state.target)
            state.target = defaultTarget ? defaultTarget() : ZRRoster::sharedRoster();
        state.roster = state.target ? state.target->parallelUniverseRoster() : nullptr;
    }
    if (!state.roster)
        return fail({"ZRRosterErrorDomain", 1, "there is no roster to import into"});
    locked(*state.roster, ZRAccess::write, [&]() ZR_NTS { state.roster->nts_SetKeepsPictures(true); });
    state.surroundings.emplace(*state.roster);
    makePlan();
    return findGroup();
}

bool ZRvCardController::findGroup()
{
    auto& state = *_state;
    if (!state.group || state.outcome == Outcome::readOnly)
        return true;
    state.groupHere = platform::refCast<ZRGroup>(state.roster->recordForUniqueId(state.group->uniqueId()));
    return state.groupHere || fail({"ZRRosterErrorDomain", 1, "the group is not in the roster"});
}

const CardData* ZRvCardController::nextData()
{
    return _state->isCancelled || !_state->result.failure.domain.empty() ? nullptr : _state->feed->next();
}

void ZRvCardController::importData(const CardData& data)
{
    std::size_t number = data.number;
    if (!data.refusal.empty())
        return cardRead(data, number, nullptr, {},
            {_state->nameOf(data), number, data.line, data.firstLine, data.refusal});
    const std::string_view bytes = data.bytes();
    const auto parser = ZRVCardParser::initWithData(bytes, *_state->surroundings);
    std::size_t offset = 0;
    for (; parser && !_state->isCancelled && _state->result.failure.domain.empty(); ++number) {
        if (number > data.number && isBlank(bytes.substr(offset)))
            return;
        std::size_t length = 0;
        const auto person = parser->nextPersonWithLength(length, *_state->roster);
        if (!person) {
            const auto line =
                data.line + static_cast<std::size_t>(std::ranges::count(bytes.substr(0, offset), '\n'));
            return cardRead(data, number, nullptr, {},
                {_state->nameOf(data), number, line, std::string(firstLineOf(bytes.substr(offset))),
                    parser->failureReason()});
        }
        _state->bytesWaiting += length;
        cardRead(data, number, person, bytes.substr(offset, length), {});
        offset += length;
    }
    if (!parser)
        cardRead(data, number, nullptr, {}, {_state->nameOf(data), 0, 0, "", "there is nothing in it"});
}

void ZRvCardController::cardRead(const CardData& data, std::size_t number, const Ref<ZRPerson>& person,
    std::string_view text, ZRvCardRefusal refusal)
{
    auto& state = *_state;
    if (cardWasRead)
        cardWasRead({state.nameOf(data), data, number, person.get(), refusal.reason});
    if (importContinued && ++state.cardsRead % kCardsBetweenReports == 0)
        importContinued(data.bytesDone);
    State::Waiting waiting{{person, interchange::digestOfCard(text)}, data.file, number};
    if (cardWasDecided) {
        waiting.line = person ? data.line : refusal.line;
        waiting.firstLine = person ? data.firstLine : refusal.firstLine;
        waiting.text = data.text;
        waiting.refusal = refusal.reason;
    }
    if (person || cardWasDecided)
        state.waiting.push_back(std::move(waiting));
    if (!person)
        return refuse(std::move(refusal));
    ++state.peopleWaiting;
    if (state.peopleWaiting >= kCardsInTransaction || state.bytesWaiting >= kBytesInTransaction)
        commit();
}

void ZRvCardController::refuse(ZRvCardRefusal refusal)
{
    _state->hasImportErrors = true;
    ++_state->result.refused;
    if (_state->result.refusals.size() < ZRvCardImport::kMostRefusals)
        _state->result.refusals.push_back(std::move(refusal));
}

/// A file that cannot be read ends the import: it and those behind it are named.
void ZRvCardController::nameUnread()
{
    const auto& unreadable = _state->feed->unreadable();
    if (!unreadable)
        return;
    const auto& sources = _state->sources;
    refuse({sources[unreadable->file].name, 0, 0, "", unreadable->reason});
    for (std::size_t file = unreadable->file + 1; file < sources.size(); ++file)
        refuse({sources[file].name, 0, 0, "", "not read: the import ended before it"});
}

// ---- the saves

bool ZRvCardController::commit()
{
    auto& state = *_state;
    if (!state.result.failure.domain.empty())
        return false;
    settleCards();
    if (state.outcome == Outcome::saved && !state.roster->save()) {
        auto error = state.roster->lastSaveError();
        if (error.domain.empty())
            error = {"ZRRosterErrorDomain", 1, "the roster could not be saved"};
        return fail(std::move(error));
    }
    state.result.added += state.underWay.added;
    state.result.updated += state.underWay.updated;
    state.result.same += state.underWay.same;
    state.result.kept += state.underWay.kept;
    forgetPeople();
    return true;
}

/// People that were read only leave the roster in memory, too.
void ZRvCardController::forgetPeople()
{
    auto& state = *_state;
    if (state.outcome == Outcome::readOnly)
        for (const auto& waiting : state.waiting)
            if (waiting.card.person)
                state.drop(*waiting.card.person);
    state.waiting.clear();
    state.peopleWaiting = 0;
    state.bytesWaiting = 0;
    state.merger = nullptr;
    state.underWay = {};
}

bool ZRvCardController::fail(platform::Error error)
{
    _state->hasImportErrors = true;
    _state->result.failure = std::move(error);
    return false;
}
