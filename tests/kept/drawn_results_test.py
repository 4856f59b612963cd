#!/usr/bin/env python3
"""Holds what `bgp-rehearse run` makes of a thousand drawn configurations to drawn_results.txt, byte by byte.

A line there has a configuration's name, the exit status, and the first digits of SHA-256 of the upgraded configuration,
the log, the JSON report and what is on the screen. What differs from build to build (versions, the library) is left out."""

import argparse
import hashlib
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]
RESULTS = HERE / "drawn_results.txt"
REHEARSE = os.environ.get("BGP_REHEARSE", str(ROOT / "build/release/bin/bgp-rehearse"))
ENVIRONMENT = {**os.environ, "LC_ALL": "C", "TZ": "UTC", "XDG_CONFIG_HOME": "/nonexistent"}
ENVIRONMENT.pop("COLUMNS", None)

PARTS = ("exit status", "upgraded configuration", "log", "JSON report", "screen")
DIGITS = 8
MOST_SHOWN = 10

ROLES = ("edge", "provider-edge", "route-reflector", "leaf", "upgraded")
FLAWS = ("other-entity-rows", "place-taken", "place-taken-unused", "broken-reference", "missing-ipv6-flag",
         "missing-local-as", "missing-next-index", "colliding-names", "host-bits", "unnamed-list", "unnumbered-vrf",
         "vrf-without-status", "long-name", "value-out-of-range", "two-entities", "no-mpls-answer", "no-router-id",
         "taken-redistribution", "announced-networks", "dead-join")
ENTITIES = (1, 1, 1, 1, 1, 1, 1, 2, 3, 0)  # upgrades are for one
RUN_OPTIONS = ((), ("--again", "--json-log", "--interfaces=192.0.2.1,198.51.100.7", "--user-profile=1"),
               ("--commit-check", "--fail-on=review"))


def adversarial(seed):
    sizes = {"entities": ENTITIES[seed % 10], "neighbors": seed * 7 % 33, "vrfs": seed % 4,
             "prefix-rules": seed * 11 % 70, "route-maps": seed * 5 % 24}
    return [f"--{name}={size}" for name, size in sizes.items()] + [f"--seed={seed}"]


def draws():
    """Each name with what `generate` draws it by."""
    for role in ROLES:
        for seed in range(80):
            yield f"{role}-{seed}", ["--kind=healthy", f"--role={role}", f"--seed={seed}"]
    for flaw in FLAWS:
        for seed in range(15):
            yield f"{flaw}-{seed}", ["--kind=healthy", f"--flaw={flaw}", f"--seed={seed}"]
    for seed in range(300):
        yield f"odd-{seed}", adversarial(seed)


def commands(number, name, drawn_by):
    """What draws the configuration, and what rehearses it."""
    return (["generate", *drawn_by, "-o", f"{name}.xml"],
            ["run", f"{name}.xml", "-o", "upgraded.xml", "--log", "log", "--json=report.json", "--changes",
             *RUN_OPTIONS[number % len(RUN_OPTIONS)]])


def same_in_every_build(text):
    text = re.sub(rb'"library": \{[^}]*\}', b'"library": {}', text)
    return re.sub(rb'("version": "|libbgp_update )\d[^"\s]*', rb"\1", text)


def digest(text):
    return hashlib.sha256(same_in_every_build(text)).hexdigest()[:DIGITS]


def digest_of_file(path):
    return digest(path.read_bytes()) if path.exists() else "-"


def result(number, name, drawn_by):
    """The configuration's line of drawn_results.txt."""
    generate, run = commands(number, name, drawn_by)
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run([REHEARSE, *generate], cwd=folder, env=ENVIRONMENT, check=True)
        done = subprocess.run([REHEARSE, *run], cwd=folder, env=ENVIRONMENT, check=False, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        files = [digest_of_file(pathlib.Path(folder) / file) for file in ("upgraded.xml", "log", "report.json")]
    return " ".join([name, str(done.returncode), *files, digest(done.stdout)])


def kept_results():
    return {line.split()[0]: line for line in RESULTS.read_text(encoding="utf-8").splitlines()}


def differing(kept, found):
    return [part for part, before, now in zip(PARTS, kept.split()[1:], found.split()[1:]) if before != now]


def tell(number, name, drawn_by, parts):
    print(f"{name}: another {', '.join(parts)}. To look at it:")
    for command in commands(number, name, drawn_by):
        print("   ", shlex.join([REHEARSE, *command]))


def compare(every):
    """How many of each `every` configurations have another result than the kept one; the first are told."""
    kept = kept_results()
    count = 0
    for number, (name, drawn_by) in list(enumerate(draws()))[::every]:
        parts = differing(kept[name], result(number, name, drawn_by))
        count += bool(parts)
        if parts and count <= MOST_SHOWN:
            tell(number, name, drawn_by, parts)
    return count


def renew():
    lines = [result(number, name, drawn_by) for number, (name, drawn_by) in enumerate(draws())]
    RESULTS.write_text("\n".join(lines) + "\n", encoding="utf-8")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--every", type=int, default=1, metavar="N", help="look at every Nth configuration (1)")
    parser.add_argument("--renew", action="store_true", help="keep the results of this build, which are meant to differ")
    options = parser.parse_args()
    if options.renew:
        return renew()
    count = compare(options.every)
    if count == 0:
        return None
    return (f"{count} of the configurations: an earlier build gives the files before, to compare by diff. When the change is "
            f"meant, {pathlib.Path(__file__).relative_to(ROOT)} --renew keeps the new results.")


if __name__ == "__main__":
    sys.exit(main())
