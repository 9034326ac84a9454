"""Templates of telephone numbers as texts: how they come from skeletons, and in which order a list holds them."""
DIGITS = "0123456789"
COUNTED = "+#" + DIGITS


def skeleton(shape):
    """The text of a shape with "#" for every digit of the number and for the literal digits in front of them."""
    first = next(at for at, piece in enumerate(shape) if not isinstance(piece, str))
    return "".join("#" if not isinstance(piece, str) or at < first and piece in DIGITS else piece
                   for at, piece in enumerate(shape))


def template(text, literals):
    """The skeleton `text` with literal digits, by their place among the digits."""
    result, place = "", 0
    for character in text:
        result += str(literals.get(place, character)) if character in COUNTED else character
        place += character in COUNTED
    return result


def positions(text):
    return "".join(character for character in text if character in COUNTED)


def meet(a, b):
    """Whether there is a number that fits both."""
    a, b = positions(a), positions(b)
    return len(a) == len(b) and all(x == y or "#" in (x, y) for x, y in zip(a, b))


def in_order(texts, strength):
    """The texts in their order, except that of two which a number fits the stronger one (of the lesser `strength`)
    comes first; without those that no number reaches."""
    waiting, ordered = list(texts), []
    while waiting:
        text = next(text for text in waiting
                    if not any(meet(text, other) and strength[other] < strength[text] for other in waiting))
        waiting.remove(text)
        if is_reached(text, ordered):
            ordered.append(text)
    return ordered


def is_reached(text, earlier):
    """Whether there is a number that fits `text` and none of the `earlier` ones."""
    wanted = positions(text)

    def search(at, rivals):
        if not rivals:
            return True
        if at == len(wanted) or any(set(rival[at:]) == {"#"} for rival in rivals):
            return False
        characters = DIGITS if wanted[at] == "#" else wanted[at]
        return any(search(at + 1, [rival for rival in rivals if rival[at] in ("#", character)])
                   for character in characters)

    return search(0, [positions(other) for other in earlier if meet(text, other)])
