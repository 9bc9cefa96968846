"""The rule for coroutines. gcc 12 miscompiles some of them without a word, so only plain forms are written:

    co_await f(a, b);               alone as a statement
    co_return co_await f(a, b);     after co_return
    const auto r = co_await f(a);   as the whole right side of a declaration

What is built inside the awaited expression and is then destroyed twice (a braced temporary, a lambda that captures by
value) gets a name first. A capturing lambda is no coroutine (its captures die before it does), and no lock is held
across an await.
"""
import re

import sources

TOKEN = re.compile(r'""|[A-Za-z_]\w*|\d[\w.\']*|->|::|<<=|>>=|<=>|&&|\|\||[-+*/%^&|=!<>]=|\S')
OPENERS = {"(": ")", "[": "]", "{": "}"}
CONDITIONS = {"if", "while", "for", "switch"}
COROUTINE_WORDS = {"co_await", "co_return", "co_yield"}
LOCKS = {"lock_guard", "unique_lock", "scoped_lock", "shared_lock"}
BEFORE_SUBSCRIPT = re.compile(r'[A-Za-z_]\w*$|\)$|\]$|""$')
KEYWORDS_BEFORE_LAMBDA = {"return", "co_return", "co_await", "co_yield", "case", "else", "do"}


class Code:
    """The tokens of a file with their lines and the brackets' partners."""

    def __init__(self, text):
        self.tokens, self.lines = [], []
        line = 1
        position = 0
        code = sources.code_only(text)
        for match in TOKEN.finditer(code):
            line += code.count("\n", position, match.start())
            position = match.start()
            self.tokens.append(match.group(0))
            self.lines.append(line)
        self.partner = {}
        self.enclosing = []  # for each token, the index of the innermost bracket around it, or -1
        stack = []
        for index, token in enumerate(self.tokens):
            if stack and token == OPENERS.get(self.tokens[stack[-1]]):
                self.partner[stack[-1]] = index
                self.partner[index] = stack.pop()
            self.enclosing.append(stack[-1] if stack else -1)
            if token in OPENERS:
                stack.append(index)

    def token(self, index):
        return self.tokens[index] if 0 <= index < len(self.tokens) else ""

    def after(self, index):
        """The index behind the bracket that opens at index."""
        return self.partner.get(index, len(self.tokens)) + 1

    def lambda_body(self, index):
        """Where the body of the lambda opens whose captures open at index, or None if that is no lambda."""
        before = self.token(index - 1)
        if BEFORE_SUBSCRIPT.match(before) and before not in KEYWORDS_BEFORE_LAMBDA:
            return None
        if self.token(index + 1) == "[" or before == "[":  # an attribute
            return None
        at = self.after(index)
        if self.token(at) not in ("(", "{", "<", "->", "mutable", "noexcept"):
            return None
        while at < len(self.tokens) and self.token(at) not in ("{", ";", ")", "}"):
            at = self.after(at) if self.token(at) in OPENERS else at + 1
        return at if self.token(at) == "{" else None

    def captures(self, index):
        return self.tokens[index + 1:self.partner.get(index, index + 1)]


def captures_by_value(captures):
    depth = 0
    start = True
    for token in captures:
        if depth == 0 and start and token not in ("&", "this"):
            return True
        start = depth == 0 and token == ","
        depth += (token in OPENERS) - (token in OPENERS.values())
    return False


def statement_start(code, index):
    """The first token of the statement around the token at index, control words and labels left out."""
    start = index
    while start > 0:
        before = start - 1
        token = code.token(before)
        if token in (";", "{", "(", "[") or (token == "}" and ends_block(code, before)):
            break
        start = code.partner.get(before, before) if token in OPENERS.values() else before
    return skip_control(code, start, index)


def ends_block(code, closing):
    return code.token(closing + 1) not in (";", ",", ")", ".", "(", "[", "->")


def skip_control(code, start, index):
    while start < index:
        token = code.token(start)
        if token in ("else", "do"):
            start += 1
        elif token in CONDITIONS:
            start += 2 if code.token(start + 1) == "constexpr" else 1
            start = code.after(start)
        elif token == "case" or (token == "default" and code.token(start + 1) == ":"):
            while start < index and code.token(start) != ":":
                start += 1
            start += 1
        else:
            break
    return start


