"""Measures `bgp-rehearse fleet run` over drawn routers beside a shell loop of `bgp-rehearse run`, `xargs -P` of the same,
and a shell loop of yanglint that only validates, all in one run; or, with --growth, fleets of several sizes alone."""

import argparse
import os
import statistics
import subprocess
import tempfile
import time
from pathlib import Path

TREE = Path(__file__).resolve().parent.parent
ROLES = ("edge", "provider-edge", "route-reflector", "leaf", "upgraded")


class Usage:
    """What a command and all that it started took."""

    def __init__(self, command):
        began = time.monotonic()
        child = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        _, status, usage = os.wait4(child.pid, 0)
        child.returncode = status
        self.wall = time.monotonic() - began
        self.processor = usage.ru_utime + usage.ru_stime
        self.megabytes = usage.ru_maxrss / 1024


def draw(rehearse, folder, routers):
    """Routers of all roles, and each without <config>, which is no node of a YANG module, for yanglint."""
    (folder / "in").mkdir()
    (folder / "bare").mkdir()
    for number in range(routers):
        name = f"{ROLES[number % len(ROLES)]}-{number}.xml"
        subprocess.run([rehearse, "generate", "--kind", "healthy", "--role", ROLES[number % len(ROLES)], "--seed",
                        str(number), "-o", folder / "in" / name], check=True)
        lines = (folder / "in" / name).read_bytes().splitlines(keepends=True)
        (folder / "bare" / name).write_bytes(b"".join(lines[2:-1]))


def loop(folder, command):
    return ["sh", "-c", f'for file in "$0"/*.xml; do {command} "$file" >/dev/null 2>&1; done', folder]


def commands(rehearse, folder, jobs):
    modules = " ".join(sorted(str(module) for module in (TREE / "yang").glob("*.yang")))
    fleet = [rehearse, "fleet", "run", folder / "in", "-o", folder / "fleet.db", "--jobs"]
    return {
        "fleet run --jobs 1": [*fleet, "1"],
        f"fleet run --jobs {jobs}": [*fleet, str(jobs)],
        "a loop of run": loop(folder / "in", f"{rehearse} run"),
        f"xargs -P {jobs} of run": ["sh", "-c", f'ls "$0"/*.xml | xargs -P {jobs} -n 1 {rehearse} run', folder / "in"],
        "a loop of yanglint": loop(folder / "bare", f"yanglint -p {TREE}/yang -t config -f xml {modules}"),
    }


def measure(options, folder):
    rehearse = Path(options.binaries).resolve() / "bgp-rehearse"
    draw(rehearse, folder, options.routers)
    usages = {}
    for _ in range(options.repeats):
        for name, command in commands(rehearse, folder, options.jobs).items():
            subprocess.run(["rm", "-rf", folder / "fleet.db", folder / "fleet.db.parts"], check=True)
            usages.setdefault(name, []).append(Usage(command))
    size = sum(file.stat().st_size for file in (folder / "in").iterdir()) / options.routers
    print(f"{options.routers} routers of {size / 1024:.0f} kB, median of {options.repeats}")
    print(f"{'':28}{'a second':>10}{'processor, each':>18}{'peak of a process':>20}")
    for name, found in usages.items():
        wall = statistics.median(usage.wall for usage in found)
        processor = statistics.median(usage.processor for usage in found) / options.routers
        memory = max(usage.megabytes for usage in found)
        print(f"{name:28}{options.routers / wall:10.0f}{processor * 1000:15.1f} ms{memory:17.0f} MB")
    return usages


def draw_many(rehearse, folder, routers, jobs):
    """More routers, of roles that are drawn, too; those that are there stay."""
    folder.mkdir(exist_ok=True)
    there = len(list(folder.iterdir()))
    numbers = "".join(f"{number}\n" for number in range(there, routers))
    subprocess.run(["xargs", "-P", str(jobs), "-I{}", rehearse, "generate", "--kind", "healthy", "--seed", "{}", "-o",
                    folder / "r{}.xml"], input=numbers, text=True, check=True)


def megabytes(path):
    return path.stat().st_size / 2**20


def grow(options, folder):
    """Fleets of the sizes asked for, each with the routers of the one before."""
    rehearse = Path(options.binaries).resolve() / "bgp-rehearse"
    database = folder / "fleet.db"
    faces = {"text": [], "--csv": ["--csv", folder / "f.csv"], "--json": ["--json", folder / "f.json"],
             "--html": ["--html", folder / "f.html"]}
    for routers in options.growth:
        draw_many(rehearse, folder / "many", routers, options.jobs)
        subprocess.run(["rm", "-rf", database, folder / "fleet.db.parts"], check=True)
        usage = Usage([rehearse, "fleet", "run", folder / "many", "-o", database, "--jobs", str(options.jobs)])
        print(f"{routers} routers, {options.jobs} jobs: {usage.wall:.1f} s, {routers / usage.wall:.0f} a second, "
              f"{usage.processor / routers * 1000:.2f} ms of processor time each; largest process {usage.megabytes:.0f} MB; "
              f"database {megabytes(database):.1f} MB")
        for face, arguments in faces.items():
            report = Usage([rehearse, "fleet", "report", database, *arguments])
            size = f", {megabytes(arguments[1]):.1f} MB" if arguments else ""
            print(f"  report {face:8}{report.wall:7.2f} s{report.megabytes:7.0f} MB of memory{size}")


def goals(usages, jobs):
    """Ratios of pairs that ran one after the other. Processor time tells what else the machine does least."""
    def times(name, other, of):
        return statistics.median(of(right) / of(left) for left, right in zip(usages[name], usages[other]))

    print("Goals: fleet run is so many times as fast")
    for name, other, goal in (("fleet run --jobs 1", "a loop of run", 5), ("fleet run --jobs 1", "a loop of yanglint", 2),
                              (f"fleet run --jobs {jobs}", f"xargs -P {jobs} of run", 5)):
        wall = times(name, other, lambda usage: usage.wall)
        processor = times(name, other, lambda usage: usage.processor)
        met = "met" if processor >= goal else "NOT MET"
        print(f"  as {other:26}{wall:6.1f} by the clock{processor:8.1f} in processor time, of {goal}: {met}")


def main():
    parser = argparse.ArgumentParser(prog="bench/fleet", description=__doc__)
    parser.add_argument("--routers", type=int, default=300, help="how many are drawn (300)")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="processes at a time (all processors)")
    parser.add_argument("--repeats", type=int, default=3, help="runs of each command, of which the median counts (3)")
    parser.add_argument("--growth", type=lambda text: [int(size) for size in text.split(",")], metavar="N,N,...",
                        help="instead, fleets of so many routers; 100,000 need 8 GB of disk")
    parser.add_argument("--scratch", default=None, help="folder for the files")
    parser.add_argument("--binaries", required=True, help=argparse.SUPPRESS)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(dir=options.scratch, prefix="bgp-bench-") as folder:
        if options.growth:
            grow(options, Path(folder))
        else:
            goals(measure(options, Path(folder)), options.jobs)


if __name__ == "__main__":
    main()
