# The changes that tools/mutants makes: for each token of a source, what may stand in its place.
import collections
import hashlib
import os
import re

OPERATORS = ("comparison", "arithmetic", "constant", "text", "statement", "lock", "arguments", "condition", "branch", "jump")

TOKEN = re.compile(r"""(?P<skipped>^[ \t]*\#(?:[^\n]*\\\n)*[^\n]*|//[^\n]*|/\*.*?\*/|\[\[.*?\]\]|\bstatic_assert\(.*?\);)
    |(?P<text>"(?:\\.|[^"\\])*")|(?P<char>'(?:\\.|[^'\\])')|\b(?P<number>0x[0-9A-Fa-f]+|\d+)[uUlL]*\b|(?P<name>[A-Za-z_]\w*)
    |(?P<sign>::|->|<<=|<=|>=|==|!=|&&|\|\||\+\+|--|[-+*/%&|^]=|<<|\S)""", re.VERBOSE | re.DOTALL | re.MULTILINE)
# What stands for a sign: (operator, other sign).
SIGNS = {a: (operator, b) for operator, pairs in {
    "comparison": "== != != == < <= <= < > >= >= >", "condition": "&& || || &&",
    "arithmetic": "+ - - + * + / * % * += -= -= += |= &= & | | & ^ | ++ -- -- ++"}.items()
         for a, b in zip(pairs.split()[::2], pairs.split()[1::2])}
LOCK = re.compile(r"(const )?(ExclusiveLock|SharedLock)\b")
EXPRESSION = re.compile(r"[\w:]+(\(|\[|\.|->|<[\w:]+>\(|\+\+|--| ?[-+*/%&|^]?= )|\+\+|--|\*\w|\(")
NO_EXPRESSION = set("return using const constexpr static auto if for while switch do else try catch case default struct class "
                    "throw break continue delete new".split())

Mutant = collections.namedtuple("Mutant", "key service file line operator start end text was")


# The changes of one source. It is read as a row of tokens: the sources are formatted, so that spaces tell a comparison
# from a template's bracket. What isn't valid doesn't compile.
class Source:
    def __init__(self, service, root, path):
        self.service, self.path = service, path
        with open(os.path.join(root, path), encoding="utf-8") as file:
            self.content = file.read()
        self.lines = self.content.count("\n")
        self.digest = hashlib.sha1(self.content.encode()).hexdigest()[:8]
        self.tokens = [match for match in TOKEN.finditer(self.content) if match.lastgroup != "skipped"]
        self.words = [token[0] for token in self.tokens]
        self.partner, self.in_body, self.found = {}, [], []

    # Pairs the brackets, and finds out which tokens are in the body of a function.
    def _pair(self):
        open_brackets, depth, header = [], 0, []
        for i, word in enumerate(self.words):
            self.in_body.append(depth > 0)
            if word in "({[":
                is_scope = word != "{" or (depth == 0 and {"namespace", "class", "struct", "enum", "extern"} & set(header))
                open_brackets.append((i, not is_scope))
                depth += not is_scope
            elif word in ")}]":
                start, was_body = open_brackets.pop()
                depth -= was_body
                self.partner[start], self.partner[i] = i, start
            header = [] if word in "{};" else header + [word]

    def _next(self, i): # the token after this one, or after its bracket
        return self.partner[i] + 1 if self.words[i] in "({[" else i + 1

    def _between(self, first, last):
        return self.content[self.tokens[first].start():self.tokens[last].end()] if first <= last else ""

    def _add(self, operator, first, last, text):
        start, stop = self.tokens[first].start(), self.tokens[last].end()
        self.found.append(Mutant(f"{self.path}:{self.digest}:{start}:{stop}:{text}", self.service, self.path,
                                 self.content.count("\n", 0, start) + 1, operator, start, stop, text, self.content[start:stop]))

    def mutants(self):
        self._pair()
        for i, word in enumerate(self.words):
            before = self.words[i - 1] if i > 0 else ""
            self._literal(i, self.tokens[i], before)
            if before not in ("operator", "template"):
                self._sign(i, word)
            if self.in_body[i]:
                self._control(i, word)
                self._arguments(i, word, before)
                if before in ("{", "}", ";", ":"):
                    self._statement(i, word)
        return self.found

    def _literal(self, i, token, before):
        kind, word = token.lastgroup, token[0]
        if kind == "number":
            digits = token["number"]
            value = int(digits, 0)
            for other in [value + 1] + [value - 1] * (value > 0):
                self._add("constant", i, i, (hex(other) if "x" in digits else str(other)) + word[len(digits):])
        elif word in ("true", "false"):
            self._add("constant", i, i, "false" if word == "true" else "true")
        elif kind == "char":
            self._add("constant", i, i, "'y'" if word == "'x'" else "'x'")
        elif kind == "text" and before != "extern":
            letter = re.search(r"(?<!\\)[A-Za-z]", word)
            place = letter.start() if letter else len(word) - 1
            self._add("text", i, i, word[:place] + ("y" if letter and letter[0] == "x" else "x") + word[place + bool(letter):])

    def _sign(self, i, word):
        token = self.tokens[i]
        if not (self.content[token.start() - 1] + self.content[token.end()]).isspace() and word not in ("++", "--", "!"):
            return # a template's bracket, a pointer, a reference
        if word in SIGNS:
            self._add(SIGNS[word][0], i, i, SIGNS[word][1])
        elif word in ("?", "!"):
            self._add("condition", i, i, "" if word == "!" else "== false ?")

    def _control(self, i, word):
        if word in ("if", "while") and self.words[i + 1] == "(":
            first, last = i + 2, self.partner[i + 1] - 1
            if ";" in self.words[first:last]:
                first = self.words.index(";", first) + 1
            condition = self._between(first, last)
            if " = " not in condition or condition.startswith("("):
                self._add("condition", first, last, f"!({condition})")
                self._add("branch", first, last, f"false && ({condition})")
                if word == "if":
                    self._add("branch", first, last, f"true || ({condition})")
        elif word == "else" and self.words[i + 1] == "{":
            self._add("branch", i, i, "else if (false)")

    # Swaps neighbours in the arguments of a call or an initialisation.
    def _arguments(self, i, word, before):
        if before in ("if", "for", "while", "switch", "catch") or not (
                word == "(" and re.fullmatch(r"\w+|>", before) or word == "{" and re.fullmatch(r"\w+|[=(,]", before)):
            return
        starts, j = [i + 1], i + 1
        while j < self.partner[i]:
            if self.words[j] == ";":
                return
            if self.words[j] == ",":
                starts.append(j + 1)
            j = self._next(j)
        ends = [start - 2 for start in starts[1:]] + [self.partner[i] - 1]
        for k in range(len(starts) - 1):
            left, right = self._between(starts[k], ends[k]), self._between(starts[k + 1], ends[k + 1])
            if left != right and right:
                self._add("arguments", starts[k], ends[k + 1], f"{right}, {left}")

    def _statement(self, i, word):
        last = i
        while self.words[last] not in ";}":
            last = self._next(last)
        statement = self._between(i, last)
        if self.words[last] != ";":
            return
        if LOCK.match(statement):
            self._add("lock", i, last, ";")
            if "ExclusiveLock" in statement:
                self._add("lock", i, last, statement.replace("ExclusiveLock", "SharedLock"))
        elif word in ("break", "continue", "throw") or statement == "return;":
            self._add("jump", i, last, ";")
        elif word == "return" and statement != "return {};":
            self._add("jump", i, last, "return {};")
        elif word not in NO_EXPRESSION and EXPRESSION.match(statement):
            self._add("statement", i, last, ";")
