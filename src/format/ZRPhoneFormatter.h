// How telephone numbers are shown: by the first template of a list that fits.
#pragma once

#include "format/CharacterSet.h"
#include "format/PhoneTemplates.h"
#include "format/ZRSearchHighlightFormatter.h"
#include "platform/notify/Subscription.h"
#include "platform/run/Mutex.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The autosave name of the shared formatter.
inline constexpr char ZRPhoneFormat[] = "ZRPhoneFormat";
/// Tells, within the process, that a formatter has written its list and switches; its object is that
/// formatter.
inline constexpr char kZRPhoneFormatChangedNotification[] = "ZRPhoneFormatChanged";

/// Turns a number as it was typed into the form in which people read it, by an ordered list of templates.
///
/// In a template "#" stands for the next digit of the number, and "+" counts as a digit. A digit or "+" must
/// be the number's character at its place. Everything else is decoration. The first template that takes all
/// characters of the number is the one; a number that none takes stays as it was typed. Nothing is added to a
/// number and nothing taken from it except decoration.
///
/// The list and two switches are kept in the user's preferences (domain "org.quillon.Roster") under the
/// autosave name: "<name>-PhoneFormatter", "<name>-Enabled" and "<name>-Edited". Every change is written at
/// once, and the other formatters of the process read it.
///
/// Ownership: owns its list. The shared one lives as long as the process.
/// Threads:   any may format; one at a time edits. The notification is posted on the thread that edits.
/// Errors:    formatting has none. An index past the end raises the invalid-argument failure.
class ZR_EXPORT ZRPhoneFormatter : public ZRSearchHighlightFormatter {
public:
    /// Enabled, not edited, without templates and without a name.
    ZRPhoneFormatter();

    /// Bound to `ZRPhoneFormat`.
    static platform::Ref<ZRPhoneFormatter> sharedPhoneFormatter();
    /// Country codes in lower case, to arrays of lists of templates. A country's first list is its default,
    /// and the second has the international forms first. Empty when the library's resource is missing.
    static const platform::Value& phoneFormatsDictionary();
    /// What a number may hold in front of its extension.
    static const CharacterSet& allowableCharacters();
    static const CharacterSet& nonAllowableCharacters();

    /// The formatted text of a string or an attributed string; absent for anything else.
    std::optional<std::string> stringForObjectValue(const platform::Value& value) const override;
    /// Gives the formatted text of what was typed; always true, and the error text becomes empty.
    ///
    /// From the first character on that no number holds, such as the "e" of " ext 5", the text is an
    /// extension: it stays behind the formatted number and one blank. Full-width digits become plain ones.
    /// Without templates or when not enabled, the text comes back as it is.
    bool getObjectValue(platform::Value& value, std::string_view typed,
        std::string* errorDescription = nullptr) const override;

    std::vector<std::string> formats() const;
    bool enabled() const;
    /// Writes only when it changes something, as `setEdited`.
    void setEnabled(bool enabled);
    /// Whether the user has changed the list.
    bool edited() const;
    void setEdited(bool edited);

    /// Empty when none was set.
    std::string formatAutosaveName() const;
    /// Binds the formatter to preferences. A new name loads what they hold; where they hold no templates, the
    /// list of the shared roster's default country is taken and written.
    void setFormatAutosaveName(std::string_view name);

    /// Puts the template at the end, without white space around it.
    void addFormat(std::string_view format);
    /// Puts it, as it is, in front of the one at `index`.
    void insertFormat_atIndex(std::string_view format, ZRIndex index);
    void removeFormatAtIndex(ZRIndex index);
    void removeAllFormats();
    /// Without white space around it; an absent one changes nothing.
    void replaceFormatAtIndex(ZRIndex index, std::optional<std::string_view> format);
    /// Puts the template at `from` in front of the one at `to`; at the end when `to` is the count or more.
    /// Nothing when both are equal.
    void moveFormatAtIndex(ZRIndex from, ZRIndex to);

    /// Name, switches and templates, for people who debug.
    std::string description() const override;

private:
    ~ZRPhoneFormatter() override = default;

    struct __ZRPhoneFlags {
        bool enabled = true;
        bool edited = false;
    };

    void _setFormats(std::vector<std::string> formats);
    void _updateFormats(const platform::Object* changed);
    void _updateDefaults();
    void takeDefaultFormats();
    /// Runs `edit` on a copy of the list, takes the copy over and writes it.
    template <class Edit>
    void edit(Edit&& edit);
    std::shared_ptr<const PhoneTemplates> templatesInUse() const;
    std::string formatted(std::string_view typed) const;

    mutable platform::Mutex _mutex;
    std::vector<std::string> _formats ZR_GUARDED_BY(_mutex);
    /// Of `_formats`: those who format go on with the one they took.
    std::shared_ptr<const PhoneTemplates> _templates ZR_GUARDED_BY(_mutex);
    std::string _autosaveName ZR_GUARDED_BY(_mutex);
    __ZRPhoneFlags _ZRPhoneFlags ZR_GUARDED_BY(_mutex);
    /// The last field, so that it goes first.
    platform::Subscription _changes;
};

/// A number as text in the decimal style of the user's locale: 1,234 or 1.234.
ZR_EXPORT std::string ZRLocalizedInteger(ZRIndex number);
