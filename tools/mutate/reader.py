"""Reads C++ with clang and finds the places for faults, and the constants that the compiler itself needs."""
import re
import shlex
from pathlib import Path

from clang.cindex import Config, CursorKind as K, Index, TypeKind

from conditions import Conditions, extent, is_expression
from faults import LOG, Maker, SYMMETRIC
from source import Source

STATEMENT_EXPRESSIONS = (K.CALL_EXPR, K.BINARY_OPERATOR, K.COMPOUND_ASSIGNMENT_OPERATOR, K.UNARY_OPERATOR,
                         K.CXX_THROW_EXPR, K.CXX_DELETE_EXPR, K.UNEXPOSED_EXPR)
FUNCTIONS = (K.FUNCTION_DECL, K.CXX_METHOD, K.CONSTRUCTOR, K.DESTRUCTOR, K.FUNCTION_TEMPLATE, K.CONVERSION_FUNCTION)
ARITHMETIC = set(range(TypeKind.BOOL.value, TypeKind.LONGDOUBLE.value + 1))


class Declaration:
    """A constexpr variable or function: the compiler may need it, or it may be made to take its value at run time."""

    def __init__(self, file, line, start, is_variable, where, name):
        self.file, self.start, self.is_variable, self.where, self.name = file, start, is_variable, where, name
        self.line = line
        self.uses = set()


