// How a web address is put on cards, and taken off them.
#include "commands/ZRAddURLFromBrowserCommand.h"

#include "commands/RecordKeeping.h"
#include "core/ZRConstants.h"
#include "core/ZRMutableMultiValue.h"
#include "store/ZRDBCache.h"

#include <algorithm>

using platform::Ref;
using platform::Value;

namespace {

Ref<ZRMutableMultiValue> urlsOf(const ZRRecord& record)
{
    const Value value = record.valueForProperty(zr::kZRURLsProperty);
    const auto* urls = value.as<ZRMultiValue>();
    return urls ? urls->mutableCopy() : platform::makeRef<ZRMutableMultiValue>();
}

void setURLs(ZRRecord& record, const Ref<ZRMutableMultiValue>& urls)
{
    record.setValue(urls->count() == 0 ? Value() : Value(urls), zr::kZRURLsProperty);
}

} // namespace

ZRAddURLFromBrowserCommand::ZRAddURLFromBrowserCommand(
    ZRRecordList records, std::string_view url, Ref<ZRRoster> roster)
    : ZRCommand(std::move(roster)), _url(url), _records(peopleAmong(records))
{
}

ZRAddURLFromBrowserCommand::~ZRAddURLFromBrowserCommand() = default;

// The first label of addresses that the card does not use yet, so that it can tell them apart.
const std::string& ZRAddURLFromBrowserCommand::suggestedLabel(ZRRecord& record)
{
    std::string& label = _labelsByURL[_url];
    if (!label.empty())
        return label;
    const auto labels = ZRPerson::builtInLabelsForProperty(zr::kZRURLsProperty);
    const auto used = urlsOf(record);
    const auto unused = std::ranges::find_if(labels, [&](const auto& one) {
        return std::ranges::find(used->_allLabels(), one) == used->_allLabels().end();
    });
    return label = unused == labels.end() ? labels.front() : *unused;
}

void ZRAddURLFromBrowserCommand::addURL(ZRRecord& record)
{
    const auto urls = urlsOf(record);
    std::string& identifier = _URLIDs[record.uniqueId()];
    if (identifier.empty())
        identifier = urls->addValue(Value(_url), suggestedLabel(record));
    else
        urls->_appendValue(Value(_url), suggestedLabel(record), identifier);
    if (urls->count() == 1)
        urls->setPrimaryIdentifier(identifier);
    setURLs(record, urls);
}

void ZRAddURLFromBrowserCommand::removeURL(ZRRecord& record)
{
    const auto urls = urlsOf(record);
    const ZRIndex index = urls->indexForIdentifier(_URLIDs.at(record.uniqueId()));
    if (index == kZRNotFound)
        return;
    urls->removeValueAndLabelAtIndex(index);
    setURLs(record, urls);
}

bool ZRAddURLFromBrowserCommand::doIt()
{
    if (_records.empty() || _url.empty())
        return false;
    redoIt();
    return true;
}

void ZRAddURLFromBrowserCommand::undoIt()
{
    cache().updateMembersSelection(_records);
    for (const auto& record : _records)
        removeURL(*record);
    cache().changedMembers(_records);
    cache().nonThreadedSave();
}

void ZRAddURLFromBrowserCommand::redoIt()
{
    cache().updateMembersSelection(_records);
    for (const auto& record : _records)
        addURL(*record);
    cache().changedMembers(_records);
    cache().nonThreadedSave();
}
