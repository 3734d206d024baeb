"""Collects the faults of all files, each under a key that stays the same while its line does."""
import hashlib
import pickle
from concurrent.futures import ProcessPoolExecutor, as_completed

import reader


class Collection:
    def __init__(self):
        self.faults = []         # in the order of files and places
        self.declarations = {}   # place: Declaration
        self.asserts = {}        # file: [(start, end)]
        self.needed = set()
        self.left_out = 0

    def join(self, found):
        for path, part in found.items():
            self.faults += part["faults"]
            self.declarations.update(part["declarations"])
            self.asserts[path] = part["asserts"]
            self.needed |= part["needed"]
        used = set().union(*(part["used"] for part in found.values()))
        captured = set().union(*(part["captured"] for part in found.values()))
        self.needed |= captured & self.declarations.keys()
        self.spread()
        before = len(self.faults)
        # The value of a constant that only log lines name, or that the compiler needs, is no place for a fault.
        self.faults = [each for each in self.faults
                       if not each.owner or each.owner in used and each.owner not in self.needed]
        self.left_out = before - len(self.faults)
        self.name()

    def spread(self):
        """What a needed declaration uses is needed as well."""
        waiting = [place for place in self.needed if place in self.declarations]
        while waiting:
            for place in self.declarations[waiting.pop()].uses - self.needed:
                self.needed.add(place)
                if place in self.declarations:
                    waiting.append(place)

    def name(self):
        self.faults.sort(key=lambda each: (each.file, each.start, -each.end, each.kind, each.changed))
        seen = {}
        for each in self.faults:
            text = f"{each.file}\n{each.kind}\n{each.original}\n{each.changed}"
            seen[text] = seen.get(text, 0) + 1
            each.key = hashlib.sha256(f"{text}\n{seen[text]}".encode()).hexdigest()[:16]


read_before = set()  # by this process: a header is read with the first source that includes it


def read(root, command, wanted, elsewhere):
    readers, errors = reader.read_unit(root, command, wanted, read_before | elsewhere)
    read_before.update(readers)
    return {path: {"faults": list(each.make.faults.values()), "declarations": each.declarations, "asserts": each.asserts,
                   "needed": each.needed, "used": each.used, "captured": each.captured}
            for path, each in readers.items()}, errors


def digest(*parts):
    return hashlib.sha256(b"\0".join(parts)).hexdigest()[:24]


def collect(root, cache, commands, wanted, jobs, progress):
    """Reads every source with its compile command and returns the Collection. A source is read anew when the source, a
    header or the tool changes."""
    cache.mkdir(exist_ok=True)
    common = digest(*(path.read_bytes() for path in sorted(reader.own_files())),
                    *((root / path).read_bytes() for path in sorted(wanted) if path.endswith(".hpp")))
    kept = {cache / digest(common.encode(), command["command"].encode(), open(command["file"], "rb").read()): command
            for command in commands}
    for old in set(cache.iterdir()) - kept.keys():
        old.unlink()
    found, broken = {}, []
    for path in kept:
        if path.exists():
            found.update(pickle.loads(path.read_bytes()))
    elsewhere = set(found)
    pool = ProcessPoolExecutor(jobs)
    try:
        waiting = {pool.submit(read, root, command, wanted, elsewhere): path
                   for path, command in kept.items() if not path.exists()}
        for number, done in enumerate(as_completed(waiting), 1):
            parts, errors = done.result()
            broken += errors[:1]
            new = {path: part for path, part in parts.items() if path not in found}
            found.update(new)
            waiting[done].write_bytes(pickle.dumps(new))
            progress("Reading the sources", number, len(waiting))
    finally:
        pool.shutdown(cancel_futures=True)
    for error in broken[:5]:
        print(f"    clang: {error}")
    collection = Collection()
    collection.join(found)
    return collection
