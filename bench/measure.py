"""Runs the programs that bench/run compares, interleaved, and prints the tables. See bench/README.md."""
import argparse
import json
import os
import resource
import statistics
import subprocess
import sys
import tempfile
from pathlib import Path

TREE = Path(__file__).resolve().parent.parent
KINDS = ("neighbors", "prefix-rules")
MEMORY_CEILING = 12 << 30  # bytes; a program that wants more is shown as out of memory


class Usage:
    """User seconds, system seconds and peak megabytes of one process and those it waited for."""

    def __init__(self, user, system, megabytes):
        self.user, self.system, self.megabytes = user, system, megabytes


def run(command):
    """The command's Usage, or None when it failed."""
    child = os.fork()
    if child == 0:
        nothing = os.open(os.devnull, os.O_RDWR)
        os.dup2(nothing, 1)
        os.dup2(nothing, 2)
        resource.setrlimit(resource.RLIMIT_AS, (MEMORY_CEILING, MEMORY_CEILING))
        try:
            os.execvp(command[0], [str(word) for word in command])
        finally:
            os._exit(127)
    _, status, usage = os.wait4(child, 0)
    if status != 0:
        return None
    return Usage(usage.ru_utime, usage.ru_stime, usage.ru_maxrss / 1024)


class Median:
    """The medians of paired runs; none when a run failed."""

    def __init__(self, usages):
        self.known = bool(usages) and all(usages)
        if self.known:
            self.user = max(statistics.median(usage.user for usage in usages), 0.01)  # one tick: too short to tell
            self.total = statistics.median(usage.user + usage.system for usage in usages)
            self.megabytes = statistics.median(usage.megabytes for usage in usages)


class Bench:
    def __init__(self, options, folder):
        self.options = options
        self.folder = folder
        self.rehearse = Path(options.binaries) / "bgp-rehearse"
        self.inside = Path(options.binaries) / "bgp-bench"
        self.own_time = Path(options.binaries) / "bgp-own-time"

    def generate(self, name, *numbers):
        path = self.folder / name
        subprocess.run([self.rehearse, "generate", *map(str, numbers), "-o", path], check=True)
        return path

    def unwrapped(self, path):
        """The file without <config>, which is no node of a YANG module: for yanglint. The wrapper has its own lines."""
        bare = path.with_suffix(".bare.xml")
        with open(bare, "wb") as out:
            subprocess.run(["sed", "-e", "1,2d", "-e", "$d", str(path)], stdout=out, check=True)
        return bare

    def commands(self, path):
        bare = self.unwrapped(path)
        out = self.folder / "out.xml"
        modules = sorted(str(module) for module in (TREE / "yang").glob("*.yang"))
        return {
            "(a) bgp-rehearse run": [self.rehearse, "run", path, "-o", out],
            "(b) yanglint": ["yanglint", "-p", TREE / "yang", "-t", "config", "-f", "xml", "-o", out, *modules, bare],
            "(c) xmllint --sax": ["xmllint", "--sax", "--noout", "--huge", path],
            "(d) lxml script": [sys.executable, TREE / "bench/rekey.py", path, out],
            "(d) xsltproc": ["xsltproc", "--huge", "-o", out, TREE / "bench/rekey.xsl", path],
        }

    def side_by_side(self, path):
        commands = self.commands(path)
        usages = {name: [] for name in commands}
        for _ in range(self.options.repeats):
            for name, command in commands.items():
                if usages[name] and usages[name][-1] is None:
                    continue
                usages[name].append(run(command))
        return {name: Median(found) for name, found in usages.items()}

    def phases(self, path):
        """What bgp-bench says, each of its times the median of the repeats."""
        documents = []
        for _ in range(self.options.repeats):
            done = subprocess.run([self.inside, path, self.folder / "out.xml"], check=True, capture_output=True)
            documents.append(json.loads(done.stdout))
        result = documents[-1]
        for phase in ("load", "update", "write", "judged_update", "judge"):
            result[phase] = statistics.median(document[phase] for document in documents)
        for call in result["calls"]:
            result["calls"][call] = statistics.median(document["calls"][call] for document in documents)
        return result


def show_programs(medians):
    whole = medians["(a) bgp-rehearse run"]
    print(f"  {'':24}{'user s':>9}{'peak MB':>10}{'(a) / it':>10}{'memory':>10}")
    for name, median in medians.items():
        if not median.known:
            print(f"  {name:24}  failed, or wanted more than {MEMORY_CEILING >> 30} GB")
            continue
        ratios = f"{whole.user / median.user:9.2f}x{whole.megabytes / median.megabytes:9.2f}x" if whole.known else ""
        print(f"  {name:24}{median.user:9.2f}{median.megabytes:10.1f}{ratios}")


def show_inside(phases, rows, whole):
    total = phases["load"] + phases["update"] + phases["write"]
    shares = ", ".join(f"{name} {phases[name]:.3f} s ({phases[name] / total:.0%})" for name in ("load", "update", "write"))
    print(f"  inside: {shares}" + (f"; report and the rest {whole.total - total:.3f} s" if whole.known else ""))
    print(f"  judging: the history {phases['judged_update'] - phases['update']:.3f} s, "
          f"account and findings {phases['judge']:.3f} s")
    calls = phases["calls"]
    print("  a call: " + ", ".join(f"{name} {calls[name]:.0f} ns" for name in ("read", "write", "move", "step")))
    for step, (reads, writes) in phases["steps"].items():
        print(f"    {step:32}{reads / rows:9.3f} reads a row{writes / rows:9.3f} writes a row")


