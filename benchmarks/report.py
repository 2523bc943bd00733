"""Tables in Markdown, and the sections of docs/performance.md that measurements fill."""

import pathlib
import subprocess

ROOT = pathlib.Path(__file__).resolve().parent.parent
DOCUMENT = ROOT / "docs/performance.md"


def table(header, rows):
    """The first column is text, the others are figures."""
    lines = [header, ["---"] + ["---:"] * (len(header) - 1), *rows]
    return "".join("| " + " | ".join(str(cell) for cell in line) + " |\n" for line in lines)


def commit():
    """The commit that is checked out; a + marks changes on top of it."""
    return subprocess.run(["git", "describe", "--always", "--dirty=+"], cwd=ROOT, check=True,
                          capture_output=True, text=True).stdout.strip()


def write_section(name, text):
    """Replaces what stands between the marks `name` and `end of name`."""
    start, end = f"<!-- {name} -->\n", f"<!-- end of {name} -->\n"
    document = DOCUMENT.read_text(encoding="utf-8")
    head, found, rest = document.partition(start)
    _, closed, tail = rest.partition(end)
    if not found or not closed:
        raise SystemExit(f"{DOCUMENT}: no marks for {name}")
    DOCUMENT.write_text(f"{head}{start}Commit {commit()}.\n\n{text}{end}{tail}", encoding="utf-8")
