"""A source file as text: its tokens, its lines, and the places between brackets."""
import bisect
import re

TOKEN = re.compile(r"""
  (?P<comment>//[^\n]*|/\*.*?\*/)
| (?P<text>(?:u8|[uUL])?R"(?P<mark>[^(\s]*)\(.*?\)(?P=mark)"\w*|(?:u8|[uUL])?"(?:\\.|[^"\\\n])*"\w*)
| (?P<character>(?:u8|[uUL])?'(?:\\.|[^'\\\n])+')
| (?P<number>\.?\d(?:[eEpP][+-]|'?[\w.])*)
| (?P<name>[A-Za-z_]\w*)
| (?P<sign><=>|<<=|>>=|->\*|\.\.\.|::|<<|>>|<=|>=|==|!=|&&|\|\||\+\+|--|\+=|-=|\*=|/=|%=|&=|\|=|\^=|->|\S)
""", re.VERBOSE | re.DOTALL)
CLOSING = {"(": ")", "[": "]", "{": "}"}


class Source:
    """Offsets are bytes, as clang counts them: the text is read as Latin-1, one character a byte."""

    def __init__(self, root, path):
        self.path = path
        self.text = (root / path).read_bytes().decode("latin-1")
        self.tokens = [m for m in TOKEN.finditer(self.text) if m.lastgroup != "comment" and m["comment"] is None]
        self.starts = [token.start() for token in self.tokens]
        self.lines = [0] + [m.end() for m in re.finditer("\n", self.text)]

    def line(self, offset):
        return bisect.bisect_right(self.lines, offset)

    def index(self, offset):
        """The number of the first token at or after `offset`."""
        return bisect.bisect_left(self.starts, offset)

    def between(self, start, end):
        return self.tokens[self.index(start):self.index(end)]

    def before(self, offset):
        """The text of the last token before `offset`."""
        at = self.index(offset)
        return self.tokens[at - 1][0] if at > 0 else ""

    def after(self, offset):
        """The first token at or after `offset`."""
        at = self.index(offset)
        return self.tokens[at] if at < len(self.tokens) else None

    def closing(self, at):
        """The number of the token that closes the bracket which is token `at`."""
        depth = []
        for number in range(at, len(self.tokens)):
            sign = self.tokens[number][0]
            if sign in CLOSING:
                depth.append(CLOSING[sign])
            elif depth and sign == depth[-1]:
                depth.pop()
                if not depth:
                    return number
        return None

    def plain(self, start, end, changes=()):
        """The tokens from `start` to `end` on one line, some of them changed: (start, end, text) for each change."""
        parts, last = [], None
        changes = sorted(changes)
        for token in self.between(start, end):
            if last is not None and token.start() > last:
                parts.append(" ")
            last = token.end()
            change = next((c for c in changes if c[0] <= token.start() and token.end() <= c[1]), None)
            if change is None:
                parts.append(token[0])
            elif token.start() == change[0] or not self.between(change[0], token.start()):
                parts.append(change[2])
        return "".join(parts)

    def shown(self, start, end, changed):
        """The lines around a place on one line, as they are and as they would be: what reports and the list of harmless
        faults know a fault by."""
        first = self.lines[self.line(start) - 1]
        number = self.line(max(start, end - 1))
        last = self.lines[number] if number < len(self.lines) else len(self.text)
        after = self.text[end:last].split("//")[0] if '"' not in self.text[end:last] else self.text[end:last]
        before = self.text[first:start]
        return (short(before + self.text[start:end] + after), short(before + changed + after))


def short(text):
    text = " ".join(text.encode("latin-1").decode("utf-8", "replace").split())
    return text if len(text) <= 200 else text[:120] + " ... " + text[-70:]
