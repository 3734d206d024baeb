"""What the tests are worth: puts small faults into the code, one at a time, and lists those that no test notices."""
import argparse
import fcntl
import hashlib
import json
import re
import signal
import sys
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
FOLDER = ROOT / "build" / "mutate"
OTHER_LIBRARIES = re.compile(r"/(objc|modules)/")

sys.path.insert(0, str(Path(__file__).parent))

from build import Builder  # noqa: E402
from collect import collect  # noqa: E402
from report import Harmless, figures, survivors  # noqa: E402
from tree import BLOCK, number, tracked  # noqa: E402
from trials import Trials  # noqa: E402

started = time.monotonic()


def progress(what, done, whole):
    """One line on a terminal; elsewhere a line for each tenth."""
    if sys.stdout.isatty():
        print(f"\r    {what}: {done} of {whole}\033[K", end="\n" if done == whole else "", flush=True)
    elif done > 0 and (done == whole or done * 10 // whole != (done - 1) * 10 // whole):
        print(f"    {what}: {done} of {whole} ({time.monotonic() - started:.0f} s)", flush=True)


def parsed():
    parser = argparse.ArgumentParser(prog="./dev mutate", description=__doc__)
    parser.add_argument("files", nargs="*", metavar="FILE", help="files or folders; all of sdk/ and platform/ without")
    parser.add_argument("--sample", type=int, metavar="N", help="try N faults at random, the same for the same seed")
    parser.add_argument("--seed", default="1", help="for --sample (1)")
    parser.add_argument("--kind", action="append", help="statement, condition, constant, operator or call; all without")
    parser.add_argument("--list", action="store_true", help="show the faults and try none")
    parser.add_argument("--again", action="store_true",
                        help="of the faults tried before, try those that survived; the others count as noticed")
    parser.add_argument("--jobs", type=int, default=2, help="how many programs run at a time (2)")
    return parser.parse_args()


def sources(names):
    """Every source file of the library, and the headers beside them."""
    wanted = {name for name in tracked(ROOT) if name.startswith(("sdk/", "platform/")) and
              name.endswith((".cpp", ".hpp")) and not OTHER_LIBRARIES.search(name)}
    chosen = [str(Path(name).resolve().relative_to(ROOT)) for name in names]
    for name in chosen:
        if not any(each == name or each.startswith(name + "/") for each in wanted):
            raise SystemExit(f"{name} is not a source file of sdk/ or platform/, nor a folder of some.")
    return wanted, {each for each in wanted
                    if not chosen or any(each == name or each.startswith(name + "/") for name in chosen)}


def chosen_of(faults, options, files, harmless):
    chosen = [each for each in faults if each.file in files and not harmless.holds(each)]
    if options.kind:
        chosen = [each for each in chosen if each.kind in options.kind]
    if options.sample:
        # A fault keeps its place in the order while its line stays, so the sample changes little when the code does.
        chosen.sort(key=lambda each: hashlib.sha256(f"{options.seed} {each.key}".encode()).digest())
        chosen = chosen[:options.sample]
    return sorted(chosen, key=lambda each: (each.file, each.start, each.kind))


def state_of(paths):
    state = hashlib.sha256()
    for path in sorted(paths):
        state.update(str(path).encode() + b"\0" + path.read_bytes())
    return state.hexdigest()[:16]


def read_results(path):
    lines = path.read_text().splitlines() if path.exists() else []
    found = [json.loads(line) for line in lines if line.endswith("}")]  # the last line may have been cut off
    return {each["key"]: each for each in found}


def main():
    options = parsed()
    lock = alone()  # noqa: F841, held until the end
    wanted, files = sources(options.files)
    harmless = Harmless(ROOT / "tools" / "mutate-harmless.txt")
    builder = Builder(ROOT, FOLDER, Path(__file__).parent / "mutation.hpp", options.jobs, progress)
    commands = [each for each in builder.commands() if str(Path(each["file"]).relative_to(ROOT)) in wanted]
    before = state_of(ROOT / name for name in wanted)
    collection = collect(ROOT, FOLDER / "read", commands, wanted, options.jobs, progress)
    # Reading takes minutes, and faults would be planted at the wrong places.
    if state_of(ROOT / name for name in wanted) != before:
        raise SystemExit("The sources have changed while they were read. Start again, perhaps in a copy of the repository.")
    for entry in harmless.stale(collection.faults):
        print(f"    {harmless.path.name}: nothing in {entry[0]} is like \"{entry[1]}\" any more")
    if options.list:
        chosen = chosen_of(collection.faults, options, files, harmless)
        for each in chosen:
            print(f"{each.file}:{each.line}: {each.kind}\n    from: {each.original}\n    to: {each.changed}")
        print(f"{len(chosen)} faults")
        return

    numbers = builder.run(collection, number(collection.faults, FOLDER / "blocks.json"))
    state = state_of(each for each in builder.tree.rglob("*") if each.is_file())
    trials = Trials(FOLDER, builder.build, options.jobs, progress)
    left_out = trials.measure(state, BLOCK * 1024)
    if left_out:
        print(f"    not used, because they do not pass here without a fault: {', '.join(left_out)}")
    # A constexpr function that nothing calls at run time works for the compiler: its faults cannot be switched on.
    reached = set().union(*(each["reached"] for each in trials.tests.values()))
    awake = {each.in_function for each in collection.faults if numbers.get(each.key) in reached}
    usable = [each for each in collection.faults
              if each.key in numbers and (not each.in_function or each.in_function in awake)]
    chosen = chosen_of(usable, options, files, harmless)

    path = FOLDER / f"results-{state}.jsonl"
    results = read_results(path)
    earlier = read_results(FOLDER / "last.jsonl")
    if options.again:
        chosen = [each for each in chosen if each.key in earlier]
        results = {key: each for key, each in earlier.items() if each["verdict"] == "noticed"} | results
    waiting = [each for each in chosen if each.key not in results]
    with open(path, "a") as file:
        def heard(result):
            results[result["key"]] = result
            file.write(json.dumps(result) + "\n")
            file.flush()
            progress("Trying the faults", len([each for each in waiting if each.key in results]), len(waiting))
        trials.all(waiting, numbers, heard)

    earlier.update({each.key: results[each.key] for each in chosen})
    (FOLDER / "last.jsonl").write_text("".join(json.dumps(each) + "\n" for each in earlier.values()))
    lines = [f"{len(collection.faults)} faults in {len(wanted)} files, {len(chosen)} tried; left out: "
             f"{len(collection.faults) - len(usable)} that do not compile, {collection.left_out} in texts of log lines and "
             f"in constants of the compiler, {len(harmless.entries)} judged harmless",
             *figures(chosen, results), *survivors(chosen, results)]
    (FOLDER / "report.txt").write_text("\n".join(lines) + "\n")
    print("\n".join(lines))
    print(f"\nKept in {(FOLDER / 'report.txt').relative_to(ROOT)}.")


def alone():
    """Takes the folder for this run; returns what holds it."""
    FOLDER.mkdir(parents=True, exist_ok=True)
    lock = open(FOLDER / "lock", "w")
    try:
        fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
    except BlockingIOError:
        sys.exit("Another ./dev mutate is at work here.")
    return lock


def interrupt(*_):
    raise KeyboardInterrupt


signal.signal(signal.SIGTERM, interrupt)
signal.signal(signal.SIGINT, interrupt)
try:
    main()
except KeyboardInterrupt:
    sys.exit("\nInterrupted. The same command goes on from here.")
