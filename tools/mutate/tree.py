"""A copy of the repository in which every fault is compiled in, switched off."""
import json
import re
import subprocess

ON, AT_RUN_TIME = "::kivo::mutation::on({})", "::kivo::mutation::onAtRunTime({})"
BLOCK = 8192  # numbers a file


def tracked(root):
    listed = subprocess.run(["git", "ls-files", "-coz", "--exclude-standard"], cwd=root, check=True, capture_output=True)
    return [path for path in listed.stdout.decode().split("\0") if path and (root / path).is_file()]


def write(path, content):
    """Leaves an unchanged file alone, so that it is not compiled again."""
    if path.exists() and path.read_bytes() == content:
        return
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(content)


def mirror(root, tree, leave=()):
    """Copies the repository as it lies, but for the files to `leave`."""
    names = tracked(root)
    for name in names:
        if name not in leave:
            write(tree / name, (root / name).read_bytes())
            (tree / name).chmod((root / name).stat().st_mode & 0o777)
    known = set(names)
    for path in [each for each in tree.rglob("*") if each.is_file() or each.is_symlink()]:
        if str(path.relative_to(tree)) not in known:
            path.unlink()


def number(faults, kept):
    """Gives each file a block of numbers that it keeps, so that a change in one file leaves the others compiled."""
    blocks = json.loads(kept.read_text()) if kept.exists() else {}
    for file in sorted({each.file for each in faults}):
        if file not in blocks:
            blocks[file] = len(blocks) + 1
    kept.write_text(json.dumps(blocks, indent=0))
    numbers, counts = {}, {}
    for each in faults:
        counts[each.file] = counts.get(each.file, -1) + 1
        if counts[each.file] < BLOCK:
            numbers[each.key] = blocks[each.file] * BLOCK + counts[each.file]
    return numbers


class Edit:
    def __init__(self, start, end, way, text, number=0, on=ON):
        self.start, self.end, self.way, self.text, self.number, self.on = start, end, way, text, number, on
        self.children = []

    def render(self, source):
        parts, at = [], self.start
        for child in self.children:
            parts += [source[at:child.start], child.render(source)]
            at = child.end
        inner = "".join(parts) + source[at:self.end]
        on = self.on.format(self.number)
        match self.way:
            case "file":
                return inner
            case "negate":
                return f"({on} != static_cast<bool>({inner}))"
            case "declared":
                return f"; {on} != static_cast<bool>({self.text})"
            case "drop":
                return f"({on} ? void() : static_cast<void>({inner}))"
            case "jump":
                return f"{{ if (!{on}) {inner} }}"
            case "either":
                return f"({on} ? ({self.text}) : ({inner}))"
            case "replace":
                return self.text + "\n" * inner.count("\n")
        raise ValueError(self.way)


def instrument(source, edits):
    """`source` with all edits. Edits that cross each other are left out; a statement goes around its parts."""
    order = {"replace": 0, "jump": 1, "drop": 2, "negate": 3, "either": 4, "declared": 5}
    whole = Edit(0, len(source), "file", "")
    open_edits = [whole]
    for edit in sorted(edits, key=lambda each: (each.start, -each.end, order[each.way], each.number)):
        while edit.start >= open_edits[-1].end:
            open_edits.pop()
        if edit.end > open_edits[-1].end or open_edits[-1].way == "replace":
            continue
        open_edits[-1].children.append(edit)
        open_edits.append(edit)
        if edit.start == edit.end:
            open_edits.pop()
    return whole.render(source)


def constant_edits(source, declarations, needed, path):
    """What is not needed by the compiler is not constexpr in the copy, so that its value may change."""
    edits = []
    for place, each in declarations.items():
        if each.file != path or place in needed:
            continue
        line = source[source.rfind("\n", 0, each.start) + 1:each.start]
        inline = re.search(r"\binline\b", line)
        if each.is_variable:
            text = "inline const" if each.where == "class" and not inline else "const"
        else:
            text = "" if inline else "inline"
        end = each.start + len("constexpr")
        if text.endswith("const") and re.match(r"\s+const\b", source[end:]):
            text = text[:-5]
        edits.append(Edit(each.start, end, "replace", text))
    return edits


def plant(root, tree, collection, numbers, dropped, needed):
    """Writes the files with their faults into the tree; returns their names."""
    files = {}
    for fault in collection.faults:
        if fault.key not in dropped and fault.key in numbers:
            on = ON if fault.is_default or fault.in_function in needed else AT_RUN_TIME
            files.setdefault(fault.file, []).extend(
                Edit(start, end, way, text, numbers[fault.key], on) for start, end, way, text in fault.edits)
    for path in set(files) | {each.file for each in collection.declarations.values()}:
        source = (root / path).read_bytes().decode("latin-1")
        edits = files.get(path, []) + constant_edits(source, collection.declarations, needed, path)
        for start, end in collection.asserts.get(path, []):
            edits.append(Edit(start, source.index(";", end) + 1, "replace", ""))
        write(tree / path, instrument(source, edits).encode("latin-1"))
    return set(files) | {each.file for each in collection.declarations.values()}
