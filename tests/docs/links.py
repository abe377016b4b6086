"""links.py <root>

Every relative link and anchor in the documents leads somewhere, the index of docs/ names every document there, and the
paths, scripts and presets of this repository that the texts mention exist.
"""

import json
import os
import re
import sys

from markdown import Problems, documents

# In code spans: paths of the source tree. What is built lies elsewhere, and patterns are not looked up.
_PATH = re.compile(r"^(src|include|tests|tool|bindings|docs|cmake|scripts|schema|fuzz|bench|monitoring|Config)/[\w./-]*$")

_SCRIPT = re.compile(r"(?:^|[\s`$(])((?:\./)(?:run|test)|(?:\./)?scripts/[\w-]+)\b")
_PRESET = re.compile(r"--preset[ =](\w+)")


def check_links(root, all_documents, problems):
    anchors = {document.path: document.anchors() for document in all_documents}
    count = 0
    for document in all_documents:
        for line, target in document.links():
            count += 1
            place = document.place(line)
            if re.match(r"^(https?|mailto):", target):
                continue
            path, _, anchor = target.partition("#")
            path = os.path.normpath(os.path.join(os.path.dirname(document.path), path)) if path else document.path
            path = path.replace(os.sep, "/")
            if path.startswith("..") or not os.path.exists(os.path.join(root, path)):
                problems.add(place, f"{target} leads nowhere")
            elif anchor and path not in anchors:
                problems.add(place, f"{target}: anchors are known in Markdown documents only")
            elif anchor and anchor not in anchors[path]:
                problems.add(place, f"{path} has no heading for #{anchor}")
    return count


def check_paths(root, all_documents, problems):
    for document in all_documents:
        for line, span in document.spans():
            if _PATH.match(span) and not os.path.exists(os.path.join(root, span)):
                problems.add(document.place(line), f"there is no {span}")


def check_commands(root, all_documents, problems):
    with open(os.path.join(root, "CMakePresets.json"), encoding="utf-8") as file:
        presets = {preset["name"] for preset in json.load(file)["configurePresets"]}
    for document in all_documents:
        for number, line in enumerate(document.lines, 1):
            for script in _SCRIPT.findall(line):
                if not os.access(os.path.join(root, script), os.X_OK):
                    problems.add(document.place(number), f"there is no {script}")
            for preset in _PRESET.findall(line):
                if preset not in presets:
                    problems.add(document.place(number), f"there is no preset {preset}")


def check_index(all_documents, problems):
    index = next(document for document in all_documents if document.path == "docs/README.md")
    named = {target.partition("#")[0] for _, target in index.links()}
    for document in all_documents:
        folder, _, name = document.path.rpartition("/")
        if folder == "docs" and name != "README.md" and name not in named:
            problems.add(document.path, "not in the index, docs/README.md")


def main(root):
    all_documents = documents(root)
    problems = Problems()
    count = check_links(root, all_documents, problems)
    check_paths(root, all_documents, problems)
    check_commands(root, all_documents, problems)
    check_index(all_documents, problems)
    if count < 20:
        problems.add(root, f"only {count} links found")
    return problems.report(f"{count} links in {len(all_documents)} documents")


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
