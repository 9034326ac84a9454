// The forms in which `roster export` writes cards.
#pragma once

#include "Command.h"

#include <memory>

class ZRPerson;

/// Which of a card's fields leave the roster.
struct ExportScope {
    bool notes = false;
    bool pictures = false;
};

/// One form: text before the cards, a text a card, text behind them.
///
/// Ownership: borrows the roster. Threads: one. Errors: none.
class CardWriter {
public:
    virtual ~CardWriter() = default;

    /// Whether `look` must see every card before the first is written.
    virtual bool looksFirst() const { return false; }
    virtual void look(ZRPerson&) { }

    virtual std::string begin() { return {}; }
    virtual std::string card(ZRPerson& person) = 0;
    virtual std::string end() { return {}; }
};

/// The writer of "vcard3", "vcard4", "vcard21", "json" or "csv".
std::unique_ptr<CardWriter> cardWriterFor(const std::string& format, ExportScope scope, ZRRoster& roster);

/// One JSON array, byte for byte as `roster list --json` prints it.
std::unique_ptr<CardWriter> jsonWriter(ExportScope scope);
/// A table with a header line (RFC 4180); see `roster export --help` for its columns.
std::unique_ptr<CardWriter> csvWriter(ExportScope scope, ZRRoster& roster);

/// Whether a table has columns for a property.
bool hasColumns(std::string_view property, ZRPropertyType type);
