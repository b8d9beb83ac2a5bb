"""The places of the library's sources where one fault can be put in, by rules on the text."""

import re
from pathlib import Path
from typing import NamedTuple


class Token(NamedTuple):
    kind: str  # "word", "number", "mark", "text" (strings, characters)
    text: str
    start: int

    @property
    def end(self):
        return self.start + len(self.text)


class Fault(NamedTuple):
    kind: str
    file: str
    start: int
    end: int
    new: str


_TOKEN = re.compile(
    r"""(?P<skip>\s+|__attribute__\(\((?:[^()]|\([^()]*\))*\)\)|//[^\n]*|/\*.*?\*/|^[ \t]*\#(?:[^\n]*\\\n)*[^\n]*)
      | (?P<text>R"(?P<mark_>\w*)\(.*?\)(?P=mark_)"|L?"(?:\\.|[^"\\])*"|L?'(?:\\.|[^'\\])+')
      | (?P<number>\d(?:[\w.]|'\d)*)
      | (?P<word>[A-Za-z_]\w*)
      | (?P<mark>::|->|\+\+|--|<<=?|>>=?|[-+*/%&|^=!<>]=|&&|\|\||\.\.\.|.)""",
    re.VERBOSE | re.DOTALL | re.MULTILINE,
)

_TURNED = {"<": ">", "<=": ">=", ">": "<", ">=": "<=", "==": "!=", "!=": "==", "&&": "||", "||": "&&"}
# What became of something: of each of these another value.
_RESULTS = {"Reason", "Step", "ConnectError", "LinkState", "TransactionStatus", "TcpResult", "WaitEnd", "WriteEnd"}
_CLOSING = {"(": ")", "{": "}", "[": "]"}
_NO_STATEMENT = set(
    "return if else for while do switch case default break continue goto try catch throw using typedef"
    " template static_assert namespace class struct enum union public private protected const constexpr"
    " static auto extern inline virtual explicit friend operator new delete typename mutable".split()
)
_GUARD = re.compile(r"(const )?(std::(lock_guard|unique_lock)<[^;]*?>|Lock|\w*Claim|\w*Guard|[\w:]*SearchTurn|[\w:]*Call|OpenFile)$")


def tokens_of(source):
    return [Token(m.lastgroup, m.group(), m.start()) for m in _TOKEN.finditer(source) if m.lastgroup != "skip"]


def _pairs(tokens):
    """The index of the closing token of each opening one."""
    pairs, opened = {}, []
    for i, token in enumerate(tokens):
        if token.text in _CLOSING:
            opened.append(i)
        elif opened and token.text == _CLOSING[tokens[opened[-1]].text]:
            pairs[opened.pop()] = i
    return pairs


def enumerators(sources):
    """{"Reason::kNone": "kSilence", ...}: each enumerator with the one behind it. Those of plain
    enumerations stand without their type."""
    following = {}
    for source in sources:
        for scoped, name, body in re.findall(r"enum (class )?(\w+)[^{;]*\{(.*?)\}", source, re.DOTALL):
            if name not in _RESULTS:
                continue
            names = re.findall(r"\bk\w+", re.sub(r"//[^\n]*|=[^,}]*", "", body))
            for one, other in zip(names, names[1:] + names[:1]):
                following[f"{name}::{one}" if scoped else one] = other
    return following


