"""Finds the faults of a finished site: dead links, requests to the network, names that are not linked."""

import html.parser
import re
from pathlib import Path

LINKED = ("a", "dfn", "h1", "h2", "h3", "title")  # need no link inside


class Reader(html.parser.HTMLParser):
    """The anchors, the links and the text outside of links of one page: all text, and the text in code."""

    def __init__(self, text):
        super().__init__()
        self.anchors, self.links, self.loads, self.plain, self.code = [], [], [], [], []
        self.linked = self.in_code = 0
        self.feed(text)

    def handle_starttag(self, tag, attrs):
        attrs = dict(attrs)
        if "id" in attrs:
            self.anchors.append(attrs["id"])
        if "href" in attrs:
            (self.loads if tag == "link" else self.links).append(attrs["href"])
        if "src" in attrs:
            self.loads.append(attrs["src"])
        if tag in LINKED:
            self.linked += 1
        self.in_code += tag == "code"

    def handle_endtag(self, tag):
        if tag in LINKED:
            self.linked -= 1
        self.in_code -= tag == "code"

    def handle_data(self, data):
        if not self.linked:
            (self.code if self.in_code else self.plain).append(data)


def named(texts):
    return set(re.findall(r"\w+(?!\w|\.txt)", " ".join(texts)))


def faults(folder, functions, words):
    """A line for each fault of the pages in `folder`.  Functions whose names are `words` are links only as code."""
    pages = {path.name: Reader(path.read_text()) for path in Path(folder).glob("*.html")}
    found = []
    for name, page in pages.items():
        twice = {anchor for anchor in page.anchors if page.anchors.count(anchor) > 1}
        found += [f"{name}: the anchor {anchor} appears twice" for anchor in sorted(twice)]
        for link in page.links + page.loads:
            if re.match(r"[a-z]+:", link):
                if link in page.loads:
                    found.append(f"{name} loads {link} from the network")
                continue
            file, _, anchor = link.partition("#")
            if file and not (Path(folder) / file).exists():
                found.append(f"{name}: {link} leads nowhere")
            elif anchor and anchor not in pages[file or name].anchors:
                found.append(f"{name}: {link} has no such anchor")
        if not name.startswith(("include-", "tests-", "examples-", "bench-")):
            for word in sorted(named(page.plain) & (functions - words) | named(page.code) & functions):
                found.append(f"{name}: {word} is not linked")
    return found
