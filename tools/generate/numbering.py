"""The numbers of a country: how many there are that begin so, and how the public metadata has each one written."""
import re
from collections import defaultdict

from digit_patterns import DIGITS, Pattern, width


class Rule:
    """How one sort of numbers is cut into groups and written."""

    def __init__(self, data):
        leading = data["leadingDigits"]
        self.pattern = Pattern(data["pattern"])
        self.leading = Pattern(leading[-1] if leading else "", prefix=True)
        self.widths = [width(group) for group in re.findall(r"\(([^()]*)\)", data["pattern"])]
        self.format = data["format"]
        self.trunk = data["trunk"]
        self.trunk_optional = data["trunkOptional"]

    def holds_for(self, length):
        return sum(least for least, _ in self.widths) <= length <= sum(most for _, most in self.widths)

    def shape(self, length, first="$1"):
        """The form of numbers of `length` digits: characters, and the places of digits in the number. `first`
        says what stands around the first group."""
        text = re.sub(r"\$\d", lambda group: first.replace("$1", group.group()), self.format, count=1)
        spans = self._spans(length)
        shape = []
        for piece in re.findall(r"\$\d|[^$]", text):
            shape.extend(spans[int(piece[1]) - 1] if piece[0] == "$" else piece)
        return tuple(shape)

    def _spans(self, length):
        """The places of each group; what is left of the length goes to the groups in front."""
        spare = length - sum(least for least, _ in self.widths)
        spans, at = [], 0
        for least, most in self.widths:
            taken = min(most, least + spare)
            spare -= taken - least
            spans.append(range(at, at + taken))
            at += taken
        return spans


class Numbers:
    """All numbers of a country, by the rule that holds for each and the kinds that it is of."""

    def __init__(self, kinds, rules):
        self.rules = rules
        self._kinds = list(kinds)
        self._automata = [Pattern(kinds[kind]) for kind in kinds]
        self._automata += [automaton for rule in rules for automaton in (rule.pattern, rule.leading)]
        self._steps, self._counts = {}, {}
        self.start = tuple(automaton.start for automaton in self._automata)

    def next(self, state, digit):
        if (state, digit) not in self._steps:
            self._steps[state, digit] = tuple(
                automaton.next(at, digit) for automaton, at in zip(self._automata, state))
        return self._steps[state, digit]

    def count(self, state, remaining):
        """How many numbers begin as `state` has read and go on with `remaining` digits: a dictionary by rule and
        kind. The kind None is for what is no number of the whole country."""
        if remaining == 0:
            return self._classified(state)
        if (state, remaining) not in self._counts:
            total = defaultdict(int)
            for digit in DIGITS:
                for key, count in self.count(self.next(state, digit), remaining - 1).items():
                    total[key] += count
            self._counts[state, remaining] = dict(total)
        return self._counts[state, remaining]

    def _classified(self, state):
        taken = [automaton.accepts(at) for automaton, at in zip(self._automata, state)]
        pairs = taken[len(self._kinds):]
        rule = next((at // 2 for at in range(0, len(pairs), 2) if pairs[at] and pairs[at + 1]), None)
        kinds = [kind for kind, is_one in zip(self._kinds, taken) if is_one]
        return {(rule, kind): 1 for kind in kinds or [None]}
