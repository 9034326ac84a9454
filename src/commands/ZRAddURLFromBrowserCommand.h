// A web address that a browser hands over.
#pragma once

#include "commands/ZRCommand.h"

#include <map>
#include <string>

/// A web address that cards get.
///
/// Ownership, Threads, Errors: as ZRCommand.
class ZR_EXPORT ZRAddURLFromBrowserCommand final : public ZRCommand {
public:
    ZRAddURLFromBrowserCommand(
        ZRRecordList records, std::string_view url, platform::Ref<ZRRoster> roster = nullptr);

    /// False without a card and an address.
    bool doIt() override;
    void undoIt() override;
    void redoIt() override;

private:
    ~ZRAddURLFromBrowserCommand() override;

    void addURL(ZRRecord& record);
    void removeURL(ZRRecord& record);
    const std::string& suggestedLabel(ZRRecord& record);

    /// The identifier of the entry and its label, by the id of the card.
    std::map<std::string, std::string> _URLIDs;
    std::map<std::string, std::string> _labelsByURL;
    const std::string _url;
    const ZRRecordList _records;
};
