// What an export leaves behind: what it was told to hold back, and what its format has no place for.
#pragma once

#include "CardWriter.h"

#include <map>
#include <string>
#include <unordered_set>

/// Counts, card by card, what does not go out.
///
/// Held back is what the user keeps here: notes and pictures that were not asked for, and the fields that Me
/// keeps private. Not carried is what a format cannot hold.
///
/// Ownership: borrows the roster. Threads: one. Errors: none.
class ExportLosses {
public:
    ExportLosses(const std::string& format, ExportScope scope, ZRRoster& roster);

    void count(ZRPerson& person);

    /// "notes of 3 cards, a picture of 1 card, 2 fields of Me"; empty when nothing was.
    std::string heldBack() const;
    /// "com.example.shoe (3 cards), Phone labels (1 card)", by name; empty when all was carried.
    std::string notCarried() const;

private:
    void countPrivate(const ZRPerson& me);
    void countUnknownLabels(const ZRPerson& person);
    bool hasPicture(const ZRPerson& person) const;

    const ExportScope _scope;
    const bool _isVCard;
    const bool _is21;
    /// Of Me; empty without one.
    std::string _me;
    /// The properties that the format has no place for.
    std::vector<std::string> _uncarried;
    /// The names of the files in the folder of pictures.
    std::unordered_set<std::string> _pictures;

    std::size_t _notes = 0, _heldPictures = 0, _privateFields = 0;
    std::map<std::string, std::size_t> _notCarried;
};
