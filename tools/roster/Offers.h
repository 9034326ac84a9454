// What a shell is offered in a place: the words that may stand there.
#pragma once

#include "CommandTable.h"

/// One word that may stand there. A word that ends with "=", ";" or a blank goes on.
struct Candidate {
    std::string word;
    std::string meaning;
};

/// The words that may stand in such a place and begin with `text`, in any case. The options name the roster
/// that is asked. Empty where there are too many cards to look through, where the roster cannot be used, and
/// where there is none: none is made.
std::vector<Candidate> offered(Offer offer, const std::string& text, const Options& options);

/// Whether the text begins with the other one, in any case and with any accents.
bool beginsWith(const std::string& text, const std::string& beginning);