def show_own_time(bench):
    """The library over a platform that answers at once: [rows, nanoseconds a row, calls a row] for each size."""
    documents = []
    for _ in range(bench.options.repeats):
        done = subprocess.run([bench.own_time], check=True, capture_output=True)
        documents.append(json.loads(done.stdout)["own"])
    print("\nthe library's own time, neighbours and families moving to another index:")
    for same_size in zip(*documents):
        rows, _, calls = same_size[0]
        nanoseconds = statistics.median(document[1] for document in same_size)
        print(f"  {2 * rows:8} rows: {nanoseconds:6.0f} ns a row, {calls:.3f} calls a row")


def show_growth_of_calls(before, after):
    """Calls of each step a row at two sizes, where they differ by more than the draw of the rows explains."""
    small, large = before[1]["steps"], after[1]["steps"]
    worst = max(abs(sum(large[step]) / after[0] - sum(small[step]) / before[0]) for step in small if step in large)
    print(f"  calls of a step a row: at most {worst:.3f} more or less than at {before[0]}")


class Goals:
    def __init__(self):
        self.lines = []

    def at_most(self, what, value, limit, unit=""):
        met = "met" if value <= limit else "NOT MET"
        self.lines.append(f"  {what:62}{value:9.2f}{unit:3} of {limit:g}{unit:3} {met}")

    def show(self):
        print("Goals")
        for line in self.lines:
            print(line)


def judging(phases):
    """The seconds that the account of rows and the findings cost: the history that is kept for them, and themselves."""
    return phases["judged_update"] - phases["update"] + phases["judge"]


def goals_at(goals, size, medians, phases):
    values = phases["values"]
    whole, yang, floor = (medians[name] for name in ("(a) bgp-rehearse run", "(b) yanglint", "(c) xmllint --sax"))
    if whole.known and yang.known:
        goals.at_most(f"{size} neighbours: user time, of yanglint's", whole.user / yang.user, 0.5, "x")
        goals.at_most(f"{size} neighbours: peak memory, of yanglint's", whole.megabytes / yang.megabytes, 0.5, "x")
    if whole.known and floor.known:
        goals.at_most(f"{size} neighbours: user time, of xmllint --sax's", whole.user / floor.user, 6, "x")
        goals.at_most(f"{size} neighbours: update, of the whole", phases["update"] / whole.total, 1 / 3)
        goals.at_most(f"{size} neighbours: judging, of the whole", judging(phases) / whole.total, 0.1)
    goals.at_most(f"{size} neighbours: stored, bytes a leaf", phases["loaded_kilobytes"] * 1024 / values, 100)
    if whole.known:
        goals.at_most(f"{size} neighbours: peak of the whole, bytes a leaf", whole.megabytes * 2**20 / values, 100)


def growth(goals, kind, small, large, sizes):
    for phase in ("load", "update", "write"):
        factor = large[phase] / small[phase]
        goals.at_most(f"{kind} {sizes[0]} to {sizes[1]}: {phase}, times as long", factor, 11, "x")


def ordinary(bench, goals):
    empty = bench.generate("empty.xml", "--entities", 0)
    router = bench.generate("router.xml", "--neighbors", 180, "--prefix-rules", 100, "--vrfs", 10)
    entries = bench.phases(router)["entries"]
    usages = {empty: [], router: []}
    for _ in range(max(bench.options.repeats, 5)):
        for path in usages:
            usages[path].append(run([bench.rehearse, "run", path, "-o", bench.folder / "out.xml"]))
    medians = {path: Median(found) for path, found in usages.items()}
    goals.at_most(f"{entries} rows more than nothing: processor time",
                  (medians[router].total - medians[empty].total) * 1000, 50, "ms")


def measure(options, folder):
    bench = Bench(options, folder)
    goals = Goals()
    for kind in options.kinds:
        before = None
        for size in options.sizes:
            path = bench.generate("in.xml", f"--{kind}", size)
            phases = bench.phases(path)
            print(f"\n{size} {kind}: {phases['entries']} rows, {phases['values']} leaves, "
                  f"{path.stat().st_size / 1e6:.0f} MB")
            medians = bench.side_by_side(path)
            show_programs(medians)
            show_inside(phases, size, medians["(a) bgp-rehearse run"])
            sys.stdout.flush()
            if kind == "neighbors" and size == 100000:
                goals_at(goals, size, medians, phases)
            if before and size == 10 * before[0]:
                growth(goals, kind, before[1], phases, (before[0], size))
                show_growth_of_calls(before, (size, phases))
            before = (size, phases)
    ordinary(bench, goals)
    show_own_time(bench)
    print()
    goals.show()


def main():
    parser = argparse.ArgumentParser(prog="bench/run", description=__doc__)
    parser.add_argument("--sizes", type=lambda text: [int(size) for size in text.split(",")],
                        default=[10000, 100000, 1000000], help="numbers of rows (10000,100000,1000000)")
    parser.add_argument("--kinds", type=lambda text: text.split(","), default=list(KINDS),
                        help="neighbors,prefix-rules")
    parser.add_argument("--repeats", type=int, default=3, help="runs of each program, of which the median counts (3)")
    parser.add_argument("--scratch", default=None, help="folder for the files; 1,000,000 neighbours need 8 GB")
    parser.add_argument("--binaries", required=True, help=argparse.SUPPRESS)
    options = parser.parse_args()
    if not set(options.kinds) <= set(KINDS):
        parser.error("--kinds takes " + ",".join(KINDS))
    if options.repeats < 1:
        parser.error("--repeats takes 1 or more")
    with tempfile.TemporaryDirectory(dir=options.scratch, prefix="bgp-bench-") as folder:
        measure(options, Path(folder))


if __name__ == "__main__":
    main()
