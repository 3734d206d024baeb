"""Where a file's conditions are: after `if`, `while`, `do` and `for`, before `?`, and around && and ||."""
from clang.cindex import CursorKind as K


def extent(cursor):
    return cursor.extent.start.offset, cursor.extent.end.offset


def is_expression(cursor):
    return cursor.kind.is_expression()


class Conditions:
    """The part of FileReader that reads statements with a condition."""

    def condition(self, cursor):
        """Each part of a condition that && and || do not divide further."""
        start, end = extent(cursor)
        parts = [child for child in cursor.get_children() if is_expression(child)]
        if cursor.kind in (K.UNEXPOSED_EXPR, K.PAREN_EXPR) and len(parts) == 1:
            inner = extent(parts[0])
            if inner == (start, end) or cursor.kind == K.PAREN_EXPR:
                return self.condition(parts[0])
        signs = [t[0] for t in self.source.between(extent(parts[0])[1], extent(parts[1])[0])] if len(parts) == 2 else []
        if cursor.kind == K.BINARY_OPERATOR and signs in (["&&"], ["||"]):
            self.operator(cursor, start, end, is_condition=True)
            for part in parts:
                self.condition(part)
            return None
        self.make.condition(start, end)
        if cursor.kind in (K.BINARY_OPERATOR, K.CALL_EXPR, K.UNEXPOSED_EXPR):
            self.operator(cursor, start, end, is_condition=True)
            if cursor.kind == K.CALL_EXPR:
                self.refer(cursor, constant=False)
                self.call(cursor, start, end, operators=False)
            else:
                self.children(cursor)
        else:
            self.visit(cursor)
        return None

    def visit_conditional_operator(self, cursor, start, end):
        parts = list(cursor.get_children())
        self.condition(parts[0])
        for part in parts[1:]:
            self.visit(part)

    def visit_unary_operator(self, cursor, start, end):
        text = self.source.text[start:end]
        if text.startswith("!") and not text.startswith("!="):  # a != b can be !(a == b) to clang
            self.make.condition(start, end)
        elif text.startswith(("++", "--")) or text.endswith(("++", "--")):
            self.make.step(start, end)
        self.children(cursor)

    def head(self, start):
        """The brackets after `if` or `while`: the offsets inside them."""
        at = self.source.index(start)
        while self.source.tokens[at][0] != "(":
            at += 1
        return self.source.tokens[at].end(), self.source.tokens[self.source.closing(at)].start()

    def visit_if_stmt(self, cursor, start, end):
        opening, closing = self.head(start)
        words = [token[0] for token in self.source.between(start, opening)]
        parts = list(cursor.get_children())
        inside = [part for part in parts if extent(part)[0] < closing]
        constant = "constexpr" in words or "consteval" in words
        declared = [part for part in inside if part.kind in (K.VAR_DECL, K.DECL_STMT)]
        for part in inside[:-1] if not constant else inside:
            self.visit(part, constant=constant)
        if inside and not constant:
            last = inside[-1]
            holder = next((part for part in declared if extent(part)[0] <= extent(last)[0] < extent(part)[1]), None)
            if holder is None and is_expression(last):
                self.condition(last)
            elif holder is not None and self.source.before(extent(holder)[0]) == "(":
                variable = holder if holder.kind == K.VAR_DECL else next(holder.get_children())
                if last is holder:
                    self.visit(last)
                if variable.spelling:
                    self.make.declared_condition(extent(holder)[0], closing, variable.spelling)
        for part in parts:
            if extent(part)[0] >= closing:
                self.visit(part, statement=True)

    def visit_while_stmt(self, cursor, start, end):
        parts = list(cursor.get_children())
        for part in parts[:-1]:
            if is_expression(part) and parts[0].kind not in (K.VAR_DECL, K.DECL_STMT):
                self.condition(part)
            else:
                self.visit(part)
        self.visit(parts[-1], statement=True)

    def visit_do_stmt(self, cursor, start, end):
        body, condition = list(cursor.get_children())
        self.visit(body, statement=True)
        self.condition(condition)

    def visit_for_stmt(self, cursor, start, end):
        opening, closing = self.head(start)
        signs, at = [], self.source.index(opening)
        while self.source.tokens[at].start() < closing:
            token = self.source.tokens[at]
            if token[0] == ";":
                signs.append(token.start())
            at = self.source.closing(at) + 1 if token[0] in "([{" else at + 1
        for part in cursor.get_children():
            begin = extent(part)[0]
            if begin >= closing:
                self.visit(part, statement=True)
            elif begin < signs[0]:
                self.visit(part)
            elif begin < signs[1]:
                self.condition(part)

    def visit_cxx_for_range_stmt(self, cursor, start, end):
        opening, closing = self.head(start)
        for part in cursor.get_children():
            begin, until = extent(part)
            if begin >= closing:
                self.visit(part, statement=True)
            elif is_expression(part) and begin > opening:
                self.visit(part)
