#!/usr/bin/env python3
"""A fleet on two hosts by GNU parallel over ssh (tools/fleet/parallel): two sshd on this machine, one of which dies, or
falls silent, with its worker in the middle of a shard; and the command itself killed and run again. Needs parallel,
openssh-server and openssh-client."""

import os
import pathlib
import pwd
import signal
import subprocess
import unittest

from servers import PATIENCE, FleetOnServers, Servers, free_ports, line_of, processes, program, send, wait_for

SERVER = """
ListenAddress 127.0.0.1
Port {port}
HostKey {folder}/host_key
AuthorizedKeysFile {folder}/user_key.pub
PidFile none
StrictModes no
UsePAM no
PasswordAuthentication no
KbdInteractiveAuthentication no
PermitRootLogin prohibit-password
MaxStartups 100
"""
CLIENT = """
Host node1
    Port {ports[0]}
Host node2
    Port {ports[1]}
Host node1 node2
    HostName 127.0.0.1
    User {user}
    IdentityFile {folder}/user_key
    IdentitiesOnly yes
    UserKnownHostsFile /dev/null
    StrictHostKeyChecking no
    LogLevel ERROR
"""


class Hosts(Servers):
    """Two sshd with keys and ports of their own, and what ssh needs to reach them by name."""

    def __init__(self, folder: pathlib.Path) -> None:
        super().__init__(folder)
        self.ports = free_ports(2)
        self.client = folder / "ssh_config"
        self.client.write_text(CLIENT.format(ports=self.ports, user=pwd.getpwuid(os.getuid()).pw_name, folder=folder))
        self.list = folder / "hosts"
        self.list.write_text("1/node1\n1/node2\n")

    def start(self) -> None:
        sshd = program("sshd", "openssh-server")
        program("parallel", "parallel")
        if os.getuid() == 0:
            os.makedirs("/run/sshd", mode=0o755, exist_ok=True)  # sshd of root does not start without it
        for key in ("host_key", "user_key"):
            subprocess.run([program("ssh-keygen", "openssh-client"), "-q", "-t", "ed25519", "-N", "", "-f",
                            str(self.folder / key)], check=True, timeout=PATIENCE)
        for name, port in zip(("node1", "node2"), self.ports):
            configuration = self.folder / f"{name}.conf"
            configuration.write_text(SERVER.format(port=port, folder=self.folder))
            self.serve(name, [sshd, "-D", "-e", "-f", str(configuration)])
        for name in self.servers:
            wait_for(f"ssh {name}", lambda name=name: self.answers(name), patience=60)

    def answers(self, name: str) -> bool:
        if self.servers[name].poll() is not None:
            raise AssertionError(f"the sshd of {name} has ended: {self.servers[name].returncode}")
        command = [program("ssh", "openssh-client"), "-F", str(self.client), "-o", "BatchMode=yes", name, "true"]
        return subprocess.run(command, capture_output=True, timeout=PATIENCE, check=False).returncode == 0

    def is_on(self, name: str, pid: int) -> bool:
        return self.servers[name].pid in line_of(pid)

    def strike(self, name: str, worker: int, number: signal.Signals) -> None:
        """The server, then all down to the worker: whom nobody stops first could still say that it is done."""
        server = self.servers[name].pid
        line = line_of(worker)
        send(line[:line.index(server) + 1][::-1], number)

    def stop(self) -> None:
        """All that they started as well: a session of ssh that was stopped would stay."""
        send([pid for pid in processes() if any(self.is_on(name, pid) for name in self.servers)], signal.SIGKILL)
        super().stop()


class ParallelTest(FleetOnServers):
    def setUp(self) -> None:
        super().setUp()
        self.hosts = Hosts(self.folder)
        self.start(self.hosts, "sshd")

    def engine(self) -> subprocess.Popen:
        return self.engine_of("parallel", "--hosts", str(self.hosts.list), HOME=str(self.folder),
                              PARALLEL_SSH=f"ssh -F {self.hosts.client}")

    def worker_on_node2(self) -> int:
        return self.worker_in_a_shard(lambda pid: self.hosts.is_on("node2", pid))

    def test_hosts_that_nothing_disturbs_give_all_parts(self) -> None:
        self.assertIn("All 6 shards are done.", self.ended(self.engine()))
        self.check_results()

    def test_host_that_dies_in_a_shard_loses_nothing(self) -> None:
        engine = self.engine()
        self.hosts.strike("node2", self.worker_on_node2(), signal.SIGKILL)
        self.assertLess(len(self.finished()), 6)
        self.ended(engine)
        self.check_results()

    def test_host_that_falls_silent_in_a_shard_loses_nothing(self) -> None:
        engine = self.engine()
        self.hosts.strike("node2", self.worker_on_node2(), signal.SIGSTOP)
        self.assertLess(len(self.finished()), 6)
        self.ended(engine)
        self.check_results()

    def test_killed_command_goes_on_where_it_was(self) -> None:
        engine = self.engine()
        wait_for("a shard that is done", self.finished)
        worker = self.worker_in_a_shard(lambda pid: True)
        os.killpg(engine.pid, signal.SIGKILL)
        engine.communicate(timeout=PATIENCE)
        send([worker], signal.SIGKILL)
        before = {name: (self.parts / name).stat().st_ino for name in self.finished()}
        self.assertLess(len(before), 6)
        self.ended(self.engine())
        self.check_results()
        for name, inode in before.items():
            self.assertEqual((self.parts / name).stat().st_ino, inode, f"{name} was done again")


if __name__ == "__main__":
    unittest.main()
