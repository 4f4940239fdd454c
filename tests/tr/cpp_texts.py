"""String literals of C++ sources, each with the calls and lists that it stands in."""

import re
from dataclasses import dataclass

TOKEN = re.compile(r"""
    (?P<skip>\s+|//[^\n]*|/\*.*?\*/|^[ \t]*\#(?:[^\n\\]|\\.|\\\n)*)
  | (?P<raw>(?:u8|[uUL])?R"(?P<mark>[^()\s\\]*)\((?P<inner>.*?)\)(?P=mark)")
  | (?P<string>(?:u8|[uUL])?"(?:[^"\\\n]|\\.)*")
  | (?P<number>\.?\d(?:['\w.]|(?<=[eEpP])[+-])*)
  | (?P<char>(?:u8|[uUL])?'(?:[^'\\\n]|\\.)+')
  | (?P<name>[A-Za-z_]\w*)
  | (?P<mark_>::|->|.)
""", re.VERBOSE | re.DOTALL | re.MULTILINE)

ESCAPE = re.compile(r"\\(u[0-9a-fA-F]{4}|x[0-9a-fA-F]+|[0-7]{1,3}|.)", re.DOTALL)
NAMED = {"n": "\n", "t": "\t", "r": "\r", "0": "\0", "a": "\a", "b": "\b", "f": "\f", "v": "\v"}
CLOSING = {")": "(", "]": "[", "}": "{"}


@dataclass
class Literal:
    text: str
    line: int
    isFirst: bool  # of what the innermost brackets hold
    # What it stands in, from within: the name before each open bracket ("OvTranslation::tr"), "[" for an index,
    # "" for brackets without a name. Ends where a block of statements begins.
    calls: list


def unescaped(text):
    def one(match):
        body = match.group(1)
        if body[0] in "ux":
            return chr(int(body[1:], 16))
        return NAMED.get(body, chr(int(body, 8)) if body[0].isdigit() else body)
    return ESCAPE.sub(one, text)


def tokens(source):
    """(kind, text, line); literals of the text in them, comments and preprocessor lines left out."""
    line = 1
    for match in TOKEN.finditer(source):
        kind = match.lastgroup
        if match.group("raw") is not None:
            yield "string", match.group("inner"), line
        elif kind == "string":
            yield "string", unescaped(match.group()[match.group().index('"') + 1:-1]), line
        elif kind != "skip":
            yield kind, match.group(), line
        line += match.group().count("\n")


def literals(source):
    found = []
    opened = []  # (bracket, name before it)
    before = []  # the last tokens, for the name of a call
    joined = False
    first = False
    for kind, text, line in tokens(source):
        if kind == "string":
            if joined:
                found[-1].text += text
            else:
                found.append(Literal(text, line, first, calls_of(opened)))
            joined = True
            first = False
            before = []
            continue
        joined = False
        first = text in "([{"
        if text in "([{":
            opened.append((text, "[" if text == "[" else name_of(before)))
            before = []
        elif text in CLOSING:
            if opened:
                opened.pop()
            before = []
        elif kind == "name" or text in ("::", "->", "."):
            before = before[-6:] + [text]
        elif text in "<>*&" and before:
            before.append(text)
        else:
            before = [] if kind == "mark_" else before
    return found


def name_of(before):
    """The qualified name that ends a row of tokens: "QMessageBox::question", "label.setText" gives "setText"."""
    name = ""
    for text in reversed(before):
        if re.fullmatch(r"\w+", text):
            if name and not name.startswith("::"):
                break
            name = text + name
        elif text == "::":
            name = "::" + name
        else:
            break
    return name.lstrip(":")


def calls_of(opened):
    calls = []
    for bracket, name in reversed(opened):
        if bracket == "{" and name in ("", "const", "else", "try", "do", "override", "noexcept"):
            # A block or a list; a list goes on to what it is given to.
            calls.append("{")
            continue
        calls.append(name)
    return calls
