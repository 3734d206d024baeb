"""The faults that can be put into a source file. Each is one or more edits that a number switches on at run time."""
import re
from dataclasses import dataclass, field

OTHER_OPERATOR = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==", "&&": "||", "||": "&&",
                  "+": "-", "-": "+", "*": "/", "/": "*", "%": "*", "|": "&", "&": "|", "<<": ">>", ">>": "<<",
                  "+=": "-=", "-=": "+="}
COMPARISONS = {"<", "<=", ">", ">=", "==", "!=", "&&", "||"}
OTHER_CALL = {"front": "back", "back": "front", "min": "max", "max": "min", "starts_with": "ends_with",
              "ends_with": "starts_with", "any_of": "all_of", "all_of": "any_of", "none_of": "all_of",
              "lower_bound": "upper_bound", "upper_bound": "lower_bound", "floor": "ceil", "ceil": "floor",
              "find": "rfind", "rfind": "find", "find_first_of": "find_last_of", "find_last_of": "find_first_of",
              "fetch_add": "fetch_sub", "fetch_sub": "fetch_add", "push_back": None}
SYMMETRIC = {"min", "max", "swap", "exchange", "minmax", "equal", "gcd"}
NO_EFFECT = {"reserve", "shrink_to_fit"}  # only a matter of speed
LOG = re.compile(r"(::)?(kivo::)?log::(debug|info|error|line|write|print)\(")
NUMBER = re.compile(r"(0[xX][\da-fA-F']+|0[bB][01']+|[\d']*\.?[\d']*(?:[eE][+-]?\d+)?)(\w*)$")


@dataclass
class Fault:
    file: str
    kind: str       # statement, condition, constant, operator, call
    start: int
    end: int
    edits: list     # (start, end, way, text); the ways are in tree.py
    original: str
    changed: str
    line: int
    owner: str = ""     # the constant whose value the fault is a part of
    in_function: str = ""   # the constexpr function around the fault
    is_default: bool = False    # of a member or a parameter: constants may be made with it
    key: str = field(default="")


def next_number(text):
    """`text`, a number as it is written, one greater."""
    match = NUMBER.match(text)
    if not match or not match[1]:
        return None
    digits, suffix = match[1].replace("'", ""), match[2]
    if digits[:2] in ("0x", "0X"):
        return hex(int(digits, 16) + 1) + suffix
    if digits[:2] in ("0b", "0B"):
        return bin(int(digits, 2) + 1) + suffix
    if any(sign in digits for sign in ".eE"):
        return repr(float(digits) + 1) + suffix
    octal = len(digits) > 1 and digits[0] == "0"
    return ("0" + oct(int(digits, 8) + 1)[2:] if octal else str(int(digits) + 1)) + suffix


def other_text(text):
    """A string literal of the same length with another first letter or digit."""
    raw = re.match(r'(?:u8|[uUL])?R"[^(\s]*\(', text)
    start = raw.end() if raw else text.index('"') + 1
    at = start
    while at < len(text) and text[at] != '"':
        letter = text[at]
        if letter == "\\" and not raw:
            at += 2 if text[at + 1] not in "xu01234567" else len(text)
        elif letter.isascii() and letter.isalnum():
            other = {"z": "a", "Z": "A", "9": "0"}.get(letter) or chr(ord(letter) + 1)
            return text[:at] + other + text[at + 1:]
        else:
            at += 1
    return None


def other_character(text):
    inner = text[text.index("'") + 1:-1]
    changed = "x" if inner != "x" else "y"
    if len(inner) == 1 and inner.isascii() and inner not in "\\'":
        changed = chr(ord(inner) + 1) if inner not in "&[~" else "x"
    return text[:text.index("'") + 1] + changed + "'"


