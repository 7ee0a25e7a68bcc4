"""Formulas as text, such as y = (2 / T) x^2, to MathML, which browsers show without a script.

    sum      = product { (+ | - | = | < | ...) product }
    product  = power { power | / power }              a b / c is the fraction of (a b) and c
    power    = atom [ ^ atom ]
    atom     = number | name | ( ... ) | [ ... ] | { ... } | | ... |

A line may end with a remark, three blanks or more after the formula; a comma and two blanks separate formulas.
"""

import html
import re

TOKEN = re.compile(r"""\s*(?:(?P<wide>,\ \ +)
                         | (?P<number>\d+\.?\d*(?:e[-+]?\d+)?)
                         | (?P<name>[A-Za-z]{2,}-[a-z]{2,} | [A-Za-z]\w*(?:\.[a-z]+)*'*)
                         | (?P<op>\.\.\.|\.\.|<=|>=|->|[-+*/^=<>,;:!|()\[\]{}&]))""", re.X)
SYMBOLS = {"pi": "π", "eps": "ε", "sum": "∑", "prod": "∏", "in": "∈", "alpha": "α", "beta": "β", "gamma": "γ"}
OPERATORS = {"-": "−", "<=": "≤", ">=": "≥", "...": "…", "..": "…", "->": "→", "*": "·"}
CLOSING = {"(": ")", "[": "]", "{": "}"}


class NotAFormula(ValueError):
    """Text that the grammar above does not cover."""


def tokens(text):
    position, found = 0, []
    while text[position:].strip():
        match = TOKEN.match(text, position)
        if not match:
            raise NotAFormula(text)
        found.append((match.lastgroup, match.group(match.lastgroup)))
        position = match.end()
    return found


def row(parts):
    return parts[0] if len(parts) == 1 else "<mrow>" + "".join(parts) + "</mrow>"


def identifier(name):
    """a0 has a subscript, H_k too; a name of several letters is upright; x'' keeps its primes."""
    name, primes = name.rstrip("'"), len(name) - len(name.rstrip("'"))
    base, _, below = name.partition("_")
    if not below and (match := re.fullmatch(r"([A-Za-z])(\d+)", base) or re.fullmatch(r"(f)([sc])", base)):
        base, below = match.groups()
    if base in ("sum", "prod"):
        return f'<munder><mo movablelimits="false">{SYMBOLS[base]}</mo><mi>{below}</mi></munder>'
    upright = ' mathvariant="normal"' if len(base) == 1 and base in SYMBOLS else ""
    shown = f"<mi{upright}>{html.escape(SYMBOLS.get(base, base))}</mi>"
    if below:
        shown = f"<msub>{shown}<m{'n' if below.isdigit() else 'i'}>{below}</m{'n' if below.isdigit() else 'i'}></msub>"
    return f'<mrow>{shown}<mo lspace="0" rspace="0">{"′" * primes}</mo></mrow>' if primes else shown


class Parser:
    def __init__(self, text):
        self.tokens = tokens(text)
        self.at = 0
        self.in_exponent = False

    def peek(self):
        return self.tokens[self.at] if self.at < len(self.tokens) else (None, None)

    def take(self):
        self.at += 1
        return self.tokens[self.at - 1]

    def sum(self, closing=None):
        """Everything up to the closing bracket."""
        parts = []
        while self.peek()[0] and self.peek()[1] != closing:
            kind, text = self.peek()
            if kind == "wide":
                self.take()
                parts.append('<mo>,</mo><mspace width="1.5em"/>')
            elif text in ("+", "-", "=", "<", ">", "<=", ">=", ",", ";", ":", "..", "...", "->", "in", "mod"):
                self.take()
                space = ' lspace="0" rspace="0.4em"' if text in ",;" else ""
                parts.append(f"<mo{space}>{html.escape(OPERATORS.get(text, SYMBOLS.get(text, text)))}</mo>")
            else:
                parts.append(self.product(closing))
        return row(parts)

    def product(self, closing):
        parts = [self.power()]
        while True:
            kind, text = self.peek()
            if text == "/" and self.in_exponent:  # a fraction would be too small to read
                self.take()
                parts += ["<mo>/</mo>", self.power()]
            elif text == "/":
                self.take()
                below = bare(self.power())
                while self.peek()[1] in ("[", "("):  # a function of something, below the line
                    below = row([below, self.power()])
                parts = [f'<mfrac displaystyle="true">{bare(row(parts))}{below}</mfrac>']
            elif kind in ("number", "name") and text not in ("in", "mod"):
                parts += ['<mspace width="0.2em"/>', self.power()]
            elif text in ("(", "[", "{") or (text == "|" and closing != "|"):
                parts.append(self.power())
            else:
                return row(parts)

    def power(self):
        base = self.atom()
        while self.peek()[1] == "!":
            self.take()
            base = row([base, "<mo>!</mo>"])
        if self.peek()[1] != "^":
            return base
        self.take()
        sign = ["<mo>−</mo>"] if self.peek()[1] == "-" else []
        if sign:
            self.take()
        outside, self.in_exponent = self.in_exponent, True
        exponent = row([*sign, bare(self.atom())])
        self.in_exponent = outside
        return f"<msup>{base}{exponent}</msup>"

    def atom(self):
        kind, text = self.take() if self.peek()[0] else (None, None)
        if kind == "number":
            return f"<mn>{text}</mn>"
        if kind == "name":
            if text == "sqrt" and self.peek()[1] == "(":
                return f"<msqrt>{bare(self.atom())}</msqrt>"
            return identifier(text)
        if text in CLOSING or text == "|":
            closing = CLOSING.get(text, "|")
            inside = self.sum(closing)
            if self.peek()[1] != closing:
                raise NotAFormula(text)
            self.take()
            tall = any(tag in inside for tag in ("<mfrac", "<munder", "<msqrt"))
            still = "" if tall else ' stretchy="false"'
            return f'<mrow class="group"><mo{still}>{text}</mo>{inside}<mo{still}>{closing}</mo></mrow>'
        raise NotAFormula(str(text))


def bare(shown):
    """Without the round brackets that a fraction, a root or an exponent makes superfluous."""
    match = re.fullmatch(r'<mrow class="group"><mo[^>]*>\(</mo>(.*)<mo[^>]*>\)</mo></mrow>', shown, re.S)
    if match and balanced(match.group(1)):
        return f"<mrow>{match.group(1)}</mrow>"
    return shown


def balanced(inside):
    depth = 0
    for bracket in re.findall(r"<mo[^>]*>([()])</mo>", inside):
        depth += 1 if bracket == "(" else -1
        if depth < 0:
            return False
    return depth == 0


def expression(text):
    parser = Parser(text)
    shown = parser.sum()
    if parser.at != len(parser.tokens):
        raise NotAFormula(text)
    return shown


def block(text):
    """The lines of a block as rows of formulas, each with its remark."""
    rows = []
    for line in filter(str.strip, text.splitlines()):
        formula, *remark = re.split(r"\s{3,}", line.strip())
        rows.append(f'<div class="row"><math display="block">{expression(formula)}</math>'
                    f'<span class="remark">{html.escape(" ".join(remark))}</span></div>')
    return f'<div class="formula">{"".join(rows)}</div>\n'


def inline(text):
    """Powers and pi in running text that is escaped already."""
    text = re.sub(r"\^(?:\(([^()]{1,20})\)|(-?\w+))", lambda m: f"<sup>{m.group(1) or m.group(2)}</sup>", text)
    return re.sub(r"\bpi\b", "π", text)
