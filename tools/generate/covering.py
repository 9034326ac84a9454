"""Which templates write the most numbers as they should be, when there may be only so many."""
import itertools

import numpy

# So many digits of a number, besides the trunk prefix, a template may say.
MOST_LITERALS = 4
# A template that earns less than this is not worth its line in the list.
LEAST_GAIN = 5e-5


class Cover:
    """The templates chosen for one table. One with more literal digits goes before one with fewer."""

    def __init__(self, table, must_say):
        """`must_say(text)` tells how many digits in front each template of that skeleton says."""
        self.table = table
        self.chosen = []  # of (literals by place, skeleton)
        # A right number earns its weight, a wrong one costs its harm, and one that no template takes is for nothing.
        harm = sum(table.harm.values())
        self._worth = {text: right + table.harm[text] - harm for text, right in table.weights.items()}
        self._must_say = {text: must_say(text) for text in table.weights}
        self._assign()

    def _assign(self, without=None):
        """What each cell earns now, and by how many literals."""
        shape = (10,) * self.table.depth
        self._now, self._literals = numpy.zeros(shape), numpy.full(shape, -1)
        for one in self.chosen:
            if one is not without:
                literals, text = one
                cells = tuple(literals.get(place, slice(None)) for place in range(self.table.depth))
                stronger = self._literals[cells] < len(literals)
                self._now[cells] = numpy.where(stronger, self._worth[text][cells], self._now[cells])
                self._literals[cells] = numpy.maximum(self._literals[cells], len(literals))

    def best(self):
        """The template that earns most beside those chosen, as (gain, literals, skeleton)."""
        offers = (offer for text in self._worth for offer in self._offers(text))
        return max(offers, key=lambda offer: offer[0], default=(0, {}, None))

    def _offers(self, text):
        gain = self._worth[text] - self._now
        for count in range(self._must_say[text], self._most_literals(text) + 1):
            open_gain = numpy.where(self._literals < count, gain, 0)
            for places in self._places(text, count):
                yield (*best_of(open_gain, places), text)

    def _places(self, text, count):
        front = tuple(range(self._must_say[text]))
        rest = range(len(front), self.table.depth)
        for more in itertools.combinations(rest, count - len(front)):
            yield front + more

    def _most_literals(self, text):
        return min(self.table.depth, MOST_LITERALS + self.table.fixed[text])

    def take(self, literals, text):
        self.chosen.append((literals, text))
        self._assign()

    def drop_idle(self):
        """Takes out what others chosen later have made needless."""
        for one in list(self.chosen):
            self._assign()
            earned = self._now.sum()
            self._assign(without=one)
            if self._now.sum() > earned - LEAST_GAIN / 2:
                self.chosen.remove(one)
        self._assign()


def best_of(gain, places):
    """The digits in `places` by which a template gains most. Of two that gain the same the narrower one is taken."""
    others = tuple(axis for axis in range(gain.ndim) if axis not in places)
    sums = gain.sum(axis=others) if others else gain
    at = numpy.unravel_index(numpy.argmax(sums), sums.shape) if places else ()
    best = float(sums[at]) if places else float(sums)
    return best * (1 + 1e-5 * len(places)), dict(zip(places, map(int, at)))


def choose(covers, most):
    """Lets the covers take templates, the one that earns most first, until `most` are taken. A second round fills the
    places of those that turned out needless."""
    for _ in range(2):
        offers = [cover.best() for cover in covers]
        while sum(len(cover.chosen) for cover in covers) < most and offers:
            at = max(range(len(covers)), key=lambda index: offers[index][0])
            gain, literals, text = offers[at]
            if gain < LEAST_GAIN:
                break
            covers[at].take(literals, text)
            offers[at] = covers[at].best()
        for cover in covers:
            cover.drop_idle()
