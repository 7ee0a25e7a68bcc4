"""The documentation as a site of static pages: the guides from Markdown, the reference from the headers.

Usage: site.py SOURCE DOXYGEN-XML HTML VERSION
"""

import html
import json
import re
import shutil
import sys
from pathlib import Path

import jinja2
import markdown_it

import check
import formulas
import reference

HERE = Path(__file__).parent

# The navigation: page and its title there.  A guide in docs/ that is not named here is added to Guides.
START = {"README.md": "Mensura", "docs/filters.md": "Designing filters", "docs/cli.md": "The command line"}
GUIDES = {"docs/iir.md": "What a filter gives", "docs/state.md": "State and priming",
          "docs/spectral.md": "Spectra and whole records", "docs/smooth.md": "Smoothers and streams",
          "docs/kalman.md": "Kalman tracking", "docs/ode.md": "Integrators", "docs/roots.md": "Roots of polynomials",
          "docs/units.md": "Units and scalings", "docs/threads.md": "Threads, memory, output"}
PROOF = {"docs/numbers.md": "The same bits", "docs/accuracy.md": "Accuracy", "docs/performance.md": "Speed",
         "CONTRIBUTING.md": "Contributing", "SECURITY.md": "Security", "CHANGELOG.md": "Changelog"}

# Names of functions that are words of the language or of the field too: linked only where they stand as code.
WORDS = {"in", "FFT", "DFT", "Bessel", "Goertzel", "Sinc", "Transform", "Factorial", "Matrix"}


def slug(title):
    """The anchor of a heading, as code-hosting sites make it."""
    return re.sub(r"\s", "-", re.sub(r"[^\w\s-]", "", title.lower().strip()))


class Guide:
    """A Markdown page."""

    def __init__(self, source, path, title):
        self.path, self.title = path, title
        self.file = "index.html" if path == "README.md" else Path(path).stem.lower() + ".html"
        self.sections = []
        parser = markdown_it.MarkdownIt("commonmark", {"html": True}).enable("table")
        tokens = parser.parse((source / path).read_text())
        for heading, inline in zip(tokens, tokens[1:]):
            if heading.type == "heading_open":
                title = "".join(part.content for part in inline.children)
                heading.attrSet("id", slug(title))
                if heading.tag == "h1":
                    self.title = self.title or title
                elif heading.tag == "h2":
                    self.sections.append((slug(title), title))
        text = parser.renderer.render(tokens, parser.options, {})
        text = re.sub(r'<pre><code class="language-formula">(.*?)</code></pre>\n?',
                      lambda m: formulas.block(html.unescape(m.group(1))), text, flags=re.S)
        text = text.replace("<table>", '<div class="wide"><table>').replace("</table>", "</table></div>")
        text = re.sub(r"<code>([^<]{1,32})</code>", r'<code class="short">\1</code>', text)
        self.body = text.replace("<pre>", '<pre class="code">')


