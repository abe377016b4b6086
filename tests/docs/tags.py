"""tags.py <root>

The tables of docs/log.md name every tag that the sources write, and no other: who speaks, and what stands behind it.
"""

import glob
import os
import re
import sys

from markdown import Document, Problems

_TEXT = r'"((?:[^"\\\n]|\\.)*)"'
# Names of vendors' functions stand behind any tag and are not listed.
_FUNCTION = re.compile(r"(ADL2?_|ctl[A-Z]|NvAPI_)\w+")
# Results, which look like tags.
_RESULT = re.compile(r"\[(CTL_RESULT_|Unknown Error)")

# What stands behind a tag and is no text at that place: where the texts are. Each of these is looked for in the file that
# has the expression. (NameOf gives a vendor's function.)
_ELSEWHERE = {
    "words.clockIsZero": r"\.clockIsZero = " + _TEXT,
    "words.voltageIsZero": r"\.voltageIsZero = " + _TEXT,
    "words.clockRatio": r"\.clockRatio = " + _TEXT,
    "words.voltageRatio": r"\.voltageRatio = " + _TEXT,
    "defaultsName": r'"(m_\w+)"',
    "currentName": r'"(p[A-Z]\w+)"',
    "reading.name": r"\{kPmLog\w+, " + _TEXT,
    "step": r',\s*"(\w+)"\)\)',
    "subject": r"(?:Offset\(|subject = )" + _TEXT,
    "row.label": r"\{" + _TEXT + r", &ctl_",
}


def without_comments(text):
    kept = re.sub(_TEXT + r"|//[^\n]*|/\*.*?\*/", lambda match: match.group() if match[1] is not None else " ", text,
                  flags=re.DOTALL)
    kept = re.sub(r"^\s*#.*$", "", kept, flags=re.MULTILINE)
    return re.sub(r'"\s*"', "", kept)  # texts in a row are one


def written_tags(root, problems):
    """Who speaks, and what stands behind it, as the sources have them."""
    tags, behind = {}, {}

    def add(found, text, path):
        text = text.strip()
        if text and not _FUNCTION.fullmatch(text):
            found.setdefault(text, path)

    for path in sorted(glob.glob(os.path.join(root, "src", "**", "*.*"), recursive=True)):
        with open(path, encoding="utf-8") as file:
            text = without_comments(file.read())
        name = os.path.relpath(path, root)
        for found in re.findall(_TEXT, text):
            if found.startswith("[") and not _RESULT.match(found):
                who, _, what = found.partition("] ")
                add(tags, who + "]" if what else found, name)
                add(behind, what, name)
        for pattern, sink in ((r"(?:Tag|Entry\()\{" + _TEXT, tags), (r"Line\(" + _TEXT, tags),
                              (r"Tag\{" + _TEXT + r", " + _TEXT, behind), (r" / \(?" + _TEXT, behind),
                              (r"Line\([\w.]+, " + _TEXT, behind)):
            for found in re.finditer(pattern, text):
                if not found[found.lastindex].startswith("["):
                    add(sink, found[found.lastindex], name)
        for found in re.finditer(r"(?:[tT]ag\w*|method|\}) / ([\w.]+)|Entry\(\{([\w.]+)\}", text):
            expression = found[1] or found[2]
            if expression == "NameOf":
                continue
            texts = re.findall(_ELSEWHERE.get(expression, "(?!)"), text)
            if not texts:
                problems.add(name, f"{found.group()}: tests/docs/tags.py does not know where its texts are")
            for what in texts:
                add(behind if found[1] else tags, what, name)
    return tags, behind


def listed_tags(log):
    tags, behind = {}, {}
    for line, _, rows in log.tables():
        if rows[0][:2] != ["tag", "behind it"]:
            continue
        for number, row in enumerate(rows[1:], line + 2):
            for sink, cell in ((tags, row[0]), (behind, row[1])):
                for text in re.findall(r"`([^`]+)`", cell):
                    sink.setdefault(text.strip(), log.place(number))
    return tags, behind


def compare(written, listed, kind, problems):
    for text in sorted(set(written) - set(listed)):
        problems.add(written[text], f"{kind} is not in docs/log.md: {text}")
    for text in sorted(set(listed) - set(written)):
        problems.add(listed[text], f"{kind} that nothing writes: {text}")


def main(root):
    problems = Problems()
    tags, behind = written_tags(root, problems)
    listed, listed_behind = listed_tags(Document(root, "docs/log.md"))
    compare(tags, listed, "a tag", problems)
    compare(behind, listed_behind, "behind a tag", problems)
    if len(tags) < 50:
        problems.add("src", f"only {len(tags)} tags found")
    return problems.report(f"{len(tags)} tags, {len(behind)} texts behind them")


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
