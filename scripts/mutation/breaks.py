# SPDX-License-Identifier: Apache-2.0
"""Finds the places of a C++ source at which one token or one statement can be broken."""

import collections
import re

Break = collections.namedtuple("Break", "path line kind begin end text before after")

# In the source every binary operator stands between blanks; `<` of a template does not.
COMPARISONS = {"==": ["!="], "!=": ["=="], "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="],
               ">=": [">", "<"]}
COMPARISON = re.compile(r"(?<= )(==|!=|<=|>=|<|>)(?= )")
JUNCTION = re.compile(r"(?<= )(&&|\|\|)(?=\s)")
NEGATION = re.compile(r"(?<=[\s(])!(?=[\w(:*])")
CONSTANT = re.compile(r"(?<![\w.'])(0[xX][0-9a-fA-F']+|[0-9][0-9']*)(?=[uUlL]*\b)(?![\w.]*[.'])")
TRUTH = re.compile(r"\b(true|false)\b")
STATEMENT = re.compile(r"(?:\+\+|--|\*)?[A-Za-z_][\w:]*(?:<[\w:, ]+>)?(?:\([^;{}]*\)|\[[^;{}]*\]|->\w+|\.\w+)*\s*"
                       r"(?:[-+|&]?=(?!=)[^;]*|\+\+|--)?;", re.DOTALL)
PURE = re.compile(r"\)(?: const)? = $")
DELETED = re.compile(r"= (delete|default);$")
NO_STATEMENT = re.compile(r"(return|using|delete|case|default|static_assert|break|continue|goto|throw|public|private|"
                          r"namespace|typedef|extern|friend|template)\b")
LOG_CALL = re.compile(r"\b(?:k\w*Log(?:ger)?|FaultLog|m_log)\b(?:\.|->)?(?:Put|Log|Prefix)?\(")
LOG_LEVEL = re.compile(r"\(\s*([1-6])\s*,")
QUIET = re.compile(r"//[^\n]*|/\*.*?\*/|R\"\((?:.*?)\)\"|\"(?:[^\"\\\n]|\\.)*\"|(?<!\w)'(?:[^'\\\n]|\\.)+'|^\s*#[^\n]*",
                   re.DOTALL | re.MULTILINE)


def blanked(source):
    """The source with comments, literals and directives blanked out, every place as it was."""
    return QUIET.sub(lambda match: re.sub(r"[^\n]", " ", match[0]), source)


def line_of(code, place):
    return code.rfind("\n", 0, place) + 1


def closing(code, place):
    """Behind the bracket that closes the one at `place`."""
    depth = 0
    for i in range(place, len(code)):
        depth += (code[i] in "([{") - (code[i] in ")]}")
        if depth == 0:
            return i + 1
    return len(code)


def statements(code):
    """Whole statements that only do something: what stands before ends a statement or opens a block."""
    for match in re.finditer(r"(?<=[;{}])\s*\n\s+(?=[A-Za-z_+*-])", code):
        begin = match.end()
        found = STATEMENT.match(code, begin)
        if found and not NO_STATEMENT.match(code, begin) and not DELETED.search(found[0]):
            yield begin, found.end()


def one_more(digits):
    plain = digits.replace("'", "")
    value = int(plain, 16 if plain[:2].lower() == "0x" else 10)
    return hex(value + 1) if plain[:2].lower() == "0x" else str(value + 1)


def breaks_of(path, source):
    """All breaks of a file, behaviour and log lines."""
    code = blanked(source)
    logs = [(call.start(), closing(code, call.end() - 1)) for call in LOG_CALL.finditer(code)]
    found = []

    def add(kind, begin, end, text):
        line_begin, line_end = line_of(source, begin), source.find("\n", end)
        before = source[line_begin:line_end]
        after = source[line_begin:begin] + text + source[end:line_end]
        found.append(Break(path, source.count("\n", 0, begin) + 1, kind, begin, end, text,
                           " ".join(before.split()), " ".join(after.split())))

    def in_log(place):
        return any(begin <= place < end for begin, end in logs)

    for kind, pattern, turned in (
            ("comparison", COMPARISON, lambda token: COMPARISONS[token]),
            ("junction", JUNCTION, lambda token: ["||" if token == "&&" else "&&"]),
            ("negation", NEGATION, lambda token: [""]),
            ("constant", CONSTANT, lambda token: [one_more(token)]),
            ("truth", TRUTH, lambda token: ["false" if token == "true" else "true"])):
        for match in pattern.finditer(code):
            pure = kind == "constant" and PURE.search(code[line_of(code, match.start()):match.start()])
            if not pure and not in_log(match.start()):
                returned = kind == "truth" and re.search(r"\breturn\s+$", code[:match.start()])
                for text in turned(match[0]):
                    add("return" if returned else kind, match.start(), match.end(), text)
    for begin, end in statements(code):
        add("log line" if in_log(begin) else "statement", begin, end, ";")
    for begin, end in logs:
        if level := LOG_LEVEL.search(code, begin, end):
            add("log level", level.start(1), level.end(1), "3" if level[1] != "3" else "2")
        if text := re.search(r'"[^"\n]*[A-Za-z][^"\n]*"', source[begin:end]):
            letter = begin + text.start() + re.search(r"[A-Za-z](?![^{}]*\})", text[0]).start()
            add("log text", letter, letter + 1, "Q" if source[letter] != "Q" else "X")
    return found


def is_of_log(kind):
    return kind.startswith("log")
