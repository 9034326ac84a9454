// The cards of all files of an import, prepared on a second thread while the first one stores.
#pragma once

#include "interchange/vcard/prepare/Report.h"
#include "platform/text/Encoding.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace interchange {

/// One data for a parser of its own: a prepared card, or a whole file as it is.
struct CardData {
    /// The bytes for the parser; empty when the card is refused. Alive as long as this is.
    std::string_view bytes() const { return whole.data() ? whole : std::string_view(text); }

    /// A prepared card.
    std::string text;
    /// A file that is not prepared; `keeper` keeps it in memory.
    std::string_view whole;
    std::shared_ptr<const void> keeper;

    /// Which of the import's files, from 0.
    std::size_t file = 0;
    /// The number of the card in its file and of its first line, from 1. A whole file: 1.
    std::size_t number = 1;
    std::size_t line = 1;
    /// A line that tells people which card is meant.
    std::string firstLine;
    /// Why there are no bytes; empty when there are.
    std::string refusal;
    /// Behind this card, of all files together.
    std::uint64_t bytesDone = 0;
};

/// Where an import reads from: a file by its path, or bytes that somebody else holds.
struct CardSource {
    /// As reports name it.
    std::string name;
    std::string path;
    std::optional<std::string_view> bytes;
};

/// Gives the data of several sources one after the other.
///
/// Reading and preparation run ahead on a thread of their own, by at most `kMostWaiting` batches; where the
/// system has no thread to give, they run when somebody asks.
///
/// Ownership: owns the files it reads; borrows the bytes of sources that have no path.
/// Threads:   one caller. Destroying it stops the other thread and waits for it.
/// Errors:    a source that cannot be read is the last thing it gives: see `unreadable`.
class CardFeed {
public:
    enum class Form { prepared, raw };
    struct Options {
        Form form = Form::prepared;
        /// Tried where neither card nor file names a character set; 0 for none.
        TextEncoding preferredEncoding = 0;
    };

    static constexpr std::size_t kMostWaiting = 4;
    /// A batch is full at so many cards, or so many bytes.
    static constexpr std::size_t kBatchCards = 128;
    static constexpr std::size_t kBatchBytes = 1U << 20;

    CardFeed(std::vector<CardSource> sources, const Options& options);
    ~CardFeed();
    CardFeed(const CardFeed&) = delete;
    CardFeed& operator=(const CardFeed&) = delete;

    /// The next data, alive until the next call; null behind the last.
    const CardData* next();

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
