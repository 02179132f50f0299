"""Where the functions of a source are, and how all changes of a source become one text."""

import re

from .changes import withoutSkipped

SCOPE = re.compile(r"\s*(template <[^>]*>\s*)?(inline\s+)?(namespace|struct|class|union|extern)\b")


def bodies(code):
    """Begin and end of the inside of each function that is computed at run time.

    Those with a list of initialisers are left out; lambdas are parts of their function."""
    code = withoutSkipped(code)
    found = []
    head = 0
    position = 0
    while position < len(code):
        character = code[position]
        if character in ";}":
            head = position + 1
        elif character == "{":
            text = code[head:position]
            if SCOPE.match(text) and "(" not in text:
                head = position + 1
            else:
                end = closing(code, position)
                if re.search(r"\)(\s*(const|noexcept|override))*\s*$", text) and not re.search(
                        r"(?<![=!<>])=(?!=)[^()]*\(|\bconstexpr\b|\)\s*:[^:]", text):
                    found.append((position + 1, end - 1))
                position = head = end
                continue
        position += 1
    return found


def closing(code, opening):
    depth = 0
    for position in range(opening, len(code)):
        depth += (code[position] == "{") - (code[position] == "}")
        if depth == 0:
            return position + 1
    raise ValueError("braces are not closed")


def bodyOf(change, ranges):
    return next((range for range in ranges if range[0] <= change.start and change.end <= range[1]), None)


def withChanges(code, changes):
    """The source with every function once more for each change in it, and of each change its lines.

    changes   of this source, by number; all of them within bodies"""
    ranges = bodies(code)
    text = ""
    lines = {}
    position = 0
    for begin, end in ranges:
        text += code[position:begin]
        position = begin
        for number, change in changes.items():
            if bodyOf(change, ranges) != (begin, end):
                continue
            text += f"\nif (mutants::isMade({number})) {{"
            first = text.count("\n") + 1
            text += code[begin:change.start] + change.new + code[change.end:end]
            lines[number] = range(first, text.count("\n") + 2)
            text += "\n} else\n"
        text += "{" + code[begin:end] + "}"
        position = end
    return text + code[position:], lines
