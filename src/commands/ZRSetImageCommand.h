// Another picture for a card.
#pragma once

#include "commands/ZRCommand.h"
#include "platform/value/Value.h"

#include <cstdint>
#include <optional>
#include <string>

/// The exchange of a card's picture, and of the large one that it was cut from.
///
/// The large picture that is not shown waits in a file in the user's caches.
///
/// Ownership, Threads, Errors: as ZRCommand.
class ZR_EXPORT ZRSetImageCommand final : public ZRCommand {
public:
    /// Absent data for no picture. `largeImageData` is written at once; what cannot be written is logged.
    ZRSetImageCommand(platform::Ref<ZRPerson> person, platform::Value imageData,
        const platform::Value& largeImageData, platform::Ref<ZRRoster> roster = nullptr);

    /// False without a person.
    bool doIt() override;
    void undoIt() override;
    void redoIt() override;

    /// Where the large picture waits that is not shown.
    const std::string& alternatePath() const { return _alternatePath; }

private:
    ~ZRSetImageCommand() override;

    void _switchImage();
    std::optional<std::string> pathOfLargeImage() const;
    void announceLargeImage() const;
    void switchLargeImage() const;

    const platform::Ref<ZRPerson> _person;
    platform::Value _imageData;
    const std::uint64_t _identity;
    std::string _alternatePath;
};
