"""Checks the reference of the methods against the method table and the sources.

    methods.py TOP TOOL

The tool lists the table (`zmfb methods --json`). Each row has one entry in docs/methods/ and each entry a row:

    ### name

    `name(first: text, second: number): logical` · kind

    The help text of the row, with a full stop.
    ...
    - **Parameters:** ...
    - **SQL:** `first`; in quotes: `second`.
    - **Result:** ...
    - **Logs:** ...
    - **Raises:** ...

The signature is that of the row. An entry stands on the page of the subject that declares it
(include/zmfbconn/methods/), names every parameter in backticks, and what it quotes as logged or raised is in the sources;
every text that the sources log or raise is quoted by some entry of its page.
Each of the lines may be missing: docs/methods/README.md says what that means. Parameters that mean the same in many entries are told
once, before the first heading of the page: "- `tbl`: the table". What SQL says is what the table "What becomes
SQL" of docs/security.md says. The two rows of a property that can be assigned are "### name" and "### name :=", `name: kind` and `name := value`.
A declaration has the name of its method, one that assigns assign_ before it.
"""

import json
import re
import subprocess
import sys
from dataclasses import dataclass, field
from pathlib import Path

from pages import Page

FIELDS = ("Parameters", "SQL", "Result", "Logs", "Raises")
SQL_HEADING = "## What becomes SQL"
PARAMETER = re.compile(r"(?<=[(\[ ])(\w+): |:= (\w+)")
DECLARATION = re.compile(r'^inline constexpr Method<[^;{]*>\s+(\w+)\{\s*"(\w+)"', re.M)
ITEM = re.compile(r"^- \*\*(\w+):\*\*\s*(.*)$")
TOLD = re.compile(r"^- `(\w+)`: ")
QUOTED = re.compile(r"`([^`]+)`")
LITERAL = re.compile(r'"((?:[^"\\]|\\.)*)"(_l1)?')
RAISED = re.compile(r'raiseerror\(((?:"(?:[^"\\]|\\.)*"|[^";])*)\);')
FOLDERS = {"connection": "conn", "sql": "sql", "catalog": "catalog", "locks": "locks", "schema": "schema",
           "transfer": "transfer", "matrix": "matrix"}


@dataclass
class Entry:
    page: str
    line: int
    title: str
    signature: str = ""
    help: str = ""
    fields: dict = field(default_factory=dict)
    told: set = field(default_factory=set)  # parameters that the page tells of before its entries

    @property
    def where(self):
        return f"{self.page}.md:{self.line}"


def entries_of(page, name):
    """The entries of a page: its headings of the third level."""
    entries, current, item, told = [], None, None, set()
    for number, line in page.prose:
        if line.startswith(("# ", "## ")):
            current = None
        if not entries and TOLD.match(line):
            told.add(TOLD.match(line)[1])
        if line.startswith("### "):
            current, item = Entry(name, number, line[4:].strip(), told=told), None
            entries.append(current)
        elif current is None or not line.strip():
            item = None
        elif not current.signature:
            current.signature = line
        elif ITEM.match(line):
            item, text = ITEM.match(line).groups()
            if item in current.fields:
                current.fields[item] = None
            else:
                current.fields[item] = text
        elif item and current.fields[item] is not None and line.startswith("  "):
            current.fields[item] += " " + line.strip()
        elif not current.fields:
            current.help = (current.help + " " + line).strip()
    return entries


def check_entry(entry, row):
    """What is wrong with an entry; `row` is {"name", "kind", "signature", "help"}."""
    problems = []
    signature = f"`{row['signature']}` · {row['kind']}"
    if entry.signature != signature:
        problems.append(f"the signature is {signature}")
    if not entry.help.startswith(row["help"] + "."):
        problems.append(f"does not begin with the help text \"{row['help']}.\"")
    if list(entry.fields) != [title for title in FIELDS if title in entry.fields]:
        problems.append(f"has other fields than {', '.join(FIELDS)}, in this order")
    for title, text in entry.fields.items():
        if not text:
            problems.append(f"{title} is empty or there twice")
    described = QUOTED.findall(entry.fields.get("Parameters") or "")
    names = [first or second for first, second in PARAMETER.findall(row["signature"])]
    problems += [f"does not tell of the parameter {name}" for name in names
                 if name not in described and name not in entry.told]
    return [f"{entry.where}: {entry.title}: {problem}" for problem in problems]


def title_of(row):
    """The title of a row's entry."""
    return row["name"] + (" :=" if row["kind"] == "assign" else "")


def check_table(entries, rows):
    """Rows without entry, entries without row, and what is wrong with the others."""
    titles = {}
    problems = []
    for entry in entries:
        if entry.title in titles:
            problems.append(f"{entry.where}: {entry.title} is there twice")
        titles[entry.title] = entry
    wanted = {title_of(row): row for row in rows}
    problems += [f"{title} has no entry" for title in wanted if title not in titles]
    for title, entry in titles.items():
        if title not in wanted:
            problems.append(f"{entry.where}: the table has no {title}")
        else:
            problems += check_entry(entry, wanted[title])
    return problems


