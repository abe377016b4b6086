"""links.py <root>

Every relative link and anchor in the documents leads somewhere, the index of docs/ names every document there, and paths
of this repository that the texts mention exist.
"""

import os
import re
import sys

from markdown import Problems, documents

# In code spans: paths of the source tree. What is built lies elsewhere, and patterns are not looked up.
_PATH = re.compile(r"^(src|include|tests|tool|bindings|docs|cmake|scripts|schema|fuzz|bench|Config)/[\w./-]*$")


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
    check_index(all_documents, problems)
    if count < 20:
        problems.add(root, f"only {count} links found")
    return problems.report(f"{count} links in {len(all_documents)} documents")


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
