"""tests/whole/mutants/operators.py - which small mistakes can be made in a source: C, C++ or Objective-C.

Works on tokens. Comments, preprocessor lines and the words in strings are never touched, but for the texts in tables.
The project's format tells operators from templates and pointers: only an operator has a space on both sides.
"""

import re
from dataclasses import dataclass

TOKEN = re.compile(
    r"""(?P<space>\s+)
      | (?P<comment>//[^\n]*|/\*.*?\*/)
      | (?P<line>(?<![^\n])[ \t]*\#(?:\\\n|[^\n])*)
      | (?P<raw>R"(?P<mark>[^(\s]*)\(.*?\)(?P=mark)")
      | (?P<text>"(?:\\.|[^"\\])*")
      | (?P<char>'(?:\\.|[^'\\])*')
      | (?P<number>(?:0[xX][0-9A-Fa-f']+|(?:\d[\d']*)?\.?\d[\d']*(?:[eE][-+]?\d+)?)[uUlLfF]*)
      | (?P<word>[A-Za-z_]\w*)
      | (?P<sign><<=|>>=|<=>|->\*|\.\.\.|::|->|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|.)""",
    re.VERBOSE | re.DOTALL)

INSTEAD = {
    "relation": {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "=="},
    "arithmetic": {"+": "-", "-": "+", "*": "/", "/": "*", "%": "*", "<<": ">>", ">>": "<<", "&": "|", "|": "&",
                   "+=": "-=", "-=": "+=", "|=": "&=", "&=": "|="},
    "logic": {"&&": "||", "||": "&&"},
}
STEPS = {"++": "--", "--": "++"}
CONTROL = {"if", "for", "while", "switch", "catch", "constexpr", "sizeof", "alignof", "decltype", "return", "synchronized",
           "static_assert", "defined", "alignas", "__attribute__", "requires", "new", "typeof"}
# What begins something that is not a statement made of an expression.
DECLARING = {"auto", "const", "static", "using", "typedef", "struct", "class", "enum", "union", "constexpr", "constinit",
             "unsigned", "signed", "int", "char", "double", "float", "bool", "long", "short", "void", "extern", "template",
             "namespace", "public", "private", "protected", "friend", "explicit", "virtual", "inline", "operator", "goto",
             "return", "throw", "break", "continue", "case", "default", "if", "else", "for", "while", "do", "switch", "try",
             "catch", "static_assert", "thread_local", "volatile", "id", "__block", "register", "mutable", "asm"}
ASSIGNING = {"=", "+=", "-=", "*=", "/=", "|=", "&=", "^=", "<<=", ">>=", "%=", "++", "--"}
OWNERSHIP = re.compile(r"retain|release|(?<!b)lock|dispose|free", re.IGNORECASE)
CLOSES = {"(": ")", "[": "]", "{": "}"}


@dataclass(frozen=True)
class Mutant:
    """The text from `start` to `end` replaced."""
    path: str
    kind: str
    start: int
    end: int
    text: str


@dataclass
class Token:
    kind: str
    text: str
    start: int
    end: int
    partner: int = -1    # of a bracket: its other half
    around: int = -1     # the bracket that it stands in
    block: bool = False  # of "{": statements follow, and no declarations or values


def tokens_of(source):
    tokens = []
    open_ones = []
    for match in TOKEN.finditer(source):
        kind = match.lastgroup if match.lastgroup != "mark" else "raw"
        if kind in ("space", "comment", "line"):
            continue
        token = Token(kind, match.group(), match.start(), match.end())
        before = tokens[-1].text if tokens else ""
        token.around = open_ones[-1] if open_ones else -1
        if kind == "sign" and token.text in CLOSES:
            inside = tokens[token.around].block if token.around >= 0 else False
            token.block = token.text == "{" and (
                before in (")", "]", "else", "do", "try", "override", "noexcept", "finally") or
                before == "const" or (inside and before in (";", "{", "}", ":")))
            open_ones.append(len(tokens))
        elif kind == "sign" and token.text in CLOSES.values() and open_ones:
            opened = open_ones.pop()
            token.partner = opened
            tokens[opened].partner = len(tokens)
            token.around = tokens[opened].around
        tokens.append(token)
    return tokens