def pieces_of(text):
    """What is fixed of a message: the pieces between the places that a method fills in."""
    pieces = (piece.strip() for piece in re.split(r"\.\.\.|\{[^}]*\}", text.replace('\\"', '"')))
    return [piece for piece in pieces if len(piece) > 1]


def joined(source):
    """The source with its string literals as one where they stand behind each other."""
    return re.sub(r'"(?:_l1)?\s*\+?\s*"', "", source).replace('\\"', '"')


def messages_of(source):
    """The texts that a source file logs or raises: log tags, accented texts, errors, what is raised."""
    source = re.sub(r"^\s*//.*$", "", source, flags=re.M)
    source = re.sub(r'"\s+"', "", source)
    found = {text for text, accented in LITERAL.findall(source)
             if re.match(r"\[[A-Z#]+\] ", text) or accented or "Erro" in text or ";" in text and text.endswith(": ")}
    for arguments in RAISED.findall(source):
        found |= {text for text, _ in LITERAL.findall(arguments)}
    return sorted(found)


def check_messages(entries, sources, common=""):
    """Compares the quoted messages with the sources: {page: {file: text}}. `common` is quoted for all pages."""
    problems = []
    texts = {page: joined("\n".join(files.values())) for page, files in sources.items()}
    for entry in entries:
        everything = texts[entry.page] + texts["connection"]
        for title in ("Logs", "Raises"):
            for quoted in QUOTED.findall(entry.fields.get(title) or ""):
                if " " not in quoted:
                    continue
                for piece in pieces_of(quoted):
                    if piece not in everything:
                        problems.append(f"{entry.where}: {entry.title}: no source says \"{piece}\"")
    for page, files in sources.items():
        quoted = common + "\n".join(" ".join(filter(None, (entry.fields.get("Logs"), entry.fields.get("Raises"))))
                           for entry in entries if entry.page == page)
        for name, text in files.items():
            problems += [f"{name}: no entry of {page}.md tells of \"{piece}\"" for message in messages_of(text)
                         for piece in pieces_of(message) if piece not in quoted]
    return problems


def sql_of(entry):
    """What an entry says becomes SQL: the arguments that do as they are, and those in quotes."""
    as_sql, _, in_quotes = (entry.fields.get("SQL") or "").partition("in quotes: ")
    return QUOTED.findall(as_sql), QUOTED.findall(in_quotes)


def sql_table(page):
    """The same by the table of a page: {method: (as SQL, in quotes)}."""
    found, inside = {}, False
    for _, line in page.prose:
        if line.startswith("## "):
            inside = line.strip() == SQL_HEADING
        if inside and line.startswith("| `"):
            methods, as_sql, in_quotes = (QUOTED.findall(cell) for cell in line.split("|")[1:4])
            found.update((method, (as_sql, in_quotes)) for method in methods)
    return found


def check_sql(entries, table):
    """Compares what the entries say becomes SQL with the table of it."""
    said = {entry.title: sql_of(entry) for entry in entries if "SQL" in entry.fields}
    problems = [f"{entry.where}: {entry.title}: the table of what becomes SQL says {table.get(entry.title)}"
                for entry in entries if said.get(entry.title) != table.get(entry.title)]
    return problems + [f"security.md: no entry says of {method} what becomes SQL" for method in table
                       if method not in said]


def check_declarations(entries, headers):
    """Declarations that have not the name of their method, and entries on another page than theirs; `headers` is {page:
    text of the header with its declarations}."""
    declared = {page: set(DECLARATION.findall(text)) for page, text in headers.items()}
    problems = [f"{page}.h: {name} declares {method}" for page, names in declared.items() for name, method in names
                if name not in (method, f"assign_{method}")]
    return problems + [f"{entry.where}: {entry.page}.h declares no {entry.title}" for entry in entries
                       if entry.title.split()[0] not in (method for _, method in declared[entry.page])]


def main():
    top, tool = Path(sys.argv[1]), sys.argv[2]
    rows = json.loads(subprocess.run([tool, "methods", "--json"], check=True, capture_output=True).stdout)
    pages = {path.stem: Page(path) for path in sorted((top / "docs" / "methods").glob("*.md"))
             if path.stem != "README"}
    problems = [f"docs/methods/{name}.md belongs to no folder" for name in pages if name not in FOLDERS]
    entries = [entry for name, page in pages.items() if name in FOLDERS for entry in entries_of(page, name)]
    problems += check_table(entries, rows)
    problems += check_declarations(entries, {
        page: (top / "include" / "zmfbconn" / "methods" / f"{page}.h").read_text() for page in FOLDERS})
    problems += check_sql(entries, sql_table(Page(top / "docs" / "security.md")))
    problems += check_messages(entries, {
        page: {str(path.relative_to(top)): path.read_text(encoding="utf-8")
               for path in sorted((top / folder).glob("*.cpp"))} for page, folder in FOLDERS.items()},
        (top / "docs" / "methods" / "README.md").read_text(encoding="utf-8"))
    for problem in problems:
        print(problem)
    print(f"{len(rows)} rows, {len(entries)} entries, {len(problems)} problems")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
