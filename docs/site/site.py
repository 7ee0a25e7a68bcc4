"""The documentation as a site of static pages: the guides from Markdown, the reference from the headers.

Usage: site.py SOURCE DOXYGEN-XML HTML VERSION
"""

import html
import re
import shutil
import sys
from pathlib import Path

import jinja2

import check
import reference
import search
from guides import Guide
from links import WORDS, NameLinks

HERE = Path(__file__).parent

# The navigation: page and its title there.  A guide in docs/ that is not named here is added to Guides.
START = {"README.md": "Mensura", "docs/filters.md": "Filters", "docs/cli.md": "The command line"}
GUIDES = {"docs/iir.md": "What older designs run", "docs/state.md": "State and priming",
          "docs/spectral.md": "Spectra and whole records", "docs/smooth.md": "Smoothers and streams",
          "docs/kalman.md": "Kalman tracking", "docs/ode.md": "Integrators", "docs/roots.md": "Roots of polynomials",
          "docs/units.md": "Units and scalings", "docs/threads.md": "Threads, memory, output",
          "docs/examples.md": "Examples"}
PROOF = {"docs/numbers.md": "The same bits", "docs/accuracy.md": "Accuracy", "docs/performance.md": "Speed",
         "CONTRIBUTING.md": "Contributing", "SECURITY.md": "Security", "CHANGELOG.md": "Changelog"}


def guides_in(source):
    """The guides of Start, Guides and Proof."""
    found = {f"docs/{path.name}": "" for path in sorted((source / "docs").glob("*.md"))}
    others = {path: "" for path in found if path not in START | GUIDES | PROOF}
    return [[Guide(source, path, title) for path, title in section.items()]
            for section in (START, GUIDES | others, PROOF)]


class Site:
    def __init__(self, source, folder, target, version):
        self.source, self.target, self.version = Path(source), Path(target), version
        start, guides, proof = guides_in(self.source)
        headers = reference.pages(self.source, folder)
        self.navigation = [("Start", start), ("Guides", guides), ("Reference", headers), ("Proof", proof)]
        self.pages = [page for _, pages in self.navigation for page in pages]
        self.guides = {guide.path: guide for guide in start + guides + proof}
        self.names = NameLinks(headers)
        templates = jinja2.Environment(loader=jinja2.FileSystemLoader(HERE), trim_blocks=True, lstrip_blocks=True)
        self.template = templates.get_template("page.html")

    def make(self):
        """Returns what is wrong with the pages."""
        shutil.rmtree(self.target, ignore_errors=True)
        self.target.mkdir(parents=True)
        for file in ("style.css", "search.js"):
            shutil.copy(HERE / file, self.target)
        index = search.index_of(self.pages)
        (self.target / "search-index.js").write_text(search.script(index))
        for page in self.pages:
            self.write(page.file, page.title, self.names.apply(self.with_links(page), page.file))
        return self.faults({address for address, *_ in index})

    def faults(self, found_by_search):
        exports = (self.source / "cmake" / "exports.map").read_text()
        functions = set(re.findall(r"^\s+(\w+);", exports, re.M)) - {"in"}
        places = self.names.places
        return ([f"{name} is exported, but not in the reference" for name in sorted(functions - places.keys())] +
                [f"{name} is not found by search" for name in sorted(places) if places[name] not in found_by_search] +
                check.faults(self.target, functions, WORDS))

    def write(self, file, title, body):
        text = self.template.render(file=file, title=title, body=body, navigation=self.navigation, version=self.version)
        (self.target / file).write_text(text)

    def with_links(self, page):
        """The body of a page with the site's own links; one that shows a guide's file name shows its title instead."""
        folder = (self.source / getattr(page, "path", "docs/of the headers")).parent
        body = re.sub(r'(href|src)="([^"]+)"', lambda m: f'{m[1]}="{self.address(m[2], folder)}"', page.body)
        titles = {Path(path).name: guide.title for path, guide in self.guides.items()}
        return re.sub(r">(?:docs/)?(\w+\.md)</a>", lambda m: f">{titles.get(m[1], m[1])}</a>", body)

    def address(self, link, folder):
        """The address on the site of a link in a file of `folder`; the file it leads to is put there."""
        if re.match(r"[a-z]+:|#", link):
            return link
        file, hash_sign, anchor = link.partition("#")
        goal = (folder / file).resolve()
        inside = goal.relative_to(self.source).as_posix()
        if inside in self.guides:
            return self.guides[inside].file + hash_sign + anchor
        if goal.suffix == ".svg":
            shutil.copy(goal, self.target)
            return goal.name
        if header := re.fullmatch(r"include/mensura/(\w+\.h)", inside):
            return f"{header[1]}.html"
        return self.source_page(goal, inside)

    def source_page(self, goal, inside):
        """A file of the repository as a page of its own."""
        name = inside.replace("/", "-") + ".html"
        if goal.is_file():
            body = f'<h1>{inside}</h1>\n<pre class="code"><code>{html.escape(goal.read_text())}</code></pre>'
            self.write(name, inside, body)
        return name


if __name__ == "__main__":
    faults = Site(*sys.argv[1:]).make()
    print(*faults, sep="\n", end="\n" if faults else "", file=sys.stderr)
    sys.exit(1 if faults else 0)