class FileReader(Conditions):
    """Walks what clang made of one file. The rule for constants: whatever a constant expression reaches stays constexpr,
    and has no faults in its value; everything else becomes const or inline, so that its value can change."""

    def __init__(self, root, path):
        self.root = root
        self.source = Source(root, path)
        self.make = Maker(self.source)
        self.declarations = {}
        self.needed = set()      # what constant expressions name
        self.captured = set()    # local names that a lambda reads; a constant needs no capture
        self.used = set()        # what anything but a log line names
        self.asserts = []
        self.owner = None        # the constexpr declaration around the cursor
        self.lambdas = []

    # Where names lead

    def place(self, cursor):
        at = cursor.location
        if at.file is None or not at.file.name.startswith(str(self.root)):
            return None
        return f"{at.file.name[len(str(self.root)) + 1:]}:{at.offset}"

    def refer(self, cursor, constant):
        target = cursor.referenced
        place = self.place(target) if target is not None else None
        if place is None:
            return
        self.used.add(place)
        local = target.kind == K.VAR_DECL and target.semantic_parent.kind in FUNCTIONS
        captured = local and any(target.location.offset < start for start in self.lambdas[-1:])
        if constant:
            self.needed.add(place)
        elif captured:
            self.captured.add(place)
        elif self.owner:
            self.owner.uses.add(place)

    # The walk

    def children(self, cursor, constant=False, statements=False):
        for child in cursor.get_children():
            self.visit(child, constant, statements)

    def visit(self, cursor, constant=False, statement=False):
        kind = cursor.kind
        start, end = extent(cursor)
        if kind == K.STATIC_ASSERT:
            self.asserts.append((start, end))
            return
        if kind in (K.DECL_REF_EXPR, K.MEMBER_REF_EXPR, K.CALL_EXPR):
            self.refer(cursor, constant)
        if constant or kind.is_attribute() or kind in (K.TYPE_REF, K.TEMPLATE_REF):
            self.children(cursor, constant=True)
            return
        if kind == K.CALL_EXPR and LOG.match(self.source.text, start):
            return
        if statement and kind in STATEMENT_EXPRESSIONS and end > start:
            inner = cursor
            while inner.kind == K.UNEXPOSED_EXPR and len(list(inner.get_children())) == 1:
                inner = next(inner.get_children())
            if LOG.match(self.source.text, start):
                return
            if inner.kind in STATEMENT_EXPRESSIONS:
                self.make.statement(start, end)
        handler = getattr(self, "visit_" + kind.name.lower(), None)
        if handler:
            handler(cursor, start, end)
        elif kind in FUNCTIONS:
            self.function(cursor, start)
        elif kind in (K.BINARY_OPERATOR, K.COMPOUND_ASSIGNMENT_OPERATOR, K.UNEXPOSED_EXPR):
            self.operator(cursor, start, end, is_condition=False)
            self.children(cursor)
        else:
            self.children(cursor)

    def visit_compound_stmt(self, cursor, start, end):
        if self.source.text[start] == "{":  # a defaulted function has a body that nobody wrote
            self.children(cursor, statements=True)

    def visit_break_stmt(self, cursor, start, end):
        self.make.jump(start)

    visit_continue_stmt = visit_break_stmt

    def visit_return_stmt(self, cursor, start, end):
        if not list(cursor.get_children()):
            self.make.jump(start)
        self.children(cursor)

    def visit_case_stmt(self, cursor, start, end):
        parts = list(cursor.get_children())
        for part in parts[:-1]:
            self.visit(part, constant=True)
        self.visit(parts[-1], statement=True)

    def visit_default_stmt(self, cursor, start, end):
        self.children(cursor, statements=True)

    def visit_enum_constant_decl(self, cursor, start, end):
        self.children(cursor, constant=True)

    def visit_lambda_expr(self, cursor, start, end):
        self.lambdas.append(start)
        owner, self.owner = self.owner, self.owner
        self.children(cursor)
        self.owner = owner
        self.lambdas.pop()

    def function(self, cursor, start):
        declaration = self.declare(cursor, is_variable=False)
        before = self.owner, self.make.in_function, self.lambdas
        if declaration:
            self.owner, self.make.in_function = declaration, self.place(cursor)
        self.lambdas = []
        for child in cursor.get_children():
            if child.kind in (K.PARM_DECL, K.COMPOUND_STMT) or cursor.kind == K.CONSTRUCTOR:
                self.visit(child)
            else:
                self.visit(child, constant=True)
        self.owner, self.make.in_function, self.lambdas = before

    def declare(self, cursor, is_variable):
        """Notes a declaration that starts with constexpr, perhaps behind other words."""
        start = extent(cursor)[0]
        for token in self.source.between(start, cursor.location.offset):
            if token[0] == "constexpr":
                scope = "class" if cursor.semantic_parent.kind in (K.CLASS_DECL, K.STRUCT_DECL, K.CLASS_TEMPLATE) else (
                    "local" if cursor.semantic_parent.kind in FUNCTIONS else "namespace")
                made = Declaration(self.source.path, self.source.line(token.start()), token.start(), is_variable, scope, cursor.spelling)
                place = self.place(cursor)
                self.declarations[place] = made
                if cursor.kind == K.FUNCTION_TEMPLATE or scope == "class" and not is_variable and \
                        cursor.kind == K.CONSTRUCTOR:
                    self.needed.add(place)
                return made
            if token[0] in ("=", "{"):
                break
        return None

    def visit_var_decl(self, cursor, start, end):
        declaration = self.declare(cursor, is_variable=True)
        before = self.owner, self.make.owner
        if declaration:
            self.owner = declaration
        if declaration or cursor.type.is_const_qualified():
            self.make.owner = self.place(cursor) or ""
        name = cursor.location.offset
        array = cursor.type.get_canonical().kind == TypeKind.CONSTANTARRAY
        for child in cursor.get_children():
            at, until = extent(child)
            bound = array and self.source.text[until:].lstrip()[:1] == "]"
            if array and child.kind == K.STRING_LITERAL:
                continue
            if at >= name and not bound and child.kind == K.CALL_EXPR and at == name:
                self.call(child, *extent(child))
            else:
                self.visit(child, constant=at < name or bound)
        self.owner, self.make.owner = before

    def visit_field_decl(self, cursor, start, end):
        before, self.make.is_default = self.make.is_default, True
        self.declared(cursor)
        self.make.is_default = before

    visit_parm_decl = visit_field_decl

    def declared(self, cursor):
        name = cursor.location.offset
        for child in cursor.get_children():
            self.visit(child, constant=cursor.is_bitfield() or extent(child)[0] < name)

    # Constants

    def visit_integer_literal(self, cursor, start, end):
        self.make.number(start)

    visit_floating_literal = visit_integer_literal

    def visit_cxx_bool_literal_expr(self, cursor, start, end):
        self.make.boolean(start)

    def visit_character_literal(self, cursor, start, end):
        self.make.character(start)

    def visit_string_literal(self, cursor, start, end):
        self.make.text(start)

    def visit_decl_ref_expr(self, cursor, start, end):
        target = cursor.referenced
        if target is not None and target.kind == K.ENUM_CONSTANT_DECL and self.place(target):
            siblings = [each.spelling for each in target.semantic_parent.get_children()
                        if each.kind == K.ENUM_CONSTANT_DECL]
            at = siblings.index(target.spelling)
            other = siblings[at + 1] if at + 1 < len(siblings) else siblings[at - 1] if at else None
            self.make.enumerator(start, end, target.spelling, other)
        self.children(cursor, constant=True)

    def visit_member_ref_expr(self, cursor, start, end):
        for child in cursor.get_children():
            self.visit(child, constant=extent(child)[0] >= cursor.location.offset)

    # Operators and calls

    def operator(self, cursor, start, end, is_condition):
        parts = [part for part in cursor.get_children() if is_expression(part)]
        left = next((part for part in parts if extent(part)[0] == start and extent(part)[1] < end), None)
        right = next((part for part in parts if extent(part)[1] == end and extent(part)[0] > start), None)
        if left is None or right is None:
            return
        spelled = cursor.type.get_canonical().spelling
        is_number = cursor.type.get_canonical().kind.value in ARITHMETIC or "duration" in spelled or \
            "time_point" in spelled or cursor.type.kind == TypeKind.POINTER
        self.make.operator(start, end, extent(left)[1], extent(right)[0], is_condition, is_number)

    def visit_call_expr(self, cursor, start, end):
        self.call(cursor, start, end)

    def call(self, cursor, start, end, operators=True):
        if operators:
            self.operator(cursor, start, end, is_condition=False)
        name = cursor.spelling
        arguments = [argument for argument in cursor.get_arguments() if argument is not None]
        places = [extent(argument) for argument in arguments]
        if name not in SYMMETRIC and not re.match(r"operator\W", name):
            kinds = [self.argument_type(argument) for argument in arguments]
            for i in range(len(arguments) - 1):
                if kinds[i] and kinds[i] == kinds[i + 1] and start <= places[i][0] < places[i][1] <= places[i + 1][0]:
                    self.make.swapped(places[i], places[i + 1])
        callee = next(iter(cursor.get_children()), None)
        if callee is not None and name:
            while callee.kind == K.UNEXPOSED_EXPR and callee.location.offset == extent(callee)[0] and \
                    next(iter(callee.get_children()), None) is not None:
                callee = next(iter(callee.get_children()))
            at = callee.location.offset
            searches = name.startswith(("find", "rfind")) and "basic_string" not in self.holder(callee)
            if not searches and self.source.text.startswith(name, at) and self.source.text[end - 1:end] == ")":
                self.make.other_call(start, end, name, at)
        self.children(cursor)

    @staticmethod
    def holder(callee):
        """The type of the object that a member function is called of."""
        return next((child.type.get_canonical().spelling for child in callee.get_children()), "")

    @staticmethod
    def argument_type(argument):
        kind = argument.type.get_canonical()
        if kind.kind in (TypeKind.INVALID, TypeKind.DEPENDENT, TypeKind.UNEXPOSED, TypeKind.OVERLOAD, TypeKind.NULLPTR):
            return None
        spelled = kind.spelling.replace("const ", "")
        if "lambda" in spelled or "dependent" in spelled:
            return None
        return "text" if re.fullmatch(r"char ?\[\d+\]", spelled) else spelled


