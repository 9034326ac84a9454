// How cards are prepared on one thread and handed to another.
#include "interchange/import/CardFeed.h"

#include "interchange/import/ImportFile.h"
#include "interchange/vcard/prepare/Preparation.h"
#include "platform/run/Mutex.h"
#include "platform/run/Thread.h"

#include <deque>
#include <exception>
#include <utility>

namespace interchange {

using vcard::prepare::CanonicalCard;
using vcard::prepare::Preparation;
using vcard::prepare::Report;

/// What goes from one thread to the other at once.
struct CardFeed::Batch {
    std::vector<CardData> cards;
    /// Of the source that ended with this batch.
    std::optional<Report> report;
    std::optional<Unreadable> unreadable;
};

// ---- making batches

/// Walks the sources, a batch a call.
class CardFeed::Producer {
public:
    Producer(std::vector<CardSource> sources, const Options& options)
        : _sources(std::move(sources)), _options(options)
    {
    }

    /// The next batch, or null behind the last. It may be without cards.
    std::unique_ptr<Batch> next()
    {
        if (_file == _sources.size())
            return nullptr;
        auto batch = std::make_unique<Batch>();
        if (!_isOpen && !open(*batch))
            return batch;
        if (_preparation)
            fill(*batch);
        else
            giveWhole(*batch);
        return batch;
    }

    /// The source at hand.
    std::size_t file() const { return _file; }

private:
    bool open(Batch& batch)
    {
        const CardSource& source = _sources[_file];
        if (source.bytes) {
            _bytes = *source.bytes;
        } else {
            auto opened = ImportFile::open(source.path);
            if (!opened) {
                batch.unreadable = Unreadable{_file, opened.error().text};
                _file = _sources.size();
                return false;
            }
            _opened = std::move(*opened);
            _bytes = _opened->bytes();
        }
        if (_options.form == Form::prepared)
            _preparation.emplace(_bytes, Preparation::Options{source.name, _options.preferredEncoding});
        _isOpen = true;
        return true;
    }

    void fill(Batch& batch)
    {
        batch.cards.reserve(kBatchCards);
        std::size_t size = 0;
        while (batch.cards.size() < kBatchCards && size < kBatchBytes) {
            if (!_preparation->next(_card)) {
                batch.report = _preparation->report();
                return close();
            }
            size += _card.text.size();
            batch.cards.push_back(dataOf(_card));
        }
        if (_opened)
            _opened->passed(_preparation->bytesRead());
    }

    CardData dataOf(CanonicalCard& card)
    {
        CardData data;
        data.text = std::exchange(card.text, {});
        data.file = _file;
        data.number = card.number;
        data.line = card.line;
        data.firstLine = card.firstLine;
        if (card.refusal)
            data.refusal = textOf(*card.refusal);
        data.bytesDone = _before + _preparation->bytesRead();
        return data;
    }

    void giveWhole(Batch& batch)
    {
        CardData data;
        data.whole = _bytes;
        data.keeper = _opened;
        data.file = _file;
        data.bytesDone = _before + _bytes.size();
        batch.cards.push_back(std::move(data));
        close();
    }

    void close()
    {
        _before += _bytes.size();
        _preparation.reset();
        _opened.reset();
        _isOpen = false;
        ++_file;
    }

    const std::vector<CardSource> _sources;
    const Options _options;
    std::size_t _file = 0;
    std::uint64_t _before = 0;
    bool _isOpen = false;
    std::shared_ptr<const ImportFile> _opened;
    std::string_view _bytes;
    std::optional<Preparation> _preparation;
    CanonicalCard _card;
};

// ---- handing them over

/// The batches that were made and not yet asked for.
class CardFeed::Queue {
public:
    Queue(std::vector<CardSource> sources, const Options& options) : _producer(std::move(sources), options)
    {
        _hasThread = platform::startThread("roster-import", [this] { run(); });
    }

    ~Queue()
    {
        platform::Lock lock(_mutex);
        _isStopped = true;
        _changed.notifyAll();
        while (_hasThread && !_isDone)
            _changed.wait(_mutex);
    }

    std::unique_ptr<Batch> take()
    {
        if (!_hasThread)
            return _producer.next();
        platform::Lock lock(_mutex);
        while (_waiting.empty() && !_isDone)
            _changed.wait(_mutex);
        if (_waiting.empty())
            return nullptr;
        auto batch = std::move(_waiting.front());
        _waiting.pop_front();
        _changed.notifyAll();
        return batch;
    }

private:
    void run()
    {
        try {
            while (auto batch = _producer.next())
                if (!give(std::move(batch)))
                    break;
        } catch (const std::exception& failure) {
            auto batch = std::make_unique<Batch>();
            batch->unreadable = Unreadable{_producer.file(), failure.what()};
            give(std::move(batch));
        }
        const platform::Lock lock(_mutex);
        _isDone = true;
        _changed.notifyAll();
    }

    bool give(std::unique_ptr<Batch> batch)
    {
        platform::Lock lock(_mutex);
        while (_waiting.size() == kMostWaiting && !_isStopped)
            _changed.wait(_mutex);
        if (_isStopped)
            return false;
        _waiting.push_back(std::move(batch));
        _changed.notifyAll();
        return true;
    }

    Producer _producer;
    bool _hasThread = false;
    platform::Mutex _mutex{platform::LockRank::leaf};
    platform::Condition _changed;
    std::deque<std::unique_ptr<Batch>> _waiting ZR_GUARDED_BY(_mutex);
    bool _isStopped ZR_GUARDED_BY(_mutex) = false;
    bool _isDone ZR_GUARDED_BY(_mutex) = false;
};

// ---- the feed

CardFeed::CardFeed(std::vector<CardSource> sources, const Options& options)
    : _queue(std::make_unique<Queue>(std::move(sources), options))
{
}

CardFeed::~CardFeed() = default;

const CardData* CardFeed::next()
{
    while (!_batch || _at == _batch->cards.size()) {
        _batch = _queue->take();
        _at = 0;
        if (!_batch)
            return nullptr;
        if (_batch->report)
            _reports.push_back(std::move(*_batch->report));
        if (_batch->unreadable)
            _unreadable = std::move(_batch->unreadable);
    }
    return &_batch->cards[_at++];
}

} // namespace interchange
