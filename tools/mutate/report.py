"""What the trials say, and the list of the faults that people judged harmless."""
from collections import Counter

KINDS = {"statement": "removed statements", "condition": "negated conditions", "constant": "changed constants",
         "operator": "changed operators", "call": "changed calls and swapped arguments"}


class Harmless:
    """tools/mutate-harmless.txt: paragraphs of four lines, `file:`, `from:`, `to:` and `why:`. A fault is known by its
    file and its text, so an entry stays true while the line moves."""

    def __init__(self, path):
        self.path = path
        self.entries = {}
        text = path.read_text() if path.exists() else ""
        for number, paragraph in enumerate(text.split("\n\n"), 1):
            lines = [line for line in paragraph.splitlines() if line and not line.startswith("#")]
            fields = dict(line.split(": ", 1) for line in lines if ": " in line)
            if not lines:
                continue
            if set(fields) != {"file", "from", "to", "why"} or len(lines) != 4:
                raise SystemExit(f"{path}, paragraph {number}: it needs the lines file:, from:, to: and why:\n{paragraph}")
            self.entries[fields["file"], fields["from"], fields["to"]] = fields["why"]

    def holds(self, fault):
        return (fault.file, fault.original, fault.changed) in self.entries

    def stale(self, faults):
        known = {(each.file, each.original, each.changed) for each in faults}
        return [entry for entry in self.entries if entry not in known]


def share(part, whole):
    return f"{part} of {whole} ({100 * part / whole:.1f} of 100)" if whole else "none tried"


def figures(faults, results):
    tried = [each for each in faults if each.key in results]
    noticed = Counter(each.kind for each in tried if results[each.key]["verdict"] == "noticed")
    of_kind = Counter(each.kind for each in tried)
    lines = [f"Noticed: {share(noticed.total(), of_kind.total())}"]
    for kind, name in KINDS.items():
        lines.append(f"  {name}: {share(noticed[kind], of_kind[kind])}")
    how = Counter(results[each.key].get("how", results[each.key]["verdict"]) for each in tried)
    lines.append("  " + ", ".join(f"{name}: {count}" for name, count in sorted(how.items())))
    return lines


def survivors(faults, results):
    lines, last = [], None
    for each in faults:
        result = results.get(each.key)
        if result is None or result["verdict"] == "noticed":
            continue
        if each.file != last:
            lines += ["", each.file]
            last = each.file
        reach = "no test reaches this" if result["verdict"] == "not reached" else f"{result['tests']} tests pass"
        lines += [f"  line {each.line}, {each.kind}, {reach}", f"    from: {each.original}", f"    to: {each.changed}"]
    return lines
