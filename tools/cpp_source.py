"""A C++ source for several checks: its code without comments and literals, and its functions. Counts
braces in sources that clang-format has laid out; it is no parser."""

import re
from typing import NamedTuple

# Comments, preprocessor lines, raw strings, strings and character literals.
NOT_CODE = re.compile(
    r"""//[^\n]* | /\*.*?\*/ | ^[ \t]*\#(?:[^\n\\]|\\.|\\\n)* |
        R"(?P<mark>[^(\s"]*)\(.*?\)(?P=mark)" | "(?:\\.|[^"\\\n])*" |
        (?<![0-9A-Za-z_])'(?:\\.|[^'\\\n])+'""", re.S | re.M | re.X)
TYPE_OR_NAMESPACE = re.compile(
    r"^(?:template\s*<[^{]*>\s*)?(?:inline\s+)?(?:typedef\s+)?(?:class|struct|union|enum|namespace|extern\s*$)\b")
ATTRIBUTE = re.compile(r"alignas\s*\([^)]*\)|__attribute__\s*\(\(.*?\)\)|(?:__declspec|[A-Z_]{4,})\s*\([^)]*\)")
ACCESS = re.compile(r"\s*(?:public|private|protected)$")
NAME = re.compile(r"(\boperator\s*[^\s(]+|[~\w:<>]+)\s*\(")


class Function(NamedTuple):
    name: str
    first: int  # line of the signature, from 1
    last: int  # line of the closing brace
    begin: int  # offset of the opening brace in the text
    end: int  # offset of the closing brace

    @property
    def lines(self):
        return self.last - self.first + 1


def code_of(text):
    """The text with everything that is not code blanked; offsets and lines stay."""
    return NOT_CODE.sub(lambda found: re.sub(r"[^\n]", " ", found[0]), text)


def closing_brace(code, begin):
    depth = 0
    for found in re.compile(r"[{}]").finditer(code, begin):
        depth += 1 if found[0] == "{" else -1
        if depth == 0:
            return found.start()
    return len(code) - 1


def outside_parentheses(head):
    kept, depth = [], 0
    for letter in head:
        depth += letter in "(["
        if depth == 0:
            kept.append(letter)
        depth -= letter in ")]"
    return "".join(kept)


def is_function(head):
    """Whether a brace that follows this text, at the level of a namespace or class, opens a function."""
    if "(" not in head:
        return False
    assigned = "=" in re.sub(r"operator\s*[=!<>+\-*/]*=", "", outside_parentheses(head))
    return not assigned or re.search(r"=\s*\[[^\]]*\]\s*\(", head) is not None  # a lambda with a name


def in_member_initializers(head):
    """Whether the brace initializes a member: `: a{1}, b(2) {`"""
    return re.search(r"\)\s*(?:noexcept\s*)?:[^:]", head) and re.search(r"[:,]\s*[\w:<>]+$", head)


def functions(text):
    """The functions of a source, in order. Lambdas and local classes are part of the function around them."""
    code = code_of(text)
    found, start, i = [], 0, 0
    while i < len(code):
        letter, head = code[i], code[start:i].strip()
        if letter in ";}" or (letter == ":" and ACCESS.match(code[start:i])):
            start = i + 1
        elif letter == "{":
            if TYPE_OR_NAMESPACE.match(head) and "(" not in ATTRIBUTE.sub("", head):
                start = i + 1
            else:
                end = closing_brace(code, i)
                if not in_member_initializers(head):
                    if is_function(head):
                        first = i - len(code[start:i].lstrip())
                        name = NAME.search(re.sub(r"^template\s*<[^()]*?>\s*", "", head))
                        found.append(Function(name[1] if name else head, text.count("\n", 0, first) + 1,
                                              text.count("\n", 0, end) + 1, i, end))
                    start = end + 1
                i = end
        i += 1
    return found
