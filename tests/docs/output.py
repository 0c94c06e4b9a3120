"""Comparing what a program wrote with what a page shows.

In a shown line "..." stands for any text, and a line of nothing but "..." for any number of lines. Words that a page
declares as varying stand for one word each, the same one from its first appearance on. Runs of blanks and of dashes
count as one, since columns follow the width of such words.
"""

import re

ANY_LINES = "..."


def normal(line):
    return re.sub(r"-{2,}", "--", re.sub(r"\s+", " ", line)).strip()


def pattern_of(shown, varying, bound):
    """The pattern that matches what the shown line stands for, and the varying words it gives values to."""
    pieces = re.split("(" + "|".join([re.escape("...")] + [rf"\b{re.escape(w)}\b" for w in varying]) + ")",
                      normal(shown))
    pattern, fresh = "", {}
    for piece in pieces:
        if piece == ANY_LINES:
            pattern += ".*"
        elif piece in bound:
            pattern += re.escape(normal(bound[piece]))
        elif piece in fresh:
            pattern += f"(?P={fresh[piece]})"
        elif piece in varying:
            fresh[piece] = f"v{len(fresh)}"
            pattern += rf"(?P<{fresh[piece]}>[\w.-]+?)"
        else:
            pattern += re.escape(piece)
    return re.compile(pattern), fresh


def line_matches(shown, written, varying, bound):
    """The varying words bound by a match; None when the lines differ."""
    pattern, fresh = pattern_of(shown, varying, bound)
    found = pattern.fullmatch(normal(written))
    return None if found is None else {word: found.group(group) for word, group in fresh.items()}


def matches(shown, written, varying=(), bound=None):
    """Whether the lines `written` are what `shown` shows; binds varying words in `bound`."""
    bound = {} if bound is None else bound
    if not shown:
        return not written
    if shown[0].strip() == ANY_LINES:
        return any(matches(shown[1:], written[skipped:], varying, bound) for skipped in range(len(written) + 1))
    if not written:
        return False
    found = line_matches(shown[0], written[0], varying, bound)
    if found is None:
        return False
    trial = {**bound, **found}
    if not matches(shown[1:], written[1:], varying, trial):
        return False
    bound.update(trial)
    return True
