"""Writing what was measured into a document."""


def replace_between(document, begin, end, text):
    """Replaces what stands between the two marks in a document."""
    with open(document, encoding="utf-8") as file:
        whole = file.read()
    before, _, rest = whole.partition(begin)
    _, found, after = rest.partition(end)
    if not found:
        raise SystemExit(f"{document} has no place for it: {begin} and {end}")
    with open(document, "w", encoding="utf-8") as file:
        file.write(f"{before}{begin}\n\n{text.strip()}\n\n{end}{after}")
