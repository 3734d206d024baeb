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

LIMITS = ["prlimit", "--fsize=268435456", "--data=8589934592", "--core=0", "--nproc=8192", "--"]


class Trials:
    def __init__(self, folder, build, jobs, progress):
        self.folder, self.build, self.jobs, self.progress = folder, build, jobs, progress
        self.baseline = folder / "baseline.json"
        self.tests = {}       # (program, name): {"seconds", "reached", "environment", "folder"}
        self.notices = {}     # (file, test): how often the test noticed a fault of the file
        self.lock = threading.Lock()
        self.stopping = False

    # One test

    def run(self, test, number=None, reached=None, limit=600.0):
        """Runs one test in a process group of its own. Returns how it ended, and the seconds."""
        program, name = test
        worker = self.folder / "scratch" / str(threading.get_ident())
        for part in ("home", "tmp", "run"):
            (worker / part).mkdir(parents=True, exist_ok=True, mode=0o700)
        environment = {**os.environ, **self.tests[test]["environment"], "HOME": str(worker / "home"),
                       "TMPDIR": str(worker / "tmp"), "XDG_RUNTIME_DIR": str(worker / "run")}
        for variable in ("XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "DISPLAY", "KIVO_MUTATION"):
            environment.pop(variable, None)
        if number is not None:
            environment["KIVO_MUTATION"] = str(number)
        if reached is not None:
            environment["KIVO_MUTATION_REACHED"] = str(reached)
        started = time.monotonic()
        process = subprocess.Popen([*LIMITS, program, f"--gtest_filter={name}"], cwd=self.tests[test]["folder"],
                                   env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                   stderr=subprocess.DEVNULL, start_new_session=True)
        output = []
        reading = threading.Thread(target=lambda: output.append(read_end(process.stdout)), daemon=True)
        reading.start()
        try:
            process.wait(limit)
            how = "passed" if process.returncode == 0 else "failed" if process.returncode == 1 else "crashed"
        except subprocess.TimeoutExpired:
            how = "endless"
        for_group(process.pid)
        process.wait()
        reading.join(5)
        if how == "passed" and output and b"[  PASSED  ] 1 test" not in output[0]:
            how = "skipped" if b"SKIPPED" in output[0] else "crashed"
        shutil.rmtree(worker, ignore_errors=True)
        return how, time.monotonic() - started

    # What the tests reach without a fault

    def discover(self):
        listed = subprocess.run(["ctest", "--test-dir", self.build, "--show-only=json-v1"], check=True, capture_output=True)
        for each in json.loads(listed.stdout)["tests"]:
            properties = {entry["name"]: entry["value"] for entry in each.get("properties", [])}
            environment = dict(entry.split("=", 1) for entry in properties.get("ENVIRONMENT", []))
            program = next((part for part in each.get("command", []) if part.startswith(str(self.build))), None)
            if program is None or b"--gtest_list_tests" not in open(program, "rb").read():
                continue
            for name in self.names(program):
                self.tests.setdefault((program, name), {"environment": environment,
                                                        "folder": properties.get("WORKING_DIRECTORY", str(self.build))})

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
        return left_out

    def reach(self, test, size):
        path = self.folder / f"reached-{threading.get_ident()}"
        with open(path, "wb") as file:
            file.truncate(size)
        how, seconds = self.run(test, reached=path)
        if how == "failed":  # perhaps only slow on a busy machine
            how, seconds = self.run(test, reached=path)
        found = [match.start() for match in re.finditer(b"\x01", path.read_bytes())]
        path.unlink()
        return {"how": how, "seconds": round(seconds, 3), "reached": found}

    # A fault

    def candidates(self, fault, number):
        """The tests that reach a fault. First those that noticed others in its file, then those that reach the least."""
        reaching = [test for test, known in self.tests.items() if number in known["reached"]]
        def rank(test):
            known = self.tests[test]
            return (-self.notices.get((fault.file, test), 0), len(known["reached"]) * (0.2 + known["seconds"]))
        return sorted(reaching, key=rank)

    def attempt(self, fault, number):
        """Returns what noticed the fault."""
        tests = self.candidates(fault, number)
        if not tests:
            return {"key": fault.key, "verdict": "not reached"}
        for test in tests:
            if self.stopping:
                return None
            how, _ = self.run(test, number, limit=10 + 10 * self.tests[test]["seconds"])
            if how not in ("passed", "skipped") and self.run(test)[0] == "passed":
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
                heard(done.result())
        finally:
            self.stopping = True
            pool.shutdown(cancel_futures=True)


def for_group(leader):
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