class Finder:
    """All faults of one file."""

    def __init__(self, file, source, following):
        self.file, self.source, self.following = file, source, following
        self.tokens = tokens_of(source)
        self.pairs = _pairs(self.tokens)
        heads = [(start, end, self.tokens[start - 1].text) for start, end in self.pairs.items() if start]
        self.fors = [(start, end) for start, end, word in heads if word == "for"]
        self.conditionEnds = {end for _, end, word in heads if word in ("if", "while", "for")}
        self.faults = []

    def add(self, kind, start, end, new):
        self.faults.append(Fault(kind, self.file, start, end, new))

    def find(self):
        statement = True  # whether a statement may begin here
        for i, token in enumerate(self.tokens):
            before = self.tokens[i - 1].text if i else ""
            if token.kind == "word":
                self.word(i, token, before)
                if statement or before in ("else", "do"):
                    self.statement(i)
            elif token.text in _TURNED and self.source[token.start - 1] == " " and self.source[token.end].isspace():
                self.add("condition" if token.text in ("&&", "||") else "comparison", token.start, token.end,
                         _TURNED[token.text])
            elif token.text in "({":
                self.exchange(i)
            if token.text in ("*", "++", "--") and statement and token.kind == "mark":
                self.statement(i)
            # Behind the condition of an `if`, too; not between those of a `for`.
            statement = token.text in "{}" or (token.text == ";" and not self.in_for(i)) or i in self.conditionEnds
        return self.faults

    def in_for(self, i):
        return any(start < i < end for start, end in self.fors)

    def word(self, i, token, before):
        other = None
        if token.text.startswith("NUV_") and before not in ("#", "case"):
            if token.text == "NUV_OK":
                other = "NUV_FAILED"
            elif re.match(r"NUV_(?!KIND|DEVICE|PRINTER_[EP]|TEXT)[A-Z_]+$", token.text) and token.text in _codes():
                other = "NUV_OK"
        elif re.match(r"k[A-Z]", token.text) and before not in (",", "{", "case"):
            name = f"{self.tokens[i - 2].text}::{token.text}" if before == "::" else token.text
            other = self.following.get(name)
        elif token.text in ("true", "false") and before in ("return", "=", ",", "(", "?", ":", "{"):
            other = "false" if token.text == "true" else "true"
        if other and not self.begins(i):
            self.add("result", token.start, token.end, other)
        if token.text in ("if", "while"):
            self.condition(i)
        if token.text in ("min", "max") and before == "::":
            self.bound(i)

    def begins(self, i):
        """Whether this is only what a variable holds until it is written."""
        first = i
        while self.tokens[first - 1].text == "::":
            first -= 2
        if self.tokens[first - 1].text != "=" or self.tokens[i + 1].text not in (";", ","):
            return False
        start = next((j for j in range(first - 1, -1, -1) if self.tokens[j].text in ";{}(:"), -1) + 1
        return first - start > 2 and not {"const", "constexpr"} & {t.text for t in self.tokens[start:first]}

    def condition(self, i):
        opening = i + 2 if self.tokens[i + 1].text == "constexpr" else i + 1
        closing = self.pairs.get(opening)
        if closing is None or self.tokens[i + 1].text == "constexpr":
            return
        inside = [t.text for t in self.tokens[opening + 1:closing]]
        alone = not {"&&", "||"} & set(inside) and {"==", "!="} & set(inside)  # turned as a comparison
        if not {"=", ";"} & set(inside) and not alone:
            text = self.source[self.tokens[opening].end:self.tokens[closing].start]
            self.add("condition", self.tokens[opening].end, self.tokens[closing].start, f"!({text})")
        behind = self.tokens[closing + 1].text
        if self.tokens[i].text == "if" and behind in ("return", "break", "continue"):
            end = next(j for j in range(closing, len(self.tokens)) if self.tokens[j].text == ";")
            if self.tokens[end + 1].text != "else":
                self.add("bound", self.tokens[i].start, self.tokens[end].end, ";")

    def bound(self, i):
        opening = i + 1
        while self.tokens[opening].text != "(":
            opening += 1
            if opening > i + 8:
                return
        arguments = self.arguments(opening)
        if len(arguments) == 2:
            for start, end in arguments:
                self.add("bound", self.tokens[i - 2].start, self.tokens[self.pairs[opening]].end,
                         self.source[self.tokens[start].start:self.tokens[end - 1].end])

    def arguments(self, opening):
        """[(first token, token behind the last)] of what stands between brackets."""
        closing = self.pairs.get(opening)
        if closing is None:
            return []
        found, start, i = [], opening + 1, opening + 1
        while i < closing:
            if i in self.pairs:
                i = self.pairs[i]
            elif self.tokens[i].text == ",":
                found.append((start, i))
                start = i + 1
            i += 1
        return found + [(start, closing)]

    def exchange(self, opening):
        """Neighbours among arguments that are plain names; of {"S", &a}, {"R", &b}: the names. The
        smaller of two is the same either way round."""
        if {t.text for t in self.tokens[max(0, opening - 5):opening]} & {"if", "while", "for", "switch", "enum",
                                                                         "min", "max"}:
            return
        plain = []
        for start, end in self.arguments(opening):
            if self.tokens[start].text == "{" and self.pairs.get(start) == end - 1:
                inner = self.arguments(start)
                start, end = inner[-1] if len(inner) == 2 else (start, end)
            text = self.source[self.tokens[start].start:self.tokens[end - 1].end] if end > start else ""
            plain.append((start, end, text) if re.fullmatch(r"&?[a-z]\w*([.](\w+|\w+\(\)))*", text) else None)
        for one, other in zip(plain, plain[1:]):
            if one and other and one[2] != other[2]:
                a, b = self.tokens[one[0]].start, self.tokens[one[1] - 1].end
                c, d = self.tokens[other[0]].start, self.tokens[other[1] - 1].end
                self.add("exchange", a, d, self.source[c:d] + self.source[b:c] + self.source[a:b])

    def statement(self, i):
        tokens, j, texts = self.tokens, i, []
        while j < len(tokens) and tokens[j].text != ";":
            if tokens[j].text in ("}", ")"):
                return
            if j in self.pairs:
                if tokens[j].text == "{" and not texts:
                    return
                j = self.pairs[j]
                texts.append("()")
            else:
                texts.append(tokens[j].text)
            j += 1
        if j == len(tokens) or not texts:
            return
        start, end = tokens[i].start, tokens[j].end
        text = self.source[start:end]
        guard = re.match(r"((?:const )?[\w:]+(?:<[^;(]*?>)?) (\w+)(\(| =)", text)
        if guard and _GUARD.match(guard[1]):
            self.add("lock", start, end, ";")
            return
        if texts[0] in _NO_STATEMENT or texts[-1] in ("delete", "default"):
            return
        # Two names side by side declare something; so does a type with arguments or a reference.
        for one, other in zip(texts, texts[1:]):
            if re.match(r"\w", one) and re.match(r"[A-Za-z_]", other):
                return
            if one in (">", "&", "*") and re.match(r"[A-Za-z_]", other) and "=" not in texts[:texts.index(one)] and texts[0] not in ("*", "++", "--"):
                return
        assigns = any(t in ("=", "+=", "-=", "++", "--", "|=") for t in texts)
        if not assigns and not (texts[-1] == "()" and len(texts) > 1):
            return
        # Memory that is reserved ahead changes nothing but speed.
        if "reserve" in texts:
            return
        kind = "close" if re.search(r"[cC]lose\(|abort\(|Disconnect\(|Reset\(|reset\(|clear\(|detach|join\(", text) else "call"
        self.add(kind, start, end, ";")


_CODES = []


def _codes():
    return _CODES


def all_faults(root):
    """Of every source that is built here, in a fixed order."""
    root = Path(root)
    header = (root / "include/nuvconnect/ResultCodes.h").read_text()
    _CODES[:] = re.findall(r"\bNUV_[A-Z_0-9]+", header)
    files = sorted(f for f in (root / "src").rglob("*") if f.suffix in (".cpp", ".h") and not re.search(r"_win(dows)?$", f.stem))
    sources = {str(f.relative_to(root)): f.read_text() for f in files}
    following = enumerators(sources.values())
    faults = []
    for file, source in sources.items():
        faults += Finder(file, source, following).find()
    return sources, faults
