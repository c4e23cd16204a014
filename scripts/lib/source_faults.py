"""Finds where a small fault can be put into a C++ source. Log lines are left as they are."""
import re

FLIPS = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==", "&&": "||",
         "||": "&&", "+": "-", "-": "+", "+=": "-=", "-=": "+="}
OPPOSITES = {"true": "false", "false": "true", "TRUE": "FALSE", "FALSE": "TRUE"}
TEXT = re.compile(r"""R"\(.*?\)"|"(?:\\.|[^"\\\n])*"|(?<![\da-fA-F])'(?:\\.|[^'\\\n])+'""", re.S)
HIDDEN = re.compile(r"//[^\n]*|/\*.*?\*/|^ *#[^\n]*|\bstatic_assert\b[^;]*;|" + TEXT.pattern,
                    re.S | re.M)
FLIP = re.compile(r"(?<= )([<>]=?|[=!]=|&&|\|\||[-+]=?)(?=\s)")
NUMBER = re.compile(r"(?<![\w.'])(0[xX][\da-fA-F']+|\d[\d']*)(?=[uUlLzZ]*\b(?![.']))")
ANSWER = re.compile(r"\breturn ([^;?{}]*);")
LOGICAL = re.compile(r"!\w.*|.* (?:==|!=|<|<=|>|>=|&&|\|\|) .*", re.S)
CALL_OR_ASSIGNMENT = re.compile(
    r"(?!(?:return|using|throw|operator|delete|(?:\w+::)*Log)\b)"
    r"[\w:*.\[\]>-]+(?:\(.*\)| [-+|&^]?= .*)$|[\w.>-]*(?:\+\+|--)[\w.>-]*$", re.S)
CONDITION = re.compile(r"(?:else )?(?:if|for|while)(?: constexpr)? \(|else\b"
                       r"|(?:case [\w:']+|default):")


def blank(match):
    return re.sub(r"[^\n]", " ", match[0])


def visible(source):
    """The source with blanks in place of comments, texts and directives. Its length stays the same."""
    return HIDDEN.sub(lambda m: f'"{blank(m)[2:]}"' if TEXT.fullmatch(m[0]) else blank(m), source)


def statements(text):
    """(begin, end) of each statement that is a call or an assignment, with its semicolon."""
    begin = depth = 0
    for at, char in enumerate(text):
        depth += {"(": 1, ")": -1}.get(char, 0)
        if depth == 0 and char in ";{}":
            begin = body(text, begin, at)
            if char == ";" and CALL_OR_ASSIGNMENT.match(text, begin, at):
                yield begin, at + 1
            begin = at + 1


def body(text, begin, end):
    """The begin of the statement behind conditions and labels."""
    while True:
        begin += len(text[begin:end]) - len(text[begin:end].lstrip())
        head = CONDITION.match(text, begin, end)
        if not head:
            return begin
        begin, depth = head.end(), head[0].count("(")
        while depth:
            depth += {"(": 1, ")": -1}.get(text[begin], 0)
            begin += 1


def faults(source):
    """All faults of a source: (begin, end, the new text, the change in words)."""
    text = visible(source)
    for match in FLIP.finditer(text):
        yield *match.span(), FLIPS[match[0]], f"{match[0]} becomes {FLIPS[match[0]]}"
    for match in NUMBER.finditer(text):
        higher = int(match[0].replace("'", ""), 16 if match[0][:2] in ("0x", "0X") else 10) + 1
        yield *match.span(), str(higher), f"{match[0]} becomes {higher}"
    for begin, end in statements(text):
        yield begin, end, "{}", f"dropped: {' '.join(source[begin:end].split())}"
    for match in ANSWER.finditer(text):
        if match[1] in OPPOSITES:
            yield *match.span(1), OPPOSITES[match[1]], f"returns {OPPOSITES[match[1]]}"
        elif LOGICAL.fullmatch(match[1]):
            value = source[slice(*match.span(1))]
            yield *match.span(1), f"!({value})", f"returns !({' '.join(value.split())})"
