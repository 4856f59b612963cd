"""What the tests of a fleet on servers share: drawn routers and their plan, the results of an undisturbed run, and how a
worker is caught in the middle of a shard. Each wait has an end, and each failure tells the servers' last words."""

import os
import pathlib
import shutil
import signal
import socket
import sqlite3
import subprocess
import tempfile
import time
import unittest
from typing import Callable, Dict, Iterator, List, Optional, TypeVar

ROOT = pathlib.Path(__file__).resolve().parents[2]
os.environ["XDG_CONFIG_HOME"] = "/nonexistent"  # no bgp-rehearse.toml of one's own counts
COMMAND = os.environ.get("BGP_REHEARSE", str(ROOT / "build/release/bin/bgp-rehearse"))
ROUTERS = 900
KINDS = 12
SHARDS = 6
PATIENCE = 180.0  # seconds, for whatever is waited for

Found = TypeVar("Found")


def wait_for(what: str, look: Callable[[], Optional[Found]], patience: float = PATIENCE) -> Found:
    """What `look` finds, as soon as it does."""
    end = time.monotonic() + patience
    while time.monotonic() < end:
        found = look()
        if found:
            return found
        time.sleep(0.01)
    raise AssertionError(f"{what}: not so in {patience:.0f} s")


def free_ports(count: int) -> List[int]:
    sockets = [socket.socket() for _ in range(count)]
    for each in sockets:
        each.bind(("127.0.0.1", 0))
    ports = [each.getsockname()[1] for each in sockets]
    for each in sockets:
        each.close()
    return ports


def program(name: str, package: str) -> str:
    """Where a server's program lies. That it is missing is a failure: nothing is tested without it."""
    path = shutil.which(name, path=os.environ["PATH"] + ":/usr/sbin:/sbin")
    if path is None:
        raise AssertionError(f"{name} is not installed, and nothing can be tested: apt-get install {package}")
    return path


def processes() -> Iterator[int]:
    return (int(name) for name in os.listdir("/proc") if name.isdigit())


def content(pid: int, name: str) -> bytes:
    """A file of a process; empty where it is gone."""
    try:
        return pathlib.Path(f"/proc/{pid}/{name}").read_bytes()
    except OSError:
        return b""


def parent(pid: int) -> int:
    fields = content(pid, "stat").rpartition(b")")[2].split()
    return int(fields[1]) if fields else 0


def line_of(pid: int) -> List[int]:
    """A process, its parent and so on, but for the first of all."""
    line = []
    while pid > 1:
        line.append(pid)
        pid = parent(pid)
    return line


def send(pids: List[int], number: signal.Signals) -> None:
    for pid in pids:
        try:
            os.kill(pid, number)
        except ProcessLookupError:
            pass


def end_all_of(folder: pathlib.Path) -> None:
    """Ends the processes that a test left: those that have its folder on their command line or in their environment."""
    name = os.fsencode(folder)
    for pid in processes():
        if pid != os.getpid() and (name in content(pid, "cmdline") or name in content(pid, "environ")):
            send([pid], signal.SIGKILL)


class Servers:
    """Servers of a test's own: their processes by name, and a log of each in the test's folder."""

    def __init__(self, folder: pathlib.Path) -> None:
        self.folder = folder
        self.servers: Dict[str, subprocess.Popen] = {}

    def serve(self, name: str, command: List[str], environment: Optional[Dict[str, str]] = None) -> None:
        with open(self.folder / f"{name}.log", "wb") as log:
            self.servers[name] = subprocess.Popen(command, stdout=log, stderr=log, env=environment)

    def start(self) -> None:
        raise NotImplementedError

    def stop(self) -> None:
        for process in self.servers.values():
            send([process.pid], signal.SIGKILL)
            process.wait()

    def last_words(self) -> str:
        return "\n".join(f"{log.name}:\n" + "\n".join(log.read_text(errors="replace").splitlines()[-15:])
                         for log in sorted(self.folder.glob("*.log")) + sorted(self.folder.glob("parts/*.log")))


