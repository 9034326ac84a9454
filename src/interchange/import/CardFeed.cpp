// How cards are read on one thread and handed to another.
#include "interchange/import/CardFeed.h"

#include "interchange/import/ImportFile.h"
#include "interchange/vcard/VCardReaderContext.h"
#include "interchange/vcard/prepare/Preparation.h"
#include "platform/run/Mutex.h"
#include "platform/run/Thread.h"

#include <algorithm>
#include <deque>
#include <exception>
#include <utility>

namespace interchange {

using vcard::prepare::CanonicalCard;
using vcard::prepare::Preparation;
using vcard::prepare::Report;

/// What goes from one thread to the other at once.
struct CardFeed::Batch {
    std::vector<ReadCard> cards;
    /// Of the source that ended with this batch.
    std::optional<Report> report;
    std::optional<Unreadable> unreadable;
};

// ---- making batches

/// Walks the sources, a batch a call.
class CardFeed::Producer {
public:
    Producer(std::vector<CardSource> sources, const VCardReaderContext& context, const Options& options)
        : _sources(std::move(sources)), _context(context), _options(options)
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
        batch->cards.reserve(kBatchCards);
        for (std::size_t size = 0; batch->cards.size() < kBatchCards && size < kBatchBytes;) {
            ReadCard card;
            card.file = _file;
            if (_preparation ? !readPrepared(card) : !readRaw(card)) {
                close(*batch);
                break;
            }
            size += card.length;
            batch->cards.push_back(std::move(card));
        }
        if (_opened && _preparation)
            _opened->passed(_preparation->bytesRead());
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
            _preparation.emplace(
                _bytes, Preparation::Options{source.name, _context.preferredEncoding(), _options.groups});
        else
            _raw.emplace(_bytes, _context);
        _number = 0;
        _line = 1;
        _isOpen = true;
        return true;
    }

    bool readPrepared(ReadCard& card)
    {
        if (!_preparation->next(_card))
            return false;
        card.number = _card.number;
        card.line = _card.line;
        card.firstLine = _card.firstLine;
        card.bytesDone = _before + _preparation->bytesRead();
        if (_card.refusal) {
            card.refusal = textOf(*_card.refusal);
            return true;
        }
        card.group = std::move(_card.group);
        card.uid = _card.uid;
        card.categories = std::exchange(_card.categories, {});
        if (card.group)
            return true;
        card.text = std::exchange(_card.text, {});
        CardReader(card.text, _context).next(card);
        return true;
    }

    bool readRaw(ReadCard& card)
    {
        const std::string_view bytes = _raw->rest();
        if (bytes.empty() && _number == 0)
            return giveEmpty(card);
        if (!_raw->next(card))
            return false;
        card.number = ++_number;
        card.line = _line;
        card.firstLine = firstLineOf(bytes);
        card.bytesDone = _before + _bytes.size() - _raw->rest().size();
        _line += static_cast<std::size_t>(std::ranges::count(bytes.substr(0, card.length), '\n'));
        return true;
    }

    bool giveEmpty(ReadCard& card)
    {
        card.number = _number++;
        card.line = 0;
        card.refusal = "there is nothing in it";
        return true;
    }

    void close(Batch& batch)
    {
        if (_preparation)
            batch.report = _preparation->report();
        _before += _bytes.size();
        _preparation.reset();
        _raw.reset();
        _opened.reset();
        _isOpen = false;
        ++_file;
    }

    const std::vector<CardSource> _sources;
    const VCardReaderContext& _context;
    const Options _options;
    std::size_t _file = 0;
    /// The number of the last card of a source that is not prepared, and of the first line behind it.
    std::size_t _number = 0;
    std::size_t _line = 1;
    std::uint64_t _before = 0;
    bool _isOpen = false;
    std::shared_ptr<const ImportFile> _opened;
    std::string_view _bytes;
    std::optional<Preparation> _preparation;
    std::optional<CardReader> _raw;
    CanonicalCard _card;
};

// ---- handing them over

/// The batches that were made and not yet asked for.
class CardFeed::Queue {
public:
    Queue(std::vector<CardSource> sources, const VCardReaderContext& context, const Options& options)
        : _producer(std::move(sources), context, options)
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

CardFeed::CardFeed(std::vector<CardSource> sources, const VCardReaderContext& context, const Options& options)
    : _queue(std::make_unique<Queue>(std::move(sources), context, options))
{
}

CardFeed::~CardFeed() = default;

ReadCard* CardFeed::next()
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
