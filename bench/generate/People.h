// Who the people of a generated roster are.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace bench {

/// Random numbers that are the same on every machine: the standard's distributions are not.
///
/// Ownership: a plain value. Threads: one. Errors: none.
class Random {
public:
    explicit Random(std::uint64_t seed) : _state(seed) { }

    std::uint64_t next();
    /// From 0 to `bound` less 1.
    std::size_t below(std::size_t bound) { return static_cast<std::size_t>(next() % bound); }
    bool percent(std::size_t chance) { return below(100) < chance; }

private:
    std::uint64_t _state;
};

/// A phone number with a label that its owner made up.
struct LabelledPhone {
    std::string label;
    std::string number;
};

/// One invented person, as fields. Text is UTF-8; an empty field is not there.
struct Person {
    std::string uniqueId;
    std::string first, middle, last, title;
    std::string fullName;
    std::string organization, department, jobTitle;
    std::string workEmail, homeEmail;
    std::string workPhone, cellPhone;
    std::optional<LabelledPhone> labelledPhone;
    std::string street, city, state, zipCode, country;
    std::string birthday;
    std::string revised;
    std::string note;
    /// The bytes of a picture of 15,000 bytes, for one person in fifty.
    std::string photo;
};

/// The person of that number, the same for a seed however many are made. One in ten has a name that is not
/// ASCII. Hosts are below example.com and example.org, phone numbers in ranges that nobody is given.
Person personNumbered(std::uint64_t seed, std::size_t number);

} // namespace bench
