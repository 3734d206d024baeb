"""Builds the tree with the faults, and leaves out the faults that the compiler refuses until it is content."""
import json
import re
import subprocess

from tree import mirror, plant

ERROR = re.compile(r"^(?P<file>/[^:\n]+):(?P<line>\d+):(?P<column>\d+): (?:fatal )?error: (?P<text>.*)$", re.MULTILINE)
ABOUT_CONSTANTS = re.compile(r"constant|constexpr|captured|not usable|non-type|incomplete")
STEP = re.compile(r"\[(\d+)/(\d+)\]")


class Builder:
    def __init__(self, root, folder, header, jobs, progress):
        self.root, self.jobs, self.progress = root, jobs, progress
        self.reading, self.tree, self.build = folder / "reading", folder / "tree", folder / "build"
        self.kept, self.log = folder / "refused.json", folder / "build.log"
        self.header = header
        self.dropped = set()
        self.rounds = {}

    def configure(self, source, build, flags=""):
        configured = subprocess.run(
            ["cmake", "-S", source, "-B", build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O0",
             "-DCMAKE_OBJCXX_FLAGS_DEBUG=-O0", f"-DCMAKE_CXX_FLAGS={flags}", "-DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON",
             "-DKIVO_WERROR=OFF", "-DKIVO_BENCHMARKS=OFF"], capture_output=True, text=True)
        if configured.returncode != 0:
            raise SystemExit(f"CMake could not configure the mutate build.\n{configured.stdout}{configured.stderr}")

    def commands(self):
        """The compile commands of the repository's own files, for reading them."""
        self.configure(self.root, self.reading)
        return json.loads((self.reading / "compile_commands.json").read_text())

    def make(self):
        """Runs the build as far as it goes. Returns its output if something failed."""
        with open(self.log, "w") as log:
            return self.follow(log)

    def follow(self, log):
        run = subprocess.Popen(["cmake", "--build", self.build, "-j", str(self.jobs), "--target", "tests/all", "--", "-k", "0"],
                               stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        output = []
        try:
            for line in run.stdout:
                output.append(line)
                log.write(line)
                if step := STEP.match(line):
                    self.progress("Building", int(step[1]), int(step[2]))
        except BaseException:
            run.terminate()
            raise
        return None if run.wait() == 0 else "".join(output)

    def run(self, collection, numbers):
        """Returns the numbers of the faults that are in the build."""
        self.collection, self.numbers = collection, numbers
        self.by_number = {numbers[each.key]: each for each in collection.faults if each.key in numbers}
        self.needed = set(collection.needed)
        self.restore()
        for _ in range(40):
            mirror(self.root, self.tree, leave=plant(self.root, self.tree, collection, numbers, self.dropped, self.needed))
            if not (self.build / "build.ninja").exists():
                self.configure(self.tree, self.build, f"-w -include {self.header}")
            output = self.make()
            self.kept.write_text(json.dumps({"faults": sorted(self.dropped), "needed": sorted(self.needed)}))
            if output is None:
                return {key: number for key, number in numbers.items() if key not in self.dropped}
            before = len(self.dropped), len(self.needed)
            units = re.split(r"^FAILED: ", output, flags=re.MULTILINE)[1:]
            errors = {tuple(each[part] for part in ("file", "line", "column", "text")): unit
                      for unit in units for each in ERROR.finditer(unit)}
            for _ in range(5):
                for place in {each[:2] for each in errors}:
                    self.rounds[place] = self.rounds.get(place, 0) + 1
                for each, unit in errors.items():
                    self.refuse(*each, unit)
                if (len(self.dropped), len(self.needed)) != before:
                    break
            print(f"    {len(errors)} errors: {len(self.dropped) - before[0]} more faults do not compile", flush=True)
            if (len(self.dropped), len(self.needed)) == before:
                raise SystemExit(f"The build fails, and not because of a fault:\n{output[-4000:]}")
        raise SystemExit("The build still fails after 40 rounds of leaving faults out.")

    def restore(self):
        if self.kept.exists():
            kept = json.loads(self.kept.read_text())
            known = {each.key for each in self.collection.faults}
            self.dropped = set(kept["faults"]) & known
            self.needed |= set(kept["needed"]) & self.collection.declarations.keys()
            self.settle()

    def settle(self):
        """What a needed constant uses is needed, and none of them has faults in its value."""
        self.collection.needed = self.needed
        self.collection.spread()
        self.dropped |= {each.key for each in self.collection.faults if each.owner in self.needed}

    def refuse(self, file, line, column, text, unit):
        """Leaves out what is nearest to an error: in the first round one fault, then those of the line, then the constants
        that the message names, at last all of the files that the compiler mentions."""
        again, line, column = self.rounds[file, line], int(line), int(column)
        inside = file.startswith(str(self.tree) + "/")
        if ABOUT_CONSTANTS.search(text) or again > 1:
            words = set(re.findall(r"\w+", text))
            self.needed |= {place for place, each in self.collection.declarations.items()
                            if each.name in words or again > 1 and (str(self.tree / each.file), each.line) == (file, line)}
            self.settle()
        if inside:
            self.dropped |= self.nearest(file, line, column, whole=again > 1)
        elif again < 3:
            for mentioned, at, place in re.findall(rf"^({re.escape(str(self.tree))}[^:\n]+):(\d+):(\d+)", unit, re.MULTILINE):
                self.dropped |= self.nearest(mentioned, int(at), int(place), whole=again > 1)
        if again > 3:
            involved = {file} | set(re.findall(rf"({re.escape(str(self.tree))}[^:\n]+):\d+", unit))
            self.needed |= {place for place, each in self.collection.declarations.items()
                            if str(self.tree / each.file) in involved}
            self.dropped |= {each.key for each in self.collection.faults if str(self.tree / each.file) in involved}
            self.settle()

    def nearest(self, file, number, column, whole):
        text = open(file, encoding="latin-1").read().split("\n")[number - 1]
        seen = [(match.start(), int(match[1])) for match in re.finditer(r"mutation::on(?:AtRunTime)?\((\d+)\)", text)]
        by_number = self.by_number
        if seen and not whole:
            left = [each for each in seen if each[0] <= column + 20]
            return {by_number[(left or seen)[-1 if left else 0][1]].key}
        if seen:
            return {by_number[each[1]].key for each in seen}
        relative = file[len(str(self.tree)) + 1:]
        around = [each for each in by_number.values() if each.file == relative and each.line <= number and
                  each.line + each.original.count(" ") >= number]
        return {each.key for each in sorted(around, key=lambda each: number - each.line)[:1]}
