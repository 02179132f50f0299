"""The small wrong changes that scripts/mutation.py makes, found in the text of the sources."""

import collections
import functools
import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent

TOKEN = re.compile(
    r"""(?P<skip>//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\])*"|`[^`]*`|'(?:\\.|[^'\\])*'|^[ ]*\#(?:\\\n|[^\n])*)
      |(?P<number>(?<![\w.])(?:0[xX][0-9a-fA-F]+|\d+\.\d*(?:[eE][-+]?\d+)?|\d+)(?P<suffix>[uUlLfF]*)(?!\w))
      |(?P<operator>\+\+|--|<<=|>>=|===|!==|<<|>>|<=|>=|==|!=|&&|\|\||->|[-+*/%&|^]=|[-+*/%&|^<>!?=])""",
    re.VERBOSE | re.DOTALL | re.MULTILINE)

# Binary operators stand between blanks in this code, and nothing else that looks like them does.
BINARY = {
    "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"],
    "==": ["!="], "!=": ["=="], "===": ["!=="], "!==": ["==="], "&&": ["||"], "||": ["&&"],
    "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["*"],
    "&": ["|"], "|": ["&"], "^": ["|"], "<<": [">>"], ">>": ["<<"],
    "+=": ["-="], "-=": ["+="], "*=": ["/="], "/=": ["*="], "|=": ["&="], "&=": ["|="], "^=": ["|="],
}
UNARY = {"++": ["--"], "--": ["++"], "!": [""]}
# Declarations, and returns that nothing guards: without them nothing compiles, or nothing is defined.
KEPT = re.compile(r"(using|case|default|return|const|constexpr|static|auto|bool|double|u?int\d+_t|size_t|"
                  r"pthread_\w+|FILE|Image\w*|[A-Z]\w+)\b")
GUARD = re.compile(r"(?:else\s+)?(?:if|for|while) \(|else\b|do\b")

Change = collections.namedtuple("Change", "path line column start end new")


def numbersBeside(text, suffix):
    digits = text[:len(text) - len(suffix)] if suffix else text
    if "." in digits or "e" in digits.lower() and not digits.lower().startswith("0x"):
        value = float(digits)
        return [repr(value * 1.01 if value else 0.01) + suffix]
    isOctal = digits[0] == "0" and digits.isdigit()
    value = int(digits, 8 if isOctal else 0)
    form = hex if digits.lower().startswith("0x") else str
    return [form(other) + suffix for other in (value + 1, value - 1) if other >= 0]


def changesOfTokens(code):
    for token in TOKEN.finditer(code):
        start, end = token.span()
        if token["number"]:
            for new in numbersBeside(token["number"], token["suffix"]):
                yield start, end, new
        elif token["operator"]:
            text = token["operator"]
            isBinary = code[start - 1].isspace() and code[end:end + 1].isspace()
            line = code[code.rfind("\n", 0, start) + 1:start]
            if isBinary and not line.lstrip().startswith("template"):
                for new in BINARY.get(text, []):
                    yield start, end, new
            elif not isBinary:
                for new in UNARY.get(text, []):
                    yield start, end, new


def withoutSkipped(code):
    """The code with comments, texts and directives blanked, every position kept."""
    return TOKEN.sub(lambda token: re.sub(r"[^\n]", " ", token[0]) if token["skip"] else token[0], code)


def droppedStatements(code):
    """Statements of functions that end in ';', each without what guards it."""
    depth = 0
    start = 0
    for position, character in enumerate(code):
        depth += (character == "(") - (character == ")")
        if depth or character not in "{};":
            continue
        begin = start + len(code[start:position]) - len(code[start:position].lstrip())
        start = position + 1
        if character != ";" or begin == position or code[begin - 1] == "\n":  # functions are indented
            continue
        inner = begin
        while guard := GUARD.match(code, inner):
            inner = endOfParentheses(code, guard.end() - 1) if guard[0].endswith("(") else guard.end()
            inner += len(code[inner:position]) - len(code[inner:position].lstrip())
        if inner > begin or not KEPT.match(code, inner):
            yield inner, position + 1, ";"


def endOfParentheses(code, opening):
    depth = 0
    for position in range(opening, len(code)):
        depth += (code[position] == "(") - (code[position] == ")")
        if depth == 0:
            return position + 1
    raise ValueError("parentheses are not closed")


def sources():
    found = [*(ROOT / "src").rglob("*"), *(ROOT / "scan").glob("*.h"), *(ROOT / "scan").glob("*/*")]
    return sorted(path for path in found if path.suffix in (".cpp", ".h", ".js"))


def allChanges(only):
    changes = []
    for path in sources():
        relative = str(path.relative_to(ROOT))
        if only not in relative:
            continue
        code = path.read_text()
        found = [*changesOfTokens(code), *droppedStatements(withoutSkipped(code))]
        for start, end, new in sorted(found):
            line = code.count("\n", 0, start) + 1
            column = start - code.rfind("\n", 0, start)
            changes.append(Change(relative, line, column, start, end, new))
    return changes


@functools.cache
def textOf(path):
    return (ROOT / path).read_text()


def describe(change):
    """File, line, column, the line's text, and what the change replaces by what."""
    code = textOf(change.path)
    line = code.splitlines()[change.line - 1].strip()
    old = " ".join(code[change.start:change.end].split())
    return [change.path, str(change.line), str(change.column), line, f"{old} -> {change.new}".strip()]
