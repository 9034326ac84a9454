// How the user chooses and edits the templates of telephone numbers.
#pragma once

#include "format/ZRAntiPhoneFormatter.h"
#include "format/ZRPhoneFormatter.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What the preference pane of telephone numbers does: a menu of ready lists, and a table in which one list
/// is edited.
///
/// It draws nothing: a view shows `listChosen`, `inExpertMode` and the formatter's list, and calls what the
/// user did.
///
/// Ownership: shares the formatter, which holds the list.
/// Threads:   main.
/// Errors:    by the answer. A row or list past the end raises the invalid-argument failure.
class ZR_EXPORT ZRPhoneFormatsPreferencesModule {
public:
    using List = std::vector<std::string>;

    /// Edits the list of `formatter`, mostly the shared one. Custom when that list was edited, else the
    /// first.
    explicit ZRPhoneFormatsPreferencesModule(platform::Ref<ZRPhoneFormatter> formatter);

    /// The menu: the lists of the shared roster's default country.
    static std::vector<List> _allPhoneFormats();
    /// The template with 1, 2 … 9, 0, 1 … in place of each "#".
    static std::string _sampleForFormat(std::string_view format);

    /// Which entry of the menu the list came from; absent for one of the user's own.
    std::optional<std::size_t> listChosen() const { return _listChosen; }
    /// Whether the table is shown.
    bool inExpertMode() const { return _inExpertMode; }

    /// Takes an entry of the menu over: nothing counts as edited then.
    void chooseList(std::size_t list);
    /// The entry without a list: the table appears, with a row to begin with.
    void chooseCustomList();

    /// Puts an empty template behind the selected one, or at the end, and answers its row, which is to be
    /// edited.
    ZRIndex addRow(std::optional<ZRIndex> selected);
    /// Replaces the template of a row; an empty one goes. The list is the user's own from then on. False, and
    /// nothing happens, when `text` holds a character that no template may hold.
    bool editRow(ZRIndex row, std::string_view text);
    /// Takes all empty templates out.
    void _deleteEmpty();

private:
    platform::Ref<ZRPhoneFormatter> _formatter;
    ZRAntiPhoneFormatter _guard;
    std::optional<std::size_t> _listChosen;
    bool _inExpertMode = false;
};
