"""The reference: one page a header, from what Doxygen read there."""

import re
import xml.etree.ElementTree as xml
from dataclasses import dataclass
from pathlib import Path

from doxygen import cell, description, escaped, show, without_empty_paragraphs

# The headers in the order of the navigation, and what their codes, types and records are called together.
HEADERS = {"sos": "Codes and records", "iir": "Codes and records", "spectral": "", "smooth": "", "online": "Records",
           "kalman": "Records", "matrix": "Records", "ode": "Types and data", "roots": "", "complex": "Records"}


@dataclass
class Page:
    file: str
    title: str
    body: str
    sections: list  # (anchor, title, names of the entries)


def line_of(node):
    return int(node.find("location").get("line"))


def fields(rows):
    """A table of names and what they are; `rows` has (attributes of the row, name, text)."""
    shown = (f"<tr{attributes}><td><code>{name}</code></td><td>{text}</td></tr>" for attributes, name, text in rows)
    return f'<table class="fields">{"".join(shown)}</table>\n'


class Header:
    """A public header and the group that Doxygen found in it."""

    def __init__(self, source, folder, name):
        self.name = name
        self.text = (source / "include" / "mensura" / f"{name}.h").read_text()
        self.group = xml.parse(folder / f"group__{name}.xml").getroot()[0]
        self.records = [xml.parse(folder / f"{inner.get('refid')}.xml").getroot()[0]
                        for inner in self.group.findall("innerclass")]
        self.check_formulas()

    def check_formulas(self):
        """Checks that Doxygen has read every block of formulas as one: below a single line it takes it for text."""
        blocks = len(re.findall(r"(?m)^ \*\n(?: \*     .*\n)+", self.text))
        found = sum(1 for node in [self.group, *self.records] for _ in node.iter("verbatim"))
        if blocks != found:
            raise ValueError(f"{self.name}.h has {blocks} blocks of formulas, of which Doxygen read {found}")

    # ---- one entry ----

    def declaration(self, node):
        """Its text in the header."""
        lines = self.text.splitlines()[line_of(node) - 1:]
        last = next(i for i, line in enumerate(lines) if line.endswith(";"))
        text = "\n".join(lines[:last + 1])
        if "MENSURA_EXPORT " in text:
            text = text.replace("MENSURA_EXPORT ", "").replace("\n" + " " * len("MENSURA_EXPORT "), "\n")
        text = re.sub(rf"\b{node.findtext('name')}\b", r"<dfn>\g<0></dfn>", escaped(text), 1)
        return f'<pre class="declaration"><code>{text}</code></pre>\n'

    def member(self, node):
        name = node.findtext("name")
        return f'<h3 id="{name}">{name}</h3>\n{self.declaration(node)}{description(node)}'

    def enumeration(self, node):
        rows = [(f' id="{value.findtext("name")}"',
                 f'<dfn>{value.findtext("name")}</dfn> {value.findtext("initializer")}', cell(value))
                for value in node.findall("enumvalue")]
        name = node.findtext("name")
        title = "" if name.startswith("@") else f'<h3 id="{name}">enum {name}</h3>\n'
        return title + description(node) + fields(rows)

    def record(self, node):
        rows = []
        for field in node.iter("memberdef"):
            kind = "".join(field.find("type").itertext()) + " "
            size = field.findtext("argsstring").replace(" *", " * ")
            rows.append(("", escaped(kind.replace("* ", "*") + field.findtext("name") + size), cell(field)))
        name = node.findtext("compoundname")
        return f'<h3 id="{name}">{name}</h3>\n{description(node)}{fields(rows)}'

    def entry(self, node):
        if node.tag == "compounddef":
            return self.record(node)
        return self.enumeration(node) if node.get("kind") == "enum" else self.member(node)

    # ---- the page ----

    def sections(self):
        """(title, what is said below it, entries) in the order of the header."""
        named, others = [], list(self.records)
        for section in self.group.findall("sectiondef"):
            members = section.findall("memberdef")
            if section.get("kind") in ("func", "user-defined"):
                named.append((section.findtext("header") or "Functions", section.findall("description/para"), members))
            else:
                others += members
        if others:
            yield HEADERS[self.name], [], sorted(others, key=line_of)
        yield from sorted(named, key=lambda section: line_of(section[2][0]))

    def page(self):
        title = self.group.findtext("title")
        body, sections = f"<h1>{title}</h1>\n{description(self.group)}", []
        for heading, about, entries in self.sections():
            anchor = re.sub(r"\W+", "-", heading.lower())
            names = [node.findtext("name") or node.findtext("compoundname") for node in entries]
            sections.append((anchor, heading, [name for name in names if not name.startswith("@")]))
            body += f'<h2 id="{anchor}">{heading}</h2>\n'
            body += "".join(map(show, about)) + "".join(map(self.entry, entries))
        return Page(f"{self.name}.h.html", title, without_empty_paragraphs(body), sections)


def pages(source, folder):
    return [Header(source, Path(folder), name).page() for name in HEADERS]