class Site:
    def __init__(self, source, folder, target, version):
        self.source, self.target, self.version = Path(source), Path(target), version
        guides = {f"docs/{path.name}": "" for path in sorted((self.source / "docs").glob("*.md"))}
        guides = GUIDES | {path: "" for path in guides if path not in START | GUIDES | PROOF}
        guides = [[Guide(self.source, path, title) for path, title in section.items() if (self.source / path).exists()]
                  for section in (START, guides, PROOF)]
        self.reference = reference.pages(self.source, folder)
        self.navigation = [("Start", guides[0]), ("Guides", guides[1]), ("Reference", self.reference),
                           ("Proof", guides[2])]
        self.pages = [page for _, pages in self.navigation for page in pages]
        self.files = {page.path: page for pages in guides for page in pages}
        self.template = jinja2.Environment(loader=jinja2.FileSystemLoader(HERE), autoescape=False,
                                           trim_blocks=True, lstrip_blocks=True).get_template("page.html")
        self.names = {}
        for page in self.reference:
            for name in re.findall(r'<(?:h3|tr) id="(\w+)"', page.body):
                self.names[name] = f"{page.file}#{name}"
        self.any_name = re.compile(r"(?<![\w.-])(" + "|".join(sorted(self.names, key=len, reverse=True)) + r")(?![\w-]|\.\w)")

    # ---- links ----

    def to_page(self, link, path):
        """A link in the Markdown file `path` as a link of the site."""
        if re.match(r"[a-z]+:|#", link):
            return link
        file, _, anchor = link.partition("#")
        goal = (self.source / path).parent.joinpath(file).resolve()
        inside = goal.relative_to(self.source).as_posix()
        if inside in self.files:
            return self.files[inside].file + (f"#{anchor}" if anchor else "")
        if goal.suffix in (".svg", ".png"):
            shutil.copy(goal, self.target / goal.name)
            return goal.name
        if match := re.fullmatch(r"include/mensura/(\w+\.h)", inside):
            return f"{match.group(1)}.html"
        return self.source_page(goal, inside)

    def title_of(self, guide):
        return next((page.title for path, page in self.files.items() if Path(path).stem == guide), f"{guide}.md")

    def source_page(self, goal, inside):
        """A file of the repository as a page of its own."""
        name = inside.replace("/", "-") + ".html"
        if goal.is_file() and not (self.target / name).exists():
            body = f'<h1>{inside}</h1>\n<pre class="code"><code>{html.escape(goal.read_text())}</code></pre>'
            self.write(name, inside, body)
        return name

    def finish(self, body, file):
        """Links each name of the interface to its place in the reference; sets powers outside of code."""
        parts, within = re.split(r"(<!--.*?-->|<[^>]+>)", body, flags=re.S), []
        for i, part in enumerate(parts):
            if part.startswith("<!--"):
                continue
            if part.startswith("<"):
                tag = re.match(r"</?(\w+)", part).group(1)
                if part.startswith("</"):
                    if tag in within:
                        del within[len(within) - 1 - within[::-1].index(tag):]
                elif not part.endswith("/>") and tag not in ("br", "img", "hr"):
                    within.append(tag)
            elif not {"a", "dfn", "h1", "h2", "h3", "math"} & set(within):
                as_code = "code" in within
                if not as_code:
                    part = formulas.inline(part)
                parts[i] = self.any_name.sub(lambda m: self.link(m.group(1), as_code, file), part)
        return "".join(parts)

    def link(self, name, as_code, file):
        if name in WORDS and not as_code or name == "in" and file != "threads.html":
            return name
        page, _, anchor = self.names[name].partition("#")
        return f'<a href="{"" if page == file else page}#{anchor}">{name}</a>'

    # ---- pages ----

    def write(self, file, title, body):
        text = self.template.render(file=file, title=title, body=body, navigation=self.navigation, version=self.version)
        (self.target / file).write_text(text)

    def search_index(self):
        """Every section of every page: [address, title, page, text]."""
        index = []
        for page in self.pages:
            for part in re.split(r'(?=<(?:h[1-4]|tr) id=")', page.body):
                anchor = re.match(r'<(h[1-4]|tr) id="([^"]+)">(?:<td><code><dfn>(\w+)|(.*?)</h)', part, re.S)
                if not anchor:
                    continue
                title = anchor.group(3) or plain(anchor.group(4))
                text = re.sub(r'^.*?</h\d>|<pre class="declaration">.*?</pre>', "", part, 0, re.S) \
                    if anchor.group(1) != "tr" else re.sub(r"^.*?</td>", "", part, 1, re.S)
                text = plain(text)
                index.append([f"{page.file}#{anchor.group(2)}", title, page.title, text])
        (self.target / "search-index.js").write_text("const mensuraIndex = " + json.dumps(index) + ";\n")

    def make(self):
        shutil.rmtree(self.target, ignore_errors=True)
        self.target.mkdir(parents=True)
        for file in ("style.css", "search.js"):
            shutil.copy(HERE / file, self.target)
        for page in self.pages:
            path = getattr(page, "path", "docs/reference")
            body = re.sub(r'(href|src)="([^"]+)"', lambda m: f'{m.group(1)}="{self.to_page(m.group(2), path)}"', page.body)
            body = re.sub(r">(?:docs/)?(\w+)\.md</a>", lambda m: f">{self.title_of(m.group(1))}</a>", body)
            self.write(page.file, page.title, self.finish(body, page.file))
        self.search_index()
        functions = set(re.findall(r"^\s+(\w+);", (self.source / "cmake" / "exports.map").read_text(), re.M))
        functions.remove("in")  # an array, and a word of every language
        return check.faults(self.target, functions, WORDS, functions - set(self.names))


def plain(text):
    return re.sub(r"\s+", " ", html.unescape(re.sub(r"<[^>]+>", " ", text))).strip()


if __name__ == "__main__":
    faults = Site(*sys.argv[1:]).make()
    for fault in faults:
        print(fault, file=sys.stderr)
    sys.exit(1 if faults else 0)