def is_declaration(prefix):
    """Whether the tokens are `type name =` or `auto [a, b] =`."""
    if not prefix or prefix[-1] != "=" or "=" in prefix[:-1]:
        return False
    declared = prefix[:-1]
    if declared and declared[-1] == "]":
        return "auto" in declared
    if len(declared) < 2 or not re.match(r"[A-Za-z_]", declared[-1]):
        return False
    if declared[-2] in (">", "*", "&", "&&"):
        return len(declared) > 2
    return bool(re.match(r"[A-Za-z_]", declared[-2]))


def place_fault(code, index):
    """Why the co_await at index stands where it must not, or None."""
    around = code.enclosing[index]
    if code.token(around) == "(" and code.token(around - 1) in CONDITIONS | {"constexpr"}:
        return f"co_await inside the condition of {code.token(around - 1)}"
    start = statement_start(code, index)
    prefix = code.tokens[start:index]
    if around < 0 or code.token(around) != "{" or not (prefix in ([], ["co_return"]) or is_declaration(prefix)):
        return "co_await inside a larger expression: give its result a name in a declaration of its own"
    return None


def operand_faults(code, index):
    """What is wrong in the awaited expression: (index, message)."""
    larger = index, "co_await inside a larger expression: give its result a name in a declaration of its own"
    around = code.enclosing[index]
    at = index + 1
    angle = 0
    while at < len(code.tokens):
        token = code.token(at)
        nested = code.enclosing[at] != around
        if not nested and token == ";":
            return
        if at == code.partner.get(around):
            yield larger
            return
        body = code.lambda_body(at) if token == "[" else None
        if body is not None:
            if captures_by_value(code.captures(at)):
                yield at, "a lambda that captures by value inside an awaited expression is destroyed twice: name it first"
            at = code.after(body)
            continue
        if token == "{":
            yield at, "a braced temporary inside an awaited expression is destroyed twice: name it first"
            at = code.after(at)
            continue
        if not nested:
            compared = token == "<" and code.token(at - 1) == ")"
            angle += (token == "<") - (token == ">")
            unary = at == index + 1 and token in ("*", "&")
            if compared or (angle <= 0 and not unary and re.fullmatch(r"[-+*/%^&|=?,]|&&|\|\||.=", token)):
                yield larger
                return
        at += 1


def own_tokens(code, body):
    """The tokens of a lambda's body without those of the lambdas in it."""
    at = body + 1
    while at < code.partner.get(body, len(code.tokens)):
        inner = code.lambda_body(at) if code.token(at) == "[" else None
        if inner is not None:
            at = code.after(inner)
            continue
        yield code.token(at)
        at += 1


def held_lock(code, index):
    """Whether a lock declared in a block around the co_await, up to the function's own, is still held there."""
    around = code.enclosing[index]
    end = index
    function = False
    while around >= 0 and not function:
        at = around + 1
        while at < end:
            if code.token(at) in LOCKS:
                return True
            at = code.after(at) if code.token(at) in OPENERS else at + 1
        function = code.token(around) == "{" and opens_function(code, around)
        end = around
        around = code.enclosing[around]
    return False


def opens_function(code, opening):
    before = opening - 1
    if code.token(before) != ")":
        return code.token(before) not in ("else", "do", "try", ";", "{", "}", ":")
    return code.token(code.partner.get(before, 0) - 1) not in CONDITIONS | {"constexpr", "catch"}


def check(_path, text):
    """Yields (line, message) for each break of the rule."""
    if not any(word in text for word in COROUTINE_WORDS):
        return
    code = Code(text)
    for index, token in enumerate(code.tokens):
        if token == "co_await":
            fault = place_fault(code, index)
            faults = [(index, fault)] if fault else list(operand_faults(code, index))
            for where, message in faults:
                yield code.lines[where], message
            if held_lock(code, index):
                yield code.lines[index], "a lock is held across this co_await"
        elif token == "[" and code.captures(index):
            body = code.lambda_body(index)
            if body is not None and COROUTINE_WORDS & set(own_tokens(code, body)):
                yield code.lines[index], "a capturing lambda is a coroutine: make it a function with parameters"
