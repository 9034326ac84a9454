#!/usr/bin/env python3
"""Writes resources/ZRPhoneFormats.plist: for each country the templates by which its telephone numbers are written.

usage: phone_formats.py METADATA OUTPUT

METADATA is what PhoneMetadata.cpp prints (README.md here says how to make both). Each country gets two lists. In the
first stand the forms of nationals: without area code, whole, with the trunk prefix, and then with the country code;
in the second the forms with the country code come first, and count for more where there are too many. A template
holds for one count of digits; which of several holds for a number is told by literal digits, so that of templates of
one count the one with more of them stands first.
"""
import json
import plistlib
import re
import sys
from collections import defaultdict

from covering import Cover, choose
from dialling import Sort, Table
from numbering import Numbers, Rule
from templates import in_order, skeleton, template

MOST_TEMPLATES = 60
# How often numbers of a kind are written down, one beside the other.
KINDS = {"fixed": 1, "mobile": 1, "free": .04, "voip": .02, "shared": .015, "company": .01, "premium": .004,
         "personal": .004, "pager": .001, "voicemail": .001}
# Large towns, where the many codes of villages would drown theirs: the numbers of each are one more kind.
TOWNS = {"43": ("1", "316", "463", "512", "662", "732")}
TOWN = .05
# Where people write otherwise than the metadata does: rules that go before its own. Athens has the area code 210,
# and the numbers of Swedish companies begin with four digits that people keep together.
CORRECTIONS = {
    "30": {"pattern": r"(\d{3})(\d{3})(\d{4})", "leadingDigits": ["21"], "format": "$1 $2 $3", "trunk": "",
           "trunkOptional": False, "abroad": "$1 $2 $3"},
    "46": {"pattern": r"(\d{3})(\d{2})(\d{2})(\d{2})", "leadingDigits": ["77[0-7]"], "format": "$1-$2 $3 $4",
           "trunk": "0$1", "trunkOptional": False, "abroad": "$1 $2 $3 $4"},
}
GROUPS = ("local", "national", "trunk", "abroad", "optional")
# How much the forms of a group count in each of the two lists.
GROUP_WEIGHTS = ({"local": .5, "national": 1, "trunk": 1, "abroad": .6, "optional": .1},
                 {"local": .3, "national": .6, "trunk": .6, "abroad": 1, "optional": .25})
# A trunk prefix in brackets is rare, but templates of other numbers must not tear those apart that have it.
HARM = {"optional": 2}
# In an open plan most numbers have these.
COMMON_LENGTHS = {6: .03, 7: .1, 8: .4, 9: 1, 10: 1, 11: .5, 12: .03}
RARE_LENGTH = .01
# The shorter numbers of Germany are the switchboards of towns, whose area codes a few leading digits cannot tell.
SHORTEST = {"49": 9}