class Source:
    def __init__(self, path, text):
        self.path = path
        self.text = text
        self.tokens = tokens_of(text)
        self.plus_plus = path.endswith((".cpp", ".h"))
        self.objective = path.endswith(".m")
        self.found = []

    def mutants(self):
        for i in range(len(self.tokens)):
            for look in (self.sign, self.condition, self.statement, self.guard, self.early_return, self.arguments,
                         self.constant, self.dropped_break, self.table, self.owner):
                look(i)
        return self.found

    def at(self, i):
        return self.tokens[i].text if 0 <= i < len(self.tokens) else ""

    def is_word(self, i):
        return 0 <= i < len(self.tokens) and self.tokens[i].kind == "word"

    def add(self, kind, first, last, text):
        """The tokens from first to last, replaced."""
        start, end = self.tokens[first].start, self.tokens[last].end
        self.found.append(Mutant(self.path, kind, start, end, text))

    def span(self, first, last):
        return self.text[self.tokens[first].start:self.tokens[last].end]

    def in_block(self, i):
        around = self.tokens[i].around
        return around >= 0 and self.tokens[around].text == "{" and self.tokens[around].block

    def sign(self, i):
        token = self.tokens[i]
        if token.kind != "sign":
            return
        spaced = self.text[token.start - 1].isspace() and self.text[token.end:token.end + 1].isspace()
        if self.objective and token.around < 0 and token.text in "+-":
            return  # the mark of a class's or an instance's method
        for kind, table in INSTEAD.items():
            joins = token.text == "+" and '"' in self.at(i - 1)[-1:] + self.at(i + 1)[:1]
            if spaced and token.text in table and self.at(i - 1) != "operator" and not joins:
                self.add(kind, i, i, table[token.text])
        if token.text in STEPS and self.at(i - 1) != "operator":
            self.add("arithmetic", i, i, STEPS[token.text])
        if token.text == "!" and not spaced and self.at(i - 1) != "operator":
            self.add("logic", i, i, "")

    def condition(self, i):
        if self.at(i) in ("if", "while") and self.at(i + 1) == "(" and self.tokens[i + 1].partner > 0:
            end = self.tokens[i + 1].partner
            inner = self.span(i + 2, end - 1)
            if inner not in ("true", "false") and ";" not in inner:
                self.add("condition", i + 2, end - 1, "!(" + inner + ")")

    def end_of_statement(self, i):
        """The ";" that ends what begins here; -1 where a bracket closes before."""
        while i < len(self.tokens):
            text = self.at(i)
            if text == ";":
                return i
            if self.tokens[i].kind == "sign" and text in CLOSES and self.tokens[i].partner > i:
                i = self.tokens[i].partner
            elif text in CLOSES.values():
                return -1
            i += 1
        return -1

    def begins_statement(self, i):
        before = self.at(i - 1)
        if not self.in_block(i):
            return False
        if before in (";", "{", "}", "else"):
            return True
        if before == ":":
            k = i - 2
            while self.at(k) not in (";", "{", "}", ":", ""):
                k -= 1
            return self.at(k + 1) in ("case", "default")
        opened = self.tokens[i - 1].partner if before == ")" else -1
        return opened > 0 and (self.at(opened - 1) in ("if", "for", "while") or self.at(opened - 2) == "if")

    def declares(self, i):
        """Whether a type and a name follow."""
        if self.at(i) in DECLARING:
            return True
        while self.is_word(i) or self.at(i) == "::":
            if self.is_word(i) and self.is_word(i + 1):
                return True
            i += 1
        if self.at(i) == "<" and not self.text[self.tokens[i].start - 1].isspace():
            return True
        return self.at(i) in ("*", "&", "&&") and self.is_word(i + 1)

    def statement(self, i):
        token = self.tokens[i]
        if not (token.kind == "word" or token.text in ("*", "++", "--", "[", "(")) or not self.begins_statement(i):
            return
        if (token.kind == "word" and self.declares(i)) or (token.text == "[" and not self.objective):
            return
        end = self.end_of_statement(i)
        if end < 0:
            return
        inside = [self.tokens[k].text for k in range(i, end)]
        if "(" in inside or token.text in ("[", "delete") or ASSIGNING.intersection(inside):
            kind = "ownership" if OWNERSHIP.search(self.span(i, end)) else "statement"
            self.add(kind, i, end, "{}")

    def guard(self, i):
        """A local that nobody names again works by its constructor and destructor."""
        if not self.is_word(i) or not self.begins_statement(i):
            return
        end = self.end_of_statement(i)
        first = i + 1 if self.at(i) == "const" else i
        name = first
        while self.is_word(name) and self.at(name + 1) == "::":
            name += 2
        name += 1
        if end < 0 or self.at(first) in DECLARING or not self.is_word(name) or self.at(name + 1) not in ("(", "{"):
            return
        if sum(token.text == self.at(name) for token in self.tokens) == 1:
            self.add("ownership", i, end, "{}")

    def early_return(self, i):
        token = self.tokens[i]
        if token.text != "{" or token.kind != "sign":
            return
        if self.objective:
            line = self.text[self.text.rfind("\n", 0, token.start) + 1:token.start]
            method = re.match(r"[-+] \(([^)]*)\)", line)
            if method:
                self.insert_return(i, method[1] == "void")
                return
        k = i - 1
        while self.at(k) in ("const", "override", "noexcept", "final"):
            k -= 1
        opened = self.tokens[k].partner if self.at(k) == ")" else -1
        if opened < 1 or not self.is_word(opened - 1) or self.at(opened - 1) in CONTROL | {"else"}:
            return
        k = opened - 2
        while self.at(k) == "::":
            k -= 2
        if self.at(k) == "void":
            self.insert_return(i, True)
        elif (self.is_word(k) and self.at(k) not in ("explicit", "else", "constexpr")) or self.at(k) in ("*", ">"):
            self.insert_return(i, False)

    def insert_return(self, i, nothing):
        neutral = "return;" if nothing else "return {};" if self.plus_plus else "return 0;"
        if self.at(i + 1) + self.at(i + 2) + self.at(i + 3) not in (neutral.replace(" ", ""), "return0;"):
            self.add("early return", i, i, "{ " + neutral)

    def arguments(self, i):
        if not self.is_word(i) or self.at(i) in CONTROL or self.at(i + 1) != "(" or self.tokens[i + 1].partner < 0:
            return
        parts = []
        begin = k = i + 2
        end = self.tokens[i + 1].partner
        while k <= end:
            if self.at(k) == "," or k == end:
                parts.append((begin, k - 1))
                begin = k + 1
            elif self.tokens[k].kind == "sign" and self.at(k) in CLOSES:
                k = self.tokens[k].partner
            k += 1
        for (a, b), (c, d) in zip(parts, parts[1:]):
            left, right = self.span(a, b), self.span(c, d)
            if left == right or any(self.is_word(k) and self.is_word(k + 1) or self.at(k) in "*&<" and self.is_word(k + 1) and
                                    self.is_word(k - 1) for k in (*range(a, b), *range(c, d))):
                continue
            if not {"<", ">"} & set(left + right):
                self.add("arguments", a, d, right + self.text[self.tokens[b].end:self.tokens[c].start] + left)

    def constant(self, i):
        token = self.tokens[i]
        if token.kind != "number":
            return
        match = re.fullmatch(r"(0[xX][0-9A-Fa-f]+|\d+)((?:\.\d*)?)([uUlLfF]*)", token.text.replace("'", ""))
        if match:
            value = int(match[1], 0 if match[1][:2] in ("0x", "0X") else 10) + 1
            self.add("constant", i, i, (hex(value) if match[1][:1] == "0" and len(match[1]) > 2 else str(value)) +
                     match[2] + match[3])

    def dropped_break(self, i):
        if self.at(i) not in ("break", "continue") or self.at(i + 1) != ";":
            return
        falls = self.at(i + 2) in ("case", "default") and self.at(i) == "break"
        through = "[[fallthrough]];" if self.plus_plus else "__attribute__((fallthrough));"
        self.add("break", i, i + 1, through if falls else "{}")

    def table(self, i):
        token = self.tokens[i]
        if token.text in ("true", "false"):
            self.add("flag", i, i, "false" if token.text == "true" else "true")
        around = token.around
        if token.kind == "text" and around >= 0 and self.at(around) == "{" and not self.tokens[around].block:
            if self.at(i - 1) in ("{", ",", "=", "@") and self.at(i + 1) in ("}", ","):
                self.add("text", i, i, token.text[:-1] + 'x"')

    def owner(self, i):
        if self.at(i) in ("retain", "autorelease", "copy") and self.at(i + 1) == "]" and self.objective:
            opened = self.tokens[i + 1].partner
            if opened >= 0 and not self.begins_statement(opened):
                self.add("ownership", opened, i + 1, self.span(opened + 1, i - 1))


def mutants_of(path, text):
    return Source(path, text).mutants()
