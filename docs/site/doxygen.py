"""Comments as Doxygen describes them in XML, as HTML."""

import html
import re

import formulas


def escaped(text):
    return html.escape(text or "", quote=False)


def description(node):
    """The comment of a function, a record, a field."""
    text = "".join(show(part) for part in node.find("detaileddescription"))
    return without_empty_paragraphs(text)


def paragraphs(node):
    """The text of a table cell or a list item, which needs no <p>."""
    return "<br>".join(inside(part).strip() for part in node.findall("para"))


def cell(node):
    return paragraphs(node.find("detaileddescription"))


def show(node):
    """A paragraph and its parts.  Blocks end the paragraph around them."""
    kind = node.tag
    if kind == "para":
        return f"<p>{inside(node).strip()}</p>\n"
    if kind == "bold":
        return f"<strong>{inside(node)}</strong>"
    if kind == "emphasis":
        return f"<em>{inside(node)}</em>"
    if kind == "computeroutput":
        return f"<code>{escaped(''.join(node.itertext()))}</code>"
    if kind in ("ref", "ulink"):
        return inside(node)  # links are made on the finished pages
    if kind in BLOCKS:
        return f"</p>{BLOCKS[kind](node)}<p>"
    raise ValueError(f"no rule for <{kind}>")


def inside(node):
    return running(node.text) + "".join(show(child) + running(child.tail) for child in node)


def running(text):
    """Text with links to the guides that it names."""
    return re.sub(r"\b(\w+\.md)\b", r'<a href="\1">\1</a>', escaped(text))


def without_empty_paragraphs(text):
    return re.sub(r"<p>\s*</p>\n?", "", text)


# ---- blocks ----


def code(node):
    """A line of C, its comments marked."""
    text = escaped(node.text)
    for child in node:
        if child.tag == "sp":
            text += " "
        elif child.get("class") == "comment":
            text += f'<span class="comment">{code(child)}</span>'
        else:
            text += code(child)
        text += escaped(child.tail)
    return text


def listing(node):
    return '<pre class="code"><code>' + "\n".join(map(code, node)) + "</code></pre>"


def items(node):
    return "<ul>" + "".join(f"<li>{paragraphs(item)}</li>" for item in node) + "</ul>"


def parameters(node):
    rows = ""
    for item in node:
        names = ", ".join(f"<code>{escaped(name.text)}</code>" for name in item.iter("parametername"))
        rows += f"<tr><td>{names}</td><td>{paragraphs(item.find('parameterdescription'))}</td></tr>"
    title = "Returns" if node.get("kind") == "retval" else "Arguments"
    return f'<table class="arguments"><caption>{title}</caption>{rows}</table>\n'


def result(node):
    if node.get("kind") != "return":
        raise ValueError(f"no rule for @{node.get('kind')}")
    return f"<p>Returns {paragraphs(node)}.</p>"


BLOCKS = {"verbatim": lambda node: formulas.block(node.text), "programlisting": listing, "itemizedlist": items,
          "parameterlist": parameters, "simplesect": result}