class Country:
    """The numbering plan behind one country code, and the templates of its numbers."""

    def __init__(self, of_code):
        main = next((data for data in of_code if data["main"]), of_code[0])
        self.code, self.trunk = str(main["code"]), main["trunkPrefix"]
        general = main["kinds"]["general"]
        shortest = SHORTEST.get(self.code, 0)
        self.lengths = [length for length in general["lengths"] if length >= shortest]
        # One shorter, with its trunk prefix in brackets, has as many digits as the shortest without.
        self.optional_lengths = [length for length in general["lengths"] if length >= shortest - 1]
        self.local_lengths = [length for length in general["localLengths"] if length not in general["lengths"]]
        # Subscribers' numbers of many lengths behind area codes of many lengths.
        self.is_open = len(main["kinds"]["fixed"]["lengths"] or general["lengths"]) > 2
        own = [CORRECTIONS[self.code]] if self.code in CORRECTIONS else []
        national = own + main["national"] or [one_block(self.lengths)]
        own_abroad = [dict(rule, format=rule["abroad"]) for rule in own]
        international = own_abroad + (main["international"] or main["national"]) or national
        # Area codes of the many countries in America tell nothing about how numbers are written.
        kinds = kinds_of([main] if self.code == "1" else of_code)
        kinds.update((town, rf"{town}\d{{3,9}}") for town in TOWNS.get(self.code, ()))
        self.at_home = Numbers(kinds, [Rule(data) for data in national])
        self.abroad = Numbers(kinds, [Rule(data) for data in international])

    def lists(self):
        return [self._list(order, weights) for order, weights in zip(
            (GROUPS, ("abroad", "optional", "local", "national", "trunk")), GROUP_WEIGHTS)]

    def _list(self, order, weights):
        tables = {}
        for group in GROUPS:
            # Americans keep the brackets behind the country code too.
            numbers = self.abroad if group in ("abroad", "optional") and (
                self.code != "1" or order[0] == "abroad") else self.at_home
            lengths = {"local": self.local_lengths, "optional": self.optional_lengths}.get(group, self.lengths)
            for length in lengths:
                self._add(tables, numbers, group, length, weights[group])
        covers = [Cover(table, lambda text, table=table: self._said_in_front(table, text))
                  for table in tables.values()]
        choose(covers, MOST_TEMPLATES)
        return listed(covers, order)

    def _add(self, tables, numbers, group, length, group_weight):
        """Adds the forms of one group and length to the tables of what is dialled."""
        head = f"+{self.code}" if group in ("abroad", "optional") else ""
        sorts = defaultdict(dict)
        for index, rule in enumerate(numbers.rules):
            shape = rule.holds_for(length) and self._shape(rule, length, group)
            if shape:
                sequence = tuple(piece for piece in shape if not isinstance(piece, str) or piece.isdigit())
                sorts[sequence][index] = skeleton(shape)
        kinds = self._kind_weights(numbers, length, group_weight)
        for sequence, texts in sorts.items():
            table = tables.setdefault((head, len(sequence)), Table(head, len(sequence)))
            table.add(numbers, Sort(group, length, kinds, HARM.get(group, 1), sequence, texts))

    def _shape(self, rule, length, group):
        """How a group of forms writes numbers of the rule, less the country code; None when it does not."""
        if group == "abroad":
            return (" ", *rule.shape(length))
        if group == "optional":
            return (*" (0)", *rule.shape(length)) if self.trunk == "0" else None
        if self.code == "1":
            return (*("1 " if group == "trunk" else ""), *rule.shape(length))
        has_trunk = re.search(r"\d", rule.trunk.replace("$1", ""))
        if group == "trunk":
            return rule.shape(length, rule.trunk) if has_trunk else None
        if has_trunk and not rule.trunk_optional:
            return None
        around = re.sub(r"\d+ ?", "", rule.trunk.replace("$1", "$")).replace("$", "$1")
        return rule.shape(length, around or "$1")

    def _kind_weights(self, numbers, length, group_weight):
        """What one number of each kind weighs: all of a kind share its weight."""
        if length in self.local_lengths:
            return {None: group_weight / 10 ** length}
        counts = defaultdict(int)
        for (_, kind), count in numbers.count(numbers.start, length).items():
            counts[kind] += count
        common = COMMON_LENGTHS.get(length, RARE_LENGTH) if self.is_open else 1
        return {kind: group_weight * KINDS.get(kind, TOWN) * common / count for kind, count in counts.items() if kind}

    def _said_in_front(self, table, text):
        """A template says the trunk prefix. At home it begins with a digit, since "#" would take a plus sign too;
        a long one says what follows the trunk prefix, as a number dialled through 00 is none of the country."""
        if table.head:
            return table.fixed[text]
        return max(1, table.fixed[text] + (table.fixed[text] > 0 and table.count > 11))


def kinds_of(countries):
    """By kind, one pattern for the numbers of all the countries."""
    kinds = {}
    for kind in countries[0]["kinds"]:
        patterns = [data["kinds"][kind]["pattern"] for data in countries if kind != "general"]
        if any(patterns):
            kinds[kind] = "|".join(filter(None, patterns))
    return kinds


def one_block(lengths):
    """The rule of countries whose numbers are so short that nobody cuts them."""
    return {"pattern": rf"(\d{{{min(lengths)},{max(lengths)}}})", "leadingDigits": [], "format": "$1", "trunk": "",
            "trunkOptional": False}


def listed(covers, order):
    """The chosen templates by group of forms, then by count, then the more literal ones first, then the commoner."""
    places, strength = {}, {}
    for cover in covers:
        for index, (literals, skeleton_text) in enumerate(cover.chosen):
            groups = cover.table.groups[skeleton_text]
            text = cover.table.head + template(skeleton_text, literals)
            strength[text] = (-len(literals), index)
            places[text] = (order.index(max(groups, key=groups.get)), cover.table.count, -len(literals), text)
    return in_order(sorted(places, key=places.get), strength)


def all_lists(countries):
    by_code = defaultdict(list)
    for data in countries:
        by_code[data["code"]].append(data)
    lists = {}
    for code, of_code in sorted(by_code.items()):
        shared = Country(of_code).lists()
        lists.update((data["id"].lower(), shared) for data in of_code)
        print(code, *(data["id"] for data in of_code), *(len(one) for one in shared), file=sys.stderr, flush=True)
    return lists


def main():
    with open(sys.argv[1], encoding="utf-8") as metadata:
        countries = [json.loads(line) for line in metadata]
    # What has no country, such as the numbers of satellites, goes by the id 001.
    lists = all_lists([data for data in countries if data["id"].isalpha()])
    with open(sys.argv[2], "wb") as output:
        plistlib.dump(lists, output)


if __name__ == "__main__":
    main()
