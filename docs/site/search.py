"""What search.js looks in: each section, function and code of all pages as [address, title, page, text]."""

import html
import json
import re

PLACE = re.compile(r"""<(?P<tag>h[1-4]|tr)\ id="(?P<anchor>[^"]+)">
                       (?:<td><code><dfn>(?P<code>\w+) | (?P<heading>.*?)</h)""", re.S | re.X)


def plain(text):
    return re.sub(r"\s+", " ", html.unescape(re.sub(r"<[^>]+>", " ", text))).strip()


def entries(page):
    for part in re.split(r'(?=<(?:h[1-4]|tr) id=")', page.body):
        if not (place := PLACE.match(part)):
            continue
        rest = re.sub(r"^.*?</td>" if place["tag"] == "tr" else r"^.*?</h\d>", "", part, 1, re.S)
        rest = re.sub(r'<pre class="declaration">.*?</pre>', "", rest, 0, re.S)
        yield [f"{page.file}#{place['anchor']}", place["code"] or plain(place["heading"]), page.title, plain(rest)]


def index_of(pages):
    return [entry for page in pages for entry in entries(page)]


def script(index):
    return f"const mensuraIndex = {json.dumps(index)};\n"