class Maker:
    """Makes the faults of one file from what clang says about it."""

    def __init__(self, source):
        self.source = source
        self.faults = {}
        self.owner = ""
        self.in_function = ""
        self.is_default = False

    def add(self, kind, start, end, changed, edits):
        """`changed` is the text that would stand in the place of start to end."""
        identity = (start, end, kind, changed)
        if identity in self.faults or any("\n" in edit[3] for edit in edits):
            return
        original, after = self.source.shown(start, end, changed)
        self.faults[identity] = Fault(self.source.path, kind, start, end, edits, original, after,
                                      self.source.line(start), self.owner, self.in_function, self.is_default)

    def either(self, kind, start, end, alternative):
        if alternative is not None:
            self.add(kind, start, end, alternative, [(start, end, "either", alternative)])

    # Removed statements

    def statement(self, start, end):
        """An expression that stands alone."""
        text = self.source.text[start:end]
        if text.startswith("static_cast<void>") or re.search(r"[.>](%s)\(" % "|".join(NO_EFFECT), text.split("\n")[0]):
            return
        self.add("statement", start, end, "/* nothing */", [(start, end, "drop", "")])

    def jump(self, start):
        """A break, a continue, or a return without a value."""
        semicolon = self.source.after(start + 5)
        if semicolon and semicolon[0] == ";":
            end = semicolon.end()
            self.add("statement", start, end, "/* nothing */;", [(start, end, "jump", "")])

    # Negated conditions

    def condition(self, start, end):
        text = self.source.plain(start, end)
        if text not in ("true", "false"):
            self.add("condition", start, end, f"!({text})", [(start, end, "negate", "")])

    def declared_condition(self, start, end, name):
        """A condition that declares a variable: if (const auto found = find())."""
        text = self.source.plain(start, end)
        self.add("condition", start, end, f"{text}; !{name}", [(end, end, "declared", name)])

    # Changed constants

    def number(self, start):
        token = self.source.after(start)
        if token and token.start() == start and token.lastgroup == "number":
            self.either("constant", start, token.end(), next_number(token[0]))

    def boolean(self, start):
        token = self.source.after(start)
        other = {"true": "false", "false": "true"}.get(token[0] if token else "")
        if other:
            self.either("constant", start, start + len(token[0]), other)

    def character(self, start):
        token = self.source.after(start)
        if token and token.start() == start and token.lastgroup == "character":
            self.either("constant", start, token.end(), other_character(token[0]))

    def text(self, start):
        token = self.source.after(start)
        if not token or token.start() != start or token.lastgroup != "text":
            return
        at = self.source.index(start)
        end = at
        # The compiler joins literals that follow each other, also those behind a macro's name.
        while end < len(self.source.tokens) and (self.source.tokens[end].lastgroup == "text" or
                                                 self.source.tokens[end][0].isupper()):
            end += 1
        pieces = [piece[0] for piece in self.source.tokens[at:end]]
        changed = next((i for i, piece in enumerate(pieces) if '"' in piece and other_text(piece)), None)
        if changed is not None:
            pieces[changed] = other_text(pieces[changed])
            self.either("constant", start, self.source.tokens[end - 1].end(), " ".join(pieces))

    def enumerator(self, start, end, name, other):
        text = self.source.plain(start, end)
        if other and text.endswith(name):
            self.either("constant", start, end, text[:len(text) - len(name)] + other)

    # Other operators and calls

    def operator(self, start, end, left, right, is_condition, is_number):
        """`left` ends and `right` starts around a single operator."""
        between = self.source.between(left, right)
        if len(between) != 1 or between[0][0] not in OTHER_OPERATOR:
            return
        sign = between[0][0]
        if is_condition and sign in ("==", "!="):
            return  # the same as the negated condition
        if sign in COMPARISONS or is_number:
            change = (between[0].start(), between[0].end(), OTHER_OPERATOR[sign])
            self.either("operator", start, end, self.source.plain(start, end, [change]))

    def step(self, start, end):
        text = self.source.plain(start, end)
        for sign, other in (("++", "--"), ("--", "++")):
            if text.startswith(sign):
                self.either("operator", start, end, other + text[2:])
            elif text.endswith(sign):
                self.either("operator", start, end, text[:-2] + other)

    def other_call(self, start, end, name, name_at):
        if name == "push_back":
            text = self.source.plain(start, end)
            match = re.match(r"(.*)\.push_back\((.*)\)$", text)
            if match and "(" not in match[1]:
                inserted = f"{match[1]}.insert({match[1]}.begin(), {match[2]})"
                self.either("call", start, end, f"static_cast<void>({inserted})")
        elif OTHER_CALL.get(name):
            change = (name_at, name_at + len(name), OTHER_CALL[name])
            self.either("call", start, end, self.source.plain(start, end, [change]))

    def swapped(self, first, second):
        """Two adjacent arguments, each (start, end)."""
        one, two = self.source.plain(*first), self.source.plain(*second)
        following = self.source.after(second[1])
        if one == two or "{" in (one[:1], two[:1]) or not following or following[0] not in (",", ")", "}"):
            return
        if self.source.before(first[0]) not in ("(", "{", ",") or self.source.before(second[0]) != ",":
            return
        between = self.source.text[first[1]:second[0]]
        self.add("call", first[0], second[1], two + between + one,
                 [(*first, "either", two), (*second, "either", one)])
