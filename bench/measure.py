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
COUNTED_ROWS = 10000  # up to which instructions are counted: a program takes fifty times as long for it
COUNTED = ("(a)", "(b)", "(c)")
SHORT_RUNS = 50  # of programs that take milliseconds
PHASES = ("load", "update", "judge", "write", "report")


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


def instructions(command):
    """The command's instructions, the same whatever else the machine does. A child that was forked counts on from its
    parent's count: what the parent does meanwhile, to wait, is left out."""
    with tempfile.TemporaryDirectory() as folder:
        tool = ["valgrind", "--tool=callgrind", "--trace-children=yes", f"--callgrind-out-file={folder}/%p"]
        subprocess.run([*tool, *command], check=True, capture_output=True)
        lines = [line for file in Path(folder).iterdir() for line in file.read_text().splitlines()]
    return max(int(line.split()[1]) for line in lines if line.startswith("totals: "))


class Median:
    """The medians of paired runs; none when a run failed."""

    def __init__(self, usages):
        self.known = bool(usages) and all(usages)
        if self.known:
            self.user = max(statistics.median(usage.user for usage in usages), 0.001)  # too short to tell
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

    def counts(self, path):
        """Instructions of the programs that goals name; none of a large configuration."""
        commands = {name: command for name, command in self.commands(path).items() if name.startswith(COUNTED)}
        return {name: instructions(command) for name, command in commands.items()}

    def phases(self, path):
        """What bgp-bench says, each of its times the median of the repeats."""
        documents = []
        for _ in range(self.options.repeats):
            done = subprocess.run([self.inside, path, self.folder / "out.xml"], check=True, capture_output=True)
            documents.append(json.loads(done.stdout))
        result = documents[-1]
        for phase in PHASES:
            result[phase] = statistics.median(document[phase] for document in documents)
        for call in result["calls"]:
            result["calls"][call] = statistics.median(document["calls"][call] for document in documents)
        return result


def show_programs(medians, counts):
    whole = medians["(a) bgp-rehearse run"]
    print(f"  {'':24}{'user s':>9}{'peak MB':>10}{'instructions':>14}{'(a) / it':>10}{'memory':>10}{'instr.':>10}")
    for name, median in medians.items():
        if not median.known:
            print(f"  {name:24}  failed, or wanted more than {MEMORY_CEILING >> 30} GB")
            continue
        count = f"{counts[name] / 1e6:12.0f} M" if name in counts else f"{'':14}"
        ratios = f"{whole.user / median.user:9.2f}x{whole.megabytes / median.megabytes:9.2f}x" if whole.known else ""
        ratios += f"{counts['(a) bgp-rehearse run'] / counts[name]:9.2f}x" if name in counts else ""
        print(f"  {name:24}{median.user:9.2f}{median.megabytes:10.1f}{count}{ratios}")


def show_inside(phases, rows, whole):
    total = sum(phases[name] for name in PHASES)
    shares = ", ".join(f"{name} {phases[name]:.3f} s ({phases[name] / total:.0%})" for name in PHASES)
    print(f"  inside: {shares}" + (f"; the processes themselves {whole.total - total:.3f} s" if whole.known else ""))
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


def goals_at(goals, size, medians, phases):
    whole, yang, floor = (medians[name] for name in ("(a) bgp-rehearse run", "(b) yanglint", "(c) xmllint --sax"))
    inside = sum(phases[name] for name in PHASES)
    if whole.known and floor.known:
        goals.at_most(f"{size} neighbours: user time, of xmllint --sax's", whole.user / floor.user, 8, "x")
    if whole.known and yang.known:
        goals.at_most(f"{size} neighbours: user time, of yanglint's", whole.user / yang.user, 0.3, "x")
    goals.at_most(f"{size} neighbours: update, of the whole", phases["update"] / inside, 0.5)
    goals.at_most(f"{size} neighbours: judge and report, of the whole", (phases["judge"] + phases["report"]) / inside, 0.05)
    if whole.known:
        peak = whole.megabytes * 2**20 / phases["values"]
        goals.at_most(f"{size} neighbours: peak of the whole, bytes a leaf", peak, 80)


def growth(goals, kind, small, large, sizes):
    for phase in ("load", "update", "write"):
        factor = large[phase] / small[phase]
        goals.at_most(f"{kind} {sizes[0]} to {sizes[1]}: {phase}, times as long", factor, 11, "x")


def ordinary(bench, goals):
    """A router's start to exit beside xmllint's, in turn: processor time in ms, and millions of instructions."""
    router = bench.generate("router.xml", "--neighbors", 180, "--prefix-rules", 100, "--vrfs", 10)
    commands = [bench.commands(router)[name] for name in ("(a) bgp-rehearse run", "(c) xmllint --sax")]
    usages = list(zip(*([run(command) for command in commands] for _ in range(SHORT_RUNS))))
    whole, floor = (statistics.mean(usage.user + usage.system for usage in found) * 1000 for found in usages)
    counts = [instructions(command) / 1e6 for command in commands]
    entries = bench.phases(router)["entries"]
    print(f"\n{entries} rows, from start to exit: bgp-rehearse run {whole:.1f} ms, {counts[0]:.1f} million instructions; "
          f"xmllint --sax {floor:.1f} ms, {counts[1]:.1f} million")
    goals.at_most(f"{entries} rows: processor time, 1.5 of xmllint --sax's and 4 ms", whole, round(1.5 * floor + 4, 1), "ms")


def measure_size(bench, goals, kind, size):
    """Shows the table of one configuration and returns its phases."""
    path = bench.generate("in.xml", f"--{kind}", size)
    phases = bench.phases(path)
    print(f"\n{size} {kind}: {phases['entries']} rows, {phases['values']} leaves, {path.stat().st_size / 1e6:.0f} MB")
    medians = bench.side_by_side(path)
    show_programs(medians, bench.counts(path) if size <= COUNTED_ROWS else {})
    show_inside(phases, size, medians["(a) bgp-rehearse run"])
    sys.stdout.flush()
    if kind == "neighbors" and size == 100000:
        goals_at(goals, size, medians, phases)
    return phases


def measure(options, folder):
    bench = Bench(options, folder)
    goals = Goals()
    for kind in options.kinds:
        before = None
        for size in options.sizes:
            phases = measure_size(bench, goals, kind, size)
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
