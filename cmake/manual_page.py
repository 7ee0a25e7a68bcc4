"""The part of the manual page that all commands share, from the page docs/cli.md, for help2man.

Usage: manual_page.py docs/cli.md > include.h2m
Takes the text between the marks "manual page: from here" and "manual page: to here".
"""

import re
import sys
from pathlib import Path

import markdown_it

PREAMBLE = r"""[description]
.\" Commands are there to be copied: no line is stretched, no word is cut.
.ad l
.nh
"""
CLOSE = r"""
[see also]
.BR gnuplot (1),
which draws the pictures of
.BR \-\-plot .
"""


def roff(text):
    text = text.replace("\\", r"\e").replace("-", r"\-").replace("°", r"\(de").replace("µ", r"\(mc")
    return re.sub(r"(?m)^([.'])", r"\\&\1", text)


def words(inline):
    """Running text: code and bold text are bold, links are their text."""
    shown = ""
    for part in inline.children:
        if part.type in ("strong_open", "strong_close"):
            shown += r"\fB" if part.type == "strong_open" else r"\fR"
        elif part.type == "code_inline":
            shown += rf"\fB{roff(part.content)}\fR"
        elif part.type == "softbreak":
            shown += " "
        elif part.type == "text":
            shown += roff(part.content)
    return shown


def sentences(text):
    """Each on a line of its own, as roff has it."""
    return re.sub(r"(?<=[a-z)R][.:]) (?=[A-Z\\`])", "\n", text)


def sections(text):
    tokens = markdown_it.MarkdownIt("commonmark").enable("table").parse(text)
    listed, row, heading, fresh = False, [], False, True
    for i, token in enumerate(tokens):
        if token.type == "heading_open":
            heading = True
        elif token.type == "inline" and heading:
            yield f"\n[{token.content.lower()}]\n"
            heading, fresh = False, True
        elif token.type == "list_item_open":
            yield ".IP \\(bu 2\n"
            listed = True
        elif token.type in ("list_item_close", "bullet_list_close"):
            listed = token.type == "list_item_close"
        elif token.type == "paragraph_open" and not listed:
            yield "" if fresh else ".PP\n"
            fresh = False
        elif token.type in ("td_open", "th_open"):
            row.append(words(tokens[i + 1]))
        elif token.type == "tr_close":
            if tokens[i - 1].type == "td_close":
                yield f".TP\n.B {row[0]}\n{'; '.join(row[1:])}\n"
            row, fresh = [], False
        elif token.type == "inline" and tokens[i - 1].type == "paragraph_open":
            yield sentences(words(token)) + "\n"
        elif token.type == "fence":
            yield ".PP\n.nf\n.RS 4\n" + roff(token.content) + ".RE\n.fi\n"


def main():
    page = Path(sys.argv[1]).read_text()
    shared = re.search(r"<!-- manual page: from here -->\n(.*)<!-- manual page: to here -->", page, re.S)
    sys.stdout.write(PREAMBLE + "".join(sections(shared.group(1))) + CLOSE)


if __name__ == "__main__":
    main()
