// The cards of all files of an import, read on a second thread while the first one stores.
#pragma once

#include "interchange/import/CardReader.h"
#include "interchange/vcard/prepare/Report.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace interchange {

/// Where an import reads from: a file by its path, or bytes that somebody else holds.
struct CardSource {
    /// As reports name it.
    std::string name;
    std::string path;
    std::optional<std::string_view> bytes;
};

/// Gives the cards of several sources one after the other.
///
/// Reading, preparation and parsing run ahead on a thread of their own, by at most `kMostWaiting` batches;
/// where the system has no thread to give, they run when somebody asks.
///
/// Ownership: owns the files it reads; borrows the context, and the bytes of sources that have no path.
/// Threads:   one caller. Destroying it stops the other thread and waits for it.
/// Errors:    a source that cannot be read is the last thing it gives: see `unreadable`.
class CardFeed {
public:
    enum class Form { prepared, raw };
    struct Options {
        Form form = Form::prepared;
        vcard::prepare::GroupWishes groups = {};
    };

    static constexpr std::size_t kMostWaiting = 4;
    /// A batch is full at so many cards, or so many bytes.
    static constexpr std::size_t kBatchCards = 128;
    static constexpr std::size_t kBatchBytes = 1U << 20;

    /// `context` is asked on the other thread.
    CardFeed(std::vector<CardSource> sources, const VCardReaderContext& context, const Options& options);
    ~CardFeed();
    CardFeed(const CardFeed&) = delete;
    CardFeed& operator=(const CardFeed&) = delete;

    /// The next card, alive until the next call; null behind the last.
    ReadCard* next();

    /// What was done to the cards, a report for each source that was read to its end.
    const std::vector<vcard::prepare::Report>& reports() const { return _reports; }

    struct Unreadable {
        std::size_t file;
        std::string reason;
    };
    /// The source that could not be read, once `next` has answered null.
    const std::optional<Unreadable>& unreadable() const { return _unreadable; }

private:
    struct Batch;
    class Producer;
    class Queue;

    std::unique_ptr<Queue> _queue;
    std::unique_ptr<Batch> _batch;
    std::size_t _at = 0;
    std::vector<vcard::prepare::Report> _reports;
    std::optional<Unreadable> _unreadable;
};

} // namespace interchange
