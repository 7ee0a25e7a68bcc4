"""A guide in Markdown as a page."""

import html
import re
from pathlib import Path

import markdown_it

import formulas


class Guide:
    """`title` is that of the navigation, where it is not the page's own."""

    def __init__(self, source, path, title=""):
        self.path, self.title, self.sections = path, title, []
        self.file = "index.html" if path == "README.md" else Path(path).stem.lower() + ".html"
        parser = markdown_it.MarkdownIt("commonmark", {"html": True}).enable("table")
        tokens = parser.parse((source / path).read_text())
        self.name_headings(tokens)
        self.body = polished(parser.renderer.render(tokens, parser.options, {}))

    def name_headings(self, tokens):
        """Anchors as code-hosting sites make them; a second one of the same name gets a number."""
        seen = {}
        for heading, inline in zip(tokens, tokens[1:]):
            if heading.type != "heading_open":
                continue
            title = "".join(part.content for part in inline.children)
            anchor = re.sub(r"\s", "-", re.sub(r"[^\w\s-]", "", title.lower().strip()))
            seen[anchor] = seen.get(anchor, -1) + 1
            if seen[anchor]:
                anchor += f"-{seen[anchor]}"
            heading.attrSet("id", anchor)
            if heading.tag == "h1":
                self.title = self.title or title
            elif heading.tag == "h2":
                self.sections.append((anchor, title, []))


def polished(text):
    """Formulas as MathML, tables that scroll by themselves, short code without line breaks."""
    text = re.sub(r'<pre><code class="language-formula">(.*?)</code></pre>\n?',
                  lambda block: formulas.block(html.unescape(block.group(1))), text, flags=re.S)
    text = text.replace("<table>", '<div class="wide"><table>').replace("</table>", "</table></div>")
    text = re.sub(r"<code>([^<]{1,32})</code>", r'<code class="short">\1</code>', text)
    return text.replace("<pre>", '<pre class="code">')
