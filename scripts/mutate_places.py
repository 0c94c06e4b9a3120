"""Where the product can be broken in a small way, and how: the part of mutate.py that reads source files.

The files are formatted by clang-format, which is what the expressions count on.
"""
import collections
import random
import re

OPERAND = r"[\w.:]+(?:->\w+)*(?:\(\))?(?:\[\w+\])?"
BEFORE = r"(?:(?<=[(;{!,])|(?<=&& )|(?<=\|\| )|(?<=return )|(?<= = )|(?<=; ))"
AFTER = r"(?=[);,]| &&| \|\|| \?)"
COMPARISON = re.compile(rf"{BEFORE}({OPERAND}) (<|<=|>|>=|==|!=) (-?{OPERAND}){AFTER}")
STEP = re.compile(r"(?<= [+-] )1(?![\w.'])")
TRUTH = re.compile(r"(?<=return )(true|false)(?=;)")
STATEMENT = re.compile(r"(?<=[{};):]\n)( +)(?!return|throw|delete|case|using|if|for|while|switch|static_assert|goto|co_)"
                       r"((?:[\w:]+(?:\.|->))*[\w:]+\(|[\w.\[\]>*-]+ [-+|&]?= |(?:\+\+|--)[\w.]+;)")
EDGE = {"<": "<=", "<=": "<", ">": ">=", ">=": ">"}


def masked(text):
    """The text with comments, literals and preprocessor lines blanked out, character for character."""
    def blank(found):
        return re.sub(r"[^\n]", " ", found[0]) if found[0][0] in "/#" else re.sub(r"[^\n]", "_", found[0])
    return re.sub(r'R"\((?:.|\n)*?\)"|"(?:\\.|[^"\\\n])*"|(?<!\w)\'(?:\\.|[^\'\\\n])+\'|//[^\n]*|/\*(?:.|\n)*?\*/|^#(?:\\\n|.)*',
                  blank, text, flags=re.M)


def closing(text, start):
    """Where the bracket that opens at `start` closes."""
    depth = 0
    for at in range(start, len(text)):
        depth += (text[at] in "([{") - (text[at] in ")]}")
        if depth == 0:
            return at
    return len(text)


def other_logic(text, mask):
    """The condition with its first && or || outside brackets exchanged, or None."""
    for found in re.finditer(r" (&&|\|\|)(?=\s)", mask):
        before = mask[:found.start()]
        if all(before.count(a) == before.count(b) for a, b in ("()", "[]", "{}")):
            return text[:found.start(1)] + ("||" if found[1] == "&&" else "&&") + text[found.end(1):]
    return None


def places(text):
    """What can be broken in a file: (kind, start, end, new text), with @ for the switch."""
    mask = masked(text)
    for found in re.finditer(r"\bif (?=\()|\breturn (?=[^;]* (?:&&|\|\|) )", mask):
        start = found.end()
        end = closing(mask, start) + 1 if mask[start] == "(" and found[0] == "if " else mask.find(";", start)
        inside = (start + 1, end - 1) if found[0] == "if " else (start, end)
        condition, shape = text[slice(*inside)], mask[slice(*inside)]
        if re.search(r" = |;|\{", shape):
            continue
        if found[0] == "if ":
            yield "negated", *inside, f"@ != !!({condition})"
        exchanged = other_logic(condition, shape)
        if exchanged:
            yield "and/or", *inside, f"@ ? ({' '.join(exchanged.split())}) : ({condition})"
    for found in COMPARISON.finditer(mask):
        whole, left, right = (text[slice(*found.span(part))] for part in (0, 1, 3))
        if found[2] in EDGE:
            yield "edge", *found.span(), f"(@ ? {left} {EDGE[found[2]]} {right} : {whole})"
        else:
            yield "negated", *found.span(), f"(@ != ({whole}))"
    for found in STEP.finditer(mask):
        yield "no step", *found.span(), "(@ ? 0 : 1)"
    for found in TRUTH.finditer(mask):
        yield "true/false", *found.span(), "!@" if found[1] == "true" else "@"
    for found in STATEMENT.finditer(mask):
        start = found.start(2)
        end = mask.find(";", closing(mask, found.end() - 1) if found[0].endswith("(") else start)
        statement = text[start:end]
        if end > 0 and mask[start:end].count("\n") < 4 and "{" not in mask[start:end]:
            yield "left out", start, end, f"@ ? (void)0 : (void)({statement})"


def pick(files, count, seed):
    """For {file: text} about that many places, as dictionaries: spread over the top folders by the root of what each offers,
    and within one evenly over the kinds."""
    chance = random.Random(seed)
    offered = collections.defaultdict(lambda: collections.defaultdict(list))
    for file in sorted(files):
        for kind, start, end, new in places(files[file]):
            place = {"file": file, "line": files[file].count("\n", 0, start) + 1, "kind": kind, "start": start, "end": end, "new": new}
            offered[file.split("/")[0]][kind].append(place)
    weight = {folder: sum(map(len, kinds.values())) ** 0.5 for folder, kinds in offered.items()}
    picked = []
    for folder, kinds in offered.items():
        taken = []
        while kinds and len(taken) < count * weight[folder] / sum(weight.values()):
            kind = chance.choice(sorted(kinds))
            place = kinds[kind].pop(chance.randrange(len(kinds[kind])))
            if not kinds[kind]:
                del kinds[kind]
            if not any(place["file"] == other["file"] and place["start"] < other["end"] and other["start"] < place["end"]
                       for other in taken):
                taken.append(place)
        picked += taken
    chance.shuffle(picked)
    return [{"number": number, **place} for number, place in enumerate(picked, 1)]


def broken(text, chosen, header):
    """The text with the switches of its places in it, if it has any; its lines keep their numbers."""
    if not chosen:
        return text
    for place in sorted(chosen, key=lambda place: -place["start"]):
        new = place["new"].replace("@", f"zmfb_mutant({place['number']})")
        text = text[:place["start"]] + new + text[place["end"]:]
    return f'#include "{header}"\n#line 1\n{text}'
