"""The reference: one page a header, from what Doxygen read there."""

import html
import re
import xml.etree.ElementTree as xml
from dataclasses import dataclass
from pathlib import Path

import formulas

# The headers in the order of the navigation.
GROUPS = ["iir", "spectral", "smooth", "online", "kalman", "matrix", "ode", "roots", "complex"]
RECORDS = {"iir": "Codes and records", "ode": "Types and data"}  # else "Records"


@dataclass
class Page:
    file: str
    title: str
    body: str
    sections: list  # (id, title) of the banners


def escaped(text):
    return html.escape(text or "", quote=False)


def running(text):
    """Running text, with links to the guides that it names."""
    return re.sub(r"\b(\w+\.md)\b", r'<a href="\1">\1</a>', escaped(text))


class Renderer:
    """Doxygen's description of a comment as HTML."""

    def inside(self, node):
        parts = [running(node.text)]
        for child in node:
            parts += [self.show(child), running(child.tail)]
        return "".join(parts)

    def show(self, node):
        tag = node.tag
        if tag == "para":
            return f"<p>{self.inside(node).strip()}</p>\n"
        if tag == "bold":
            return f"<strong>{self.inside(node)}</strong>"
        if tag == "emphasis":
            return f"<em>{self.inside(node)}</em>"
        if tag == "computeroutput":
            return f"<code>{escaped(''.join(node.itertext()))}</code>"
        if tag == "verbatim":
            return f"</p>{formulas.block(node.text)}<p>"
        if tag == "programlisting":
            lines = ["".join(self.code(line)) for line in node]
            return '</p><pre class="code"><code class="language-c">' + "\n".join(lines) + "</code></pre><p>"
        if tag == "itemizedlist":
            return "</p><ul>" + "".join(f"<li>{self.paragraphs(item)}</li>" for item in node) + "</ul><p>"
        if tag == "parameterlist":
            return "</p>" + self.parameters(node) + "<p>"
        if tag == "simplesect" and node.get("kind") == "return":
            return f"</p><p>Returns {self.paragraphs(node)}</p><p>"
        if tag in ("ref", "ulink"):
            return self.inside(node)  # links are made on the finished pages
        raise ValueError(f"no rule for <{tag}>")

    def code(self, node):
        yield escaped(node.text)
        for child in node:
            if child.tag == "sp":
                yield " "
            elif child.tag == "highlight" and child.get("class") != "normal":
                yield f'<span class="{child.get("class")}">' + "".join(self.code(child)) + "</span>"
            else:
                yield from self.code(child)
            yield escaped(child.tail)

    def paragraphs(self, node):
        """The paragraphs of a list item or a table cell, which need no <p> when there is one."""
        return "<br>".join(self.inside(para).strip() for para in node.findall("para"))

    def parameters(self, node):
        head = "Returns" if node.get("kind") == "retval" else "Arguments"
        rows = []
        for item in node:
            names = ", ".join(f"<code>{escaped(''.join(name.itertext()))}</code>" for name in item.iter("parametername"))
            rows.append(f"<tr><td>{names}</td><td>{self.paragraphs(item.find('parameterdescription'))}</td></tr>")
        return f'<table class="arguments"><caption>{head}</caption>{"".join(rows)}</table>\n'

    def description(self, node):
        text = "".join(self.show(part) for part in node.find("detaileddescription"))
        return re.sub(r"<p>\s*</p>\n?", "", text)

    def fields(self, rows):
        return '<table class="fields">' + "".join(
            f'<tr{row_id}><td><code>{name}</code></td><td>{text}</td></tr>' for row_id, name, text in rows) + "</table>\n"


def first_line(section):
    return min(int(place.get("line")) for place in section.iter("location"))


