"""Links from each name of the interface to its place in the reference."""

import re

import formulas

# Functions whose names are words of the field too: linked only where they are marked as code.
WORDS = {"FFT", "DFT", "Bessel", "Goertzel", "Sinc", "Transform", "Factorial", "Matrix"}
UNLINKED = {"a", "dfn", "h1", "h2", "h3", "math"}  # inside of these
EMPTY = {"br", "hr", "img"}


class NameLinks:
    def __init__(self, reference):
        self.places = {}
        for page in reference:
            for name in re.findall(r'<(?:h3|tr) id="(\w+)"', page.body):
                self.places[name] = f"{page.file}#{name}"
        names = self.places.keys() - {"in"}  # an array, and a word of every language
        longest_first = "|".join(sorted(names, key=len, reverse=True))
        self.any_name = re.compile(rf"(?<![\w.-])({longest_first})(?![\w-]|\.\w)")

    def apply(self, body, file):
        """The body of the page `file` with links, and with powers outside of code."""
        parts, within = re.split(r"(<!--.*?-->|<[^>]+>)", body, flags=re.S), []
        for i, part in enumerate(parts):
            if part.startswith("<"):
                follow(within, part)
            elif not UNLINKED & set(within):
                parts[i] = self.text(part, "code" in within, file)
        return "".join(parts)

    def text(self, text, as_code, file):
        def link(match):
            name = match.group(1)
            if name in WORDS and not as_code:
                return name
            return f'<a href="{self.places[name].removeprefix(file)}">{name}</a>'

        return self.any_name.sub(link, text if as_code else formulas.inline(text))


def follow(within, tag):
    """Keeps the list of elements that are open."""
    name = re.match(r"</?(\w*)", tag).group(1)  # none: a comment
    if tag.startswith("</") and name in within:
        del within[len(within) - 1 - within[::-1].index(name):]
    elif name and not tag.startswith("</") and name not in EMPTY and not tag.endswith("/>"):
        within.append(name)
