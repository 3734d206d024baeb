"""Runs tests with a fault switched on."""
import json
import os
import re
import shutil
import signal
import subprocess
import threading
import time
from concurrent.futures import ThreadPoolExecutor, as_completed
from pathlib import Path

ALONE, BATCH = 4, 40
LIMITS = ["prlimit", "--fsize=268435456", "--data=8589934592", "--core=0", "--nproc=8192", "--"]


class Trials:
    def __init__(self, folder, build, jobs, progress):
        self.folder, self.build, self.jobs, self.progress = folder, build, jobs, progress
        self.baseline = folder / "baseline.json"
        self.tests = {}       # (program, name): {"seconds", "reached", "environment", "folder"}
        self.notices = {}     # (file, test): how often the test noticed a fault of the file
        self.joined = set()   # programs whose tests may run in one process
        self.lock = threading.Lock()
        self.stopping = False

    # Running

    def run(self, tests, number=None, reached=None, limit=600.0):
        """Runs tests of one program in a process group of its own. Returns how that ended, the seconds, and the test that
        was the last to begin."""
        known = self.tests[tests[0]]
        worker = self.folder / "scratch" / str(threading.get_ident())
        for part in ("home", "tmp", "run"):
            (worker / part).mkdir(parents=True, exist_ok=True, mode=0o700)
        environment = {**os.environ, **known["environment"], "HOME": str(worker / "home"),
                       "TMPDIR": str(worker / "tmp"), "XDG_RUNTIME_DIR": str(worker / "run")}
        for variable in ("XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "DISPLAY", "KIVO_MUTATION"):
            environment.pop(variable, None)
        if number is not None:
            environment["KIVO_MUTATION"] = str(number)
        if reached is not None:
            environment["KIVO_MUTATION_REACHED"] = str(reached)
        names = ["--gtest_fail_fast", f"--gtest_filter={':'.join(name for _, name in tests)}"] if known["filter"] else []
        started = time.monotonic()
        process = subprocess.Popen([*LIMITS, *known["command"], *names], cwd=known["folder"], env=environment,
                                   stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                   start_new_session=True)
        output = []
        reading = threading.Thread(target=lambda: output.append(read_end(process.stdout)), daemon=True)
        reading.start()
        try:
            process.wait(limit)
            how = "passed" if process.returncode == 0 else "failed" if process.returncode == 1 else "crashed"
        except subprocess.TimeoutExpired:
            how = "endless"
        kill_group(process.pid)
        process.wait()
        reading.join(5)
        said = output[0].decode(errors="replace") if output else ""
        if how == "passed" and known["filter"] and not re.search(r"^\[  PASSED  \] [1-9]", said, re.MULTILINE):
            how = "skipped" if "SKIPPED" in said else "crashed"
        begun = re.findall(r"^\[ RUN      \] (\S+)", said, re.MULTILINE)
        shutil.rmtree(worker, ignore_errors=True)
        return how, time.monotonic() - started, (tests[0][0], begun[-1]) if begun else tests[0]

    # What the tests reach without a fault

    def discover(self):
        listed = subprocess.run(["ctest", "--test-dir", self.build, "--show-only=json-v1"], check=True, capture_output=True)
        for each in json.loads(listed.stdout)["tests"]:
            properties = {entry["name"]: entry["value"] for entry in each.get("properties", [])}
            program = next(iter(each.get("command", [])), "")
            if not program.startswith(str(self.build)):
                continue  # a script
            known = {"environment": dict(entry.split("=", 1) for entry in properties.get("ENVIRONMENT", [])),
                     "folder": properties.get("WORKING_DIRECTORY", str(self.build)), "command": each["command"],
                     "filter": False}
            if b"--gtest_list_tests" not in open(program, "rb").read():
                self.tests[program, each["name"]] = known
                continue
            for name in self.names(program):
                self.tests.setdefault((program, name), {**known, "command": [program], "filter": True})

    listings = {}

    def names(self, program):
        if program not in self.listings:
            listed = subprocess.run([program, "--gtest_list_tests"], capture_output=True, text=True).stdout
            suite, names = "", []
            for line in listed.splitlines():
                line = line.split("#")[0].rstrip()
                if re.match(r"\S+\.$", line):
                    suite = line
                elif line.startswith("  ") and "DISABLED_" not in suite + line:
                    names.append(suite + line.strip())
            self.listings[program] = names
        return self.listings[program]

    def measure(self, state, size):
        """Runs every test once without a fault; only the tests that pass are used."""
        self.discover()
        kept = json.loads(self.baseline.read_text()) if self.baseline.exists() else {}
        if kept.get("state") != state:
            kept = {"state": state, "tests": {}}
        waiting = [test for test in self.tests if " ".join(test) not in kept["tests"]]
        pool = ThreadPoolExecutor(self.jobs)
        try:
            runs = {pool.submit(self.reach, test, size): test for test in waiting}
            for number, done in enumerate(as_completed(runs), 1):
                kept["tests"][" ".join(runs[done])] = done.result()
                self.progress("Running each test without a fault", number, len(runs))
                if number % 50 == 0 or number == len(runs):
                    self.baseline.write_text(json.dumps(kept))
        finally:
            pool.shutdown(cancel_futures=True)
        left_out = []
        for test in list(self.tests):
            measured = kept["tests"][" ".join(test)]
            if measured["how"] != "passed":
                left_out.append(f"{test[1]} ({measured['how']})")
                del self.tests[test]
            else:
                self.tests[test].update(seconds=measured["seconds"], reached=set(measured["reached"]))
        self.join()
        return left_out

    def reach(self, test, size):
        path = self.folder / f"reached-{threading.get_ident()}"
        with open(path, "wb") as file:
            file.truncate(size)
        how, seconds, _ = self.run([test], reached=path)
        if how == "failed":  # perhaps only slow on a busy machine
            how, seconds, _ = self.run([test], reached=path)
        found = [match.start() for match in re.finditer(b"\x01", path.read_bytes())]
        path.unlink()
        return {"how": how, "seconds": round(seconds, 3), "reached": found}

    def join(self):
        """Finds the programs whose tests pass in one process, too."""
        programs = {}
        for test, known in self.tests.items():
            if known["filter"]:
                programs.setdefault(test[0], []).append(test)
        with ThreadPoolExecutor(self.jobs) as pool:
            for program, how in zip(programs, pool.map(lambda tests: self.run(tests)[0], programs.values())):
                if how == "passed":
                    self.joined.add(program)
                else:
                    print(f"    {Path(program).name}: its tests pass only in processes of their own")

    # A fault

    def candidates(self, fault, number):
        """The tests that reach a fault. First those that noticed others in its file, then those that reach the least."""
        reaching = [test for test, known in self.tests.items() if number in known["reached"]]
        def rank(test):
            known = self.tests[test]
            return (-self.notices.get((fault.file, test), 0), len(known["reached"]) * (0.2 + known["seconds"]))
        return sorted(reaching, key=rank)

    def batches(self, tests):
        """The first few tests one by one; the others in processes of many where that is possible."""
        yield from ([test] for test in tests[:ALONE])
        for program in {program: None for program, _ in tests[ALONE:]}:
            rest = [test for test in tests[ALONE:] if test[0] == program]
            size = BATCH if program in self.joined else 1
            yield from (rest[at:at + size] for at in range(0, len(rest), size))

    def attempt(self, fault, number):
        """Returns what noticed the fault."""
        tests = self.candidates(fault, number)
        if not tests:
            return {"key": fault.key, "verdict": "not reached"}
        for batch in self.batches(tests):
            if self.stopping:
                return None
            usual = sum(self.tests[test]["seconds"] for test in batch)
            how, _, last = self.run(batch, number, limit=10 + (10 if len(batch) == 1 else 3) * usual)
            if how in ("passed", "skipped"):
                continue
            # What fails among others must fail alone, and only with the fault.
            for test in [last] + [test for test in batch if test != last]:
                if self.stopping:
                    return None
                if len(batch) > 1:
                    how, _, _ = self.run([test], number, limit=10 + 10 * self.tests[test]["seconds"])
                if how not in ("passed", "skipped") and self.run([test])[0] == "passed":
                    with self.lock:
                        self.notices[fault.file, test] = self.notices.get((fault.file, test), 0) + 1
                    return {"key": fault.key, "verdict": "noticed", "how": how, "by": test[1]}
        return {"key": fault.key, "verdict": "survived", "tests": len(tests)}

    def all(self, faults, numbers, heard):
        """Tries the faults and tells `heard` of each result as soon as there is one."""
        pool = ThreadPoolExecutor(self.jobs)
        runs = [pool.submit(self.attempt, fault, numbers[fault.key]) for fault in faults]
        try:
            for done in as_completed(runs):
                if result := done.result():
                    heard(result)
        finally:
            self.stopping = True
            pool.shutdown(cancel_futures=True)


def kill_group(leader):
    try:
        os.killpg(leader, signal.SIGKILL)
    except ProcessLookupError:
        pass


def read_end(pipe, most=1 << 16):
    """The last bytes of what a process prints, however much that is."""
    last = b""
    while part := pipe.read(1 << 16):
        last = (last + part)[-most:]
    return last
