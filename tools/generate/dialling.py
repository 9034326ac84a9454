"""What people dial and how it is written: the numbers that share a count of digits, cell by cell of their beginnings."""
import itertools
from collections import defaultdict
from dataclasses import dataclass

import numpy

from digit_patterns import DIGITS

# So many digits from the start may tell how a number is written.
DEPTH = 5


@dataclass
class Sort:
    """The numbers of one length that are written in one way in front: with the trunk prefix, say."""
    group: str
    length: int
    weights: dict  # what one number of a kind weighs
    harm: float  # how much worse it is to write one wrongly than it is good to write it rightly
    sequence: tuple  # of what is dialled: digits, and places in the number
    texts: dict  # by rule, the skeleton of the template


class Table:
    """The numbers of one count of digits behind `head`: what they weigh, by cell and skeleton.

    A cell is the first digits; a skeleton is a template with "#" for all digits that may vary from cell to cell.
    """

    def __init__(self, head, count):
        self.head, self.count = head, count
        self.depth = min(DEPTH, count)
        self.weights, self.harm = {}, {}
        self.fixed = defaultdict(int)  # by skeleton, how many digits in front must be said
        self.groups = defaultdict(lambda: defaultdict(float))

    def add(self, numbers, sort):
        fixed = next((at for at, piece in enumerate(sort.sequence) if not isinstance(piece, str)), 0)
        for text in sort.texts.values():
            self.fixed[text] = max(self.fixed[text], fixed)
            for cells in (self.weights, self.harm):
                cells.setdefault(text, numpy.zeros((10,) * self.depth))
        self._grow(numbers, sort, "", [(0, numbers.start)])

    def _grow(self, numbers, sort, prefix, states):
        weights = self._weigh(numbers, sort, states)
        if not weights:
            return
        if len(prefix) == self.depth or len(prefix) >= 3 and len(weights) == 1:
            cells = tuple(int(digit) for digit in prefix)
            for text, weight in weights.items():
                each = weight / 10 ** (self.depth - len(prefix))
                self.weights[text][cells] += each
                self.harm[text][cells] += each * sort.harm
                self.groups[text][sort.group] += weight
            return
        for digit in DIGITS:
            self._grow(numbers, sort, prefix + digit, list(step(numbers, sort, len(prefix), states, digit)))

    def _weigh(self, numbers, sort, states):
        weights = defaultdict(float)
        for read, state in states:
            for (rule, kind), count in numbers.count(state, sort.length - read).items():
                if rule in sort.texts and kind in sort.weights:
                    weights[sort.texts[rule]] += count * sort.weights[kind]
        return weights


def step(numbers, sort, place, states, digit):
    """The states after `digit` was dialled in the given place; a digit that nobody dials may be any."""
    piece = sort.sequence[place]
    for read, state in states:
        if isinstance(piece, str):
            if piece == digit:
                yield read, state
            continue
        for silent in itertools.product(DIGITS, repeat=piece - read):
            reached = state
            for one in (*silent, digit):
                reached = numbers.next(reached, one)
            yield piece + 1, reached