def read_unit(root, command, wanted, done):
    """Reads one compile command. Returns a FileReader for each file of `wanted` that is not `done`."""
    arguments = [part for part in shlex.split(command["command"])[1:] if not part.endswith("ccache")]
    skip = {at for at, part in enumerate(arguments) if part in ("-o", "-c") or arguments[at - 1] == "-o"}
    kept = [part for at, part in enumerate(arguments) if at not in skip and part != command["file"]]
    kept = [part for part in kept if not part.startswith(("-W", "/usr/bin/c++", "/usr/bin/g++"))]
    unit = Index.create().parse(command["file"], args=[*kept, "-w", "-resource-dir", resources()])
    errors = [str(found) for found in unit.diagnostics if found.severity >= 3]
    readers = {}
    prefix = str(root) + "/"
    for cursor in unit.cursor.get_children():
        file = cursor.location.file
        if file is None or not file.name.startswith(prefix):
            continue
        path = file.name[len(prefix):]
        if path in wanted and path not in done:
            readers.setdefault(path, None)
            if readers[path] is None:
                readers[path] = FileReader(root, path)
            readers[path].visit(cursor)
    return readers, errors


def own_files():
    """What the faults depend on besides the sources."""
    return [Path(__file__).with_name(name + ".py") for name in ("conditions", "faults", "reader", "source")]


def resources():
    return "/usr/lib/llvm-19/lib/clang/19"


Config.set_library_file("/usr/lib/llvm-19/lib/libclang-19.so.1")