class Header:
    """One public header and its group."""

    def __init__(self, source, folder, name):
        self.renderer = Renderer()
        self.folder = folder
        self.lines = (source / "include" / "mensura" / f"{name}.h").read_text().splitlines()
        self.group = xml.parse(folder / f"group__{name}.xml").getroot()[0]
        self.name = name

    def declaration(self, node):
        """As it stands in the header."""
        first = int(node.find("location").get("line")) - 1
        last = next(i for i in range(first, len(self.lines)) if self.lines[i].endswith(";"))
        text = "\n".join(self.lines[first:last + 1])
        shift = len("MENSURA_EXPORT ") if text.startswith(("MENSURA_EXPORT", "extern")) else 0
        text = text.replace("MENSURA_EXPORT ", "")
        text = escaped(text.replace("\n" + " " * shift, "\n"))
        text = re.sub(rf"\b{node.findtext('name')}\b", r"<dfn>\g<0></dfn>", text, 1)
        return f'<pre class="declaration"><code>{text}</code></pre>\n'

    def member(self, node):
        name = node.findtext("name")
        return f'<h3 id="{name}">{name}</h3>\n{self.declaration(node)}{self.renderer.description(node)}'

    def enumeration(self, node):
        rows = [(f' id="{value.findtext("name")}"', f'<dfn>{value.findtext("name")}</dfn> {value.findtext("initializer")}',
                 self.renderer.paragraphs(value.find("detaileddescription"))) for value in node.findall("enumvalue")]
        name = node.findtext("name")
        title = "" if name.startswith("@") else f'<h3 id="{name}">enum {name}</h3>\n'
        return title + self.renderer.description(node) + self.renderer.fields(rows)

    def record(self, reference):
        node = xml.parse(self.folder / f"{reference.get('refid')}.xml").getroot()[0]
        rows = []
        for field in node.iter("memberdef"):
            kind = "".join(field.find("type").itertext()) + " "
            declared = kind.replace("* ", "*") + field.findtext("name") + field.findtext("argsstring")
            rows.append(("", escaped(declared), self.renderer.paragraphs(field.find("detaileddescription"))))
        name = node.findtext("compoundname")
        return (int(node.find("location").get("line")),
                f'<h3 id="{name}">{name}</h3>\n{self.renderer.description(node)}{self.renderer.fields(rows)}')

    def check_formulas(self):
        """Every indented block of the header has come as one."""
        comments = "\n".join(self.lines)
        blocks = len(re.findall(r"(?m)^ \*\n(?: \*     .*\n)+", comments))
        files = [self.folder / f"{inner.get('refid')}.xml" for inner in self.group.findall("innerclass")]
        found = len(list(self.group.iter("verbatim"))) + sum(len(list(xml.parse(file).iter("verbatim"))) for file in files)
        if blocks != found:
            raise ValueError(f"{self.name}.h has {blocks} blocks of formulas, of which Doxygen read {found}")

    def page(self):
        self.check_formulas()
        parts = [f"<h1>{self.group.findtext('title')}</h1>\n", self.renderer.description(self.group)]
        sections = []
        items = [self.record(inner) for inner in self.group.findall("innerclass")]
        for section in self.group.findall("sectiondef"):
            if section.get("kind") in ("enum", "typedef", "var"):
                show = self.enumeration if section.get("kind") == "enum" else self.member
                items += [(int(node.find("location").get("line")), show(node)) for node in section.findall("memberdef")]
        if items:
            sections.append(("records", RECORDS.get(self.name, "Records")))
            parts += ['<h2 id="records">', sections[-1][1], "</h2>\n", *(text for _, text in sorted(items))]
        for section in sorted(self.group.findall("sectiondef"), key=first_line):
            if section.get("kind") not in ("func", "user-defined"):
                continue
            title = section.findtext("header") or "Functions"
            anchor = re.sub(r"\W+", "-", title.lower())
            sections.append((anchor, title))
            parts.append(f'<h2 id="{anchor}">{title}</h2>\n')
            if (about := section.find("description")) is not None:
                parts += [self.renderer.show(part) for part in about]
            parts += [self.enumeration(node) if node.get("kind") == "enum" else self.member(node)
                      for node in section.findall("memberdef")]
        body = re.sub(r"<p>\s*</p>\n?", "", "".join(parts))
        return Page(f"{self.name}.h.html", self.group.findtext("title"), body, sections)


def pages(source, folder):
    """A page for each header."""
    return [Header(source, Path(folder), name).page() for name in GROUPS]