class FleetOnServers(unittest.TestCase):
    """Makes the routers, the plan and the results of an undisturbed run, once for all tests of a class."""

    base: pathlib.Path
    plan: pathlib.Path
    undisturbed: pathlib.Path
    servers: Servers

    @classmethod
    def setUpClass(cls) -> None:
        cls.base = pathlib.Path(tempfile.mkdtemp(prefix="bgp-fleet-"))
        cls.plan = cls.base / "fleet.plan"
        cls.undisturbed = cls.base / "undisturbed"
        backups = cls.base / "backups"
        for folder in (backups, cls.undisturbed):
            folder.mkdir()
        for kind in range(KINDS):
            drawn = cls.base / f"{kind}.xml"
            cls.run_command("generate", "--kind", "healthy", "--seed", str(kind), "-o", str(drawn))
            for number in range(kind, ROUTERS, KINDS):
                text = drawn.read_bytes() + b"<!-- %d -->\n" % number
                (backups / f"router-{number:05}.xml").write_bytes(text)
        cls.run_command("fleet", "plan", str(backups), "-o", str(cls.plan), "--shards", str(SHARDS))
        for shard in range(SHARDS):
            part = cls.undisturbed / f"{shard}.part"
            cls.run_command("fleet", "work", str(cls.plan), "--shard", str(shard), "-o", str(part))

    @classmethod
    def tearDownClass(cls) -> None:
        shutil.rmtree(cls.base)

    def setUp(self) -> None:
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="test-", dir=self.base))
        self.parts = self.folder / "parts"
        self.parts.mkdir()
        self.addCleanup(end_all_of, self.folder)

    def start(self, servers: Servers, what: str) -> None:
        self.servers = servers
        self.addCleanup(servers.stop)
        try:
            servers.start()
        except AssertionError as failure:
            raise AssertionError(f"{what} does not start here, and nothing was tested.\n{failure}\n"
                                 f"{servers.last_words()}") from failure

    def engine_of(self, name: str, *options: str, **environment: str) -> subprocess.Popen:
        """The command of tools/fleet that has the shards done, in a process group of its own."""
        command = [str(ROOT / "tools/fleet" / name), str(self.plan), str(self.parts), "--command", COMMAND, *options]
        return subprocess.Popen(command, env={**os.environ, **environment}, stdout=subprocess.PIPE,
                                stderr=subprocess.STDOUT, text=True, start_new_session=True)

    def ended(self, engine: subprocess.Popen) -> str:
        """What it said."""
        try:
            said = engine.communicate(timeout=PATIENCE)[0]
        except subprocess.TimeoutExpired:
            os.killpg(engine.pid, signal.SIGKILL)
            said = engine.communicate()[0] + "\nand then nothing for a long time"
        self.assertEqual(engine.returncode, 0, f"{said}\n{self.servers.last_words()}")
        return said

    @staticmethod
    def run_command(*arguments: str) -> str:
        result = subprocess.run([COMMAND, *arguments], capture_output=True, text=True, timeout=PATIENCE * 5, check=False)
        if result.returncode != 0:
            raise AssertionError(f"{COMMAND} {' '.join(arguments)}: {result.returncode}\n{result.stderr}")
        return result.stdout

    def worker_in_a_shard(self, wanted: Callable[[int], bool]) -> int:
        """Stops a worker that has written some of its results and not all: its process. A part that is not yet in place is
        named for the process that writes it."""

        def look() -> Optional[int]:
            for part in self.parts.glob(".bgp-rehearse-*"):
                try:
                    pid = int(part.name.split("-")[2])
                    if part.stat().st_size == 0 or not wanted(pid):
                        continue
                    os.kill(pid, signal.SIGSTOP)
                    if part.stat().st_size > 0:
                        return pid
                    os.kill(pid, signal.SIGCONT)
                except OSError:
                    continue  # it has just ended
            return None

        return wait_for("a worker in the middle of a shard", look)

    def finished(self) -> List[str]:
        return sorted(part.name for part in self.parts.glob("*.part"))

    def check_results(self) -> None:
        """Every input is there once, and all is as in the undisturbed run."""
        self.assertEqual(self.finished(), [f"{shard}.part" for shard in range(SHARDS)])
        for name in self.finished():
            self.assertEqual((self.parts / name).read_bytes(), (self.undisturbed / name).read_bytes(), name)
        expected = self.merged(self.undisturbed)
        self.assertEqual(self.merged(self.parts), expected)
        self.assertEqual(sum(line.startswith('INSERT INTO "router"') for line in expected), ROUTERS)

    def merged(self, parts: pathlib.Path) -> List[str]:
        database = self.folder / "fleet.db"
        self.run_command("fleet", "merge", str(self.plan), *map(str, sorted(parts.glob("*.part"))), "-o", str(database))
        connection = sqlite3.connect(database)
        try:
            self.assertEqual(connection.execute("PRAGMA integrity_check").fetchall(), [("ok",)])
            return list(connection.iterdump())
        finally:
            connection.close()
