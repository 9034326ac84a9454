// Follows the user through the menu and the table of templates.
#include "format/ZRPhoneFormatsPreferencesModule.h"

#include "core/ZRFailure.h"
#include "format/PhoneFormats.h"
#include "store/ZRRoster.h"

#include <iterator>

ZRPhoneFormatsPreferencesModule::ZRPhoneFormatsPreferencesModule(platform::Ref<ZRPhoneFormatter> formatter)
    : _formatter(std::move(formatter))
{
    if (!_formatter->edited())
        _listChosen = 0;
}

std::vector<ZRPhoneFormatsPreferencesModule::List> ZRPhoneFormatsPreferencesModule::_allPhoneFormats()
{
    const auto roster = ZRRoster::sharedRoster();
    return roster ? phoneFormatsOfCountry(roster->defaultCountryCode()) : std::vector<List>();
}

std::string ZRPhoneFormatsPreferencesModule::_sampleForFormat(std::string_view format)
{
    std::string sample(format);
    int digit = 0;
    for (char& character : sample)
        if (character == '#')
            character = static_cast<char>('0' + ++digit % 10);
    return sample;
}

void ZRPhoneFormatsPreferencesModule::chooseList(std::size_t list)
{
    const auto lists = _allPhoneFormats();
    zrRequire(list < lists.size(), "list < [_allPhoneFormats count]");
    _formatter->setEdited(false);
    _formatter->removeAllFormats();
    for (const auto& format : lists[list])
        _formatter->addFormat(format);
    _listChosen = list;
}

void ZRPhoneFormatsPreferencesModule::chooseCustomList()
{
    _inExpertMode = true;
    addRow({});
}

ZRIndex ZRPhoneFormatsPreferencesModule::addRow(std::optional<ZRIndex> selected)
{
    const ZRIndex row = selected ? *selected + 1 : std::ssize(_formatter->formats());
    _formatter->insertFormat_atIndex("", row);
    return row;
}

bool ZRPhoneFormatsPreferencesModule::editRow(ZRIndex row, std::string_view text)
{
    platform::Value checked;
    if (!_guard.getObjectValue(checked, text))
        return false;
    _formatter->replaceFormatAtIndex(row, checked.asText());
    _formatter->setEdited(true);
    _listChosen.reset();
    _deleteEmpty();
    return true;
}

void ZRPhoneFormatsPreferencesModule::_deleteEmpty()
{
    const auto formats = _formatter->formats();
    for (ZRIndex row = std::ssize(formats) - 1; row >= 0; --row)
        if (formats[static_cast<std::size_t>(row)].empty())
            _formatter->removeFormatAtIndex(row);
}
