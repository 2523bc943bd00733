"""Tables, and the measured sections of docs/performance.md."""

import csv
import pathlib
import subprocess

ROOT = pathlib.Path(__file__).resolve().parent.parent
DOCUMENT = ROOT / "docs/performance.md"
FOLDER = ROOT / "docs/performance"


def table(header, rows):
    """A Markdown table; its first column is text, the others are numbers."""
    lines = [header, ["---"] + ["---:"] * (len(header) - 1), *rows]
    return "".join("| " + " | ".join(str(cell) for cell in line) + " |\n" for line in lines)


def commit():
    """The commit that is checked out; a + marks uncommitted changes."""
    return subprocess.run(["git", "describe", "--always", "--dirty=+"], cwd=ROOT, check=True,
                          capture_output=True, text=True).stdout.strip()


def write_section(name, text, document=DOCUMENT):
    """Replaces the text between the markers `name` and `end of name`."""
    start, end = f"<!-- {name} -->\n", f"<!-- end of {name} -->\n"
    content = document.read_text(encoding="utf-8")
    head, found, rest = content.partition(start)
    _, closed, tail = rest.partition(end)
    if not found or not closed:
        raise SystemExit(f"{document}: no markers for {name}")
    document.write_text(f"{head}{start}Commit {commit()}.\n\n{text}{end}{tail}", encoding="utf-8")


def write_csv(path, rows):
    path.parent.mkdir(parents=True, exist_ok=True)
    with open(path, "w", newline="", encoding="utf-8") as file:
        csv.writer(file, lineterminator="\n").writerows(rows)


def publish(name, rows, text):
    """Replaces the full table, whose first row has its columns, and the section of the document."""
    write_csv(FOLDER / f"{name}.csv", rows)
    write_section(name, text)
