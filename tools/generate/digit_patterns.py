"""Patterns over the ten digits as automata, so that all numbers that a pattern takes can be counted.

Knows what telephone metadata uses: digits, classes, groups, alternatives and repetitions.
"""
try:
    from re import _constants as codes, _parser as parser
except ImportError:  # before Python 3.11
    import sre_constants as codes
    import sre_parse as parser

DIGITS = "0123456789"


class Pattern:
    """The automaton of one pattern, made as far as it is walked. A state is a number; 0 takes nothing any more.

    `start`, then `next(state, digit)`, then `accepts(state)`. With `prefix`, a text is taken as soon as its
    beginning is.
    """

    def __init__(self, text, prefix=False):
        self._prefix = prefix
        self._edges = []  # of the nondeterministic automaton: (digits or None, target)
        self._sets = {frozenset(): 0}
        self._steps = [dict.fromkeys(DIGITS, 0)]
        self._accepting = [False]
        self._members = [frozenset()]
        first = self._node()
        self._end = self._add(parser.parse(text), first)
        self.start = self._state({first})

    def next(self, state, digit):
        known = self._steps[state]
        if digit not in known:
            reached = {to for node in self._members[state] for (digits, to) in self._edges[node]
                       if digits and digit in digits}
            if self._prefix and self._accepting[state]:
                known[digit] = state
            else:
                known[digit] = self._state(reached)
        return known[digit]

    def accepts(self, state):
        return self._accepting[state]

    def _node(self):
        self._edges.append([])
        return len(self._edges) - 1

    def _state(self, nodes):
        todo, closed = list(nodes), set(nodes)
        while todo:
            for digits, to in self._edges[todo.pop()]:
                if digits is None and to not in closed:
                    closed.add(to)
                    todo.append(to)
        key = frozenset(closed)
        if key not in self._sets:
            self._sets[key] = len(self._members)
            self._members.append(key)
            self._steps.append({})
            self._accepting.append(self._end in key)
        return self._sets[key]

    def _add(self, items, at):
        for operation, argument in items:
            at = self._add_one(operation, argument, at)
        return at

    def _add_one(self, operation, argument, at):
        if operation in (codes.LITERAL, codes.IN):
            to = self._node()
            self._edges[at].append((digits_of(operation, argument), to))
            return to
        if operation is codes.SUBPATTERN:
            return self._add(argument[-1], at)
        if operation is codes.BRANCH:
            to = self._node()
            for branch in argument[1]:
                self._edges[self._add(branch, at)].append((None, to))
            return to
        if operation is codes.MAX_REPEAT:
            return self._add_repetition(*argument, at)
        raise ValueError(f"a pattern with {operation}")

    def _add_repetition(self, least, most, items, at):
        if most is codes.MAXREPEAT:
            raise ValueError("a pattern without an end")
        for _ in range(least):
            at = self._add(items, at)
        ends = [at]
        for _ in range(most - least):
            at = self._add(items, at)
            ends.append(at)
        to = self._node()
        for end in ends:
            self._edges[end].append((None, to))
        return to


def digits_of(operation, argument):
    if operation is codes.LITERAL:
        return frozenset(chr(argument))
    found = set()
    for kind, what in argument:
        if kind is codes.LITERAL:
            found.add(chr(what))
        elif kind is codes.RANGE:
            found.update(chr(code) for code in range(what[0], what[1] + 1))
        elif what is codes.CATEGORY_DIGIT:
            found.update(DIGITS)
        else:
            raise ValueError(f"a class with {kind}")
    return frozenset(found)


def width(text):
    """The least and the most digits that a pattern takes."""
    return parser.parse(text).getwidth()
