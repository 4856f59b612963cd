#!/usr/bin/env python3
"""A fleet as an array of Slurm jobs (tools/fleet/slurm), on a cluster of its own: a controller and two nodes on this
machine, one of which dies with its worker in the middle of a shard. Needs slurmctld, slurmd and slurm-client."""

import os
import pathlib
import pwd
import signal
import socket
import subprocess
import unittest
from typing import Dict, List

from servers import PATIENCE, FleetOnServers, Servers, content, free_ports, line_of, program, send, wait_for

CONFIGURATION = """
ClusterName=fleet
SlurmctldHost={host}(127.0.0.1)
SlurmUser={user}
SlurmdUser={user}
SlurmctldPort={ports[0]}
AuthType=auth/none
CredType=cred/none
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
SchedulerParameters=batch_sched_delay=0,sched_min_interval=0
ReturnToService=2
JobRequeue=1
SlurmdTimeout=10
SlurmdParameters=config_overrides
JobCompType=jobcomp/none
MpiDefault=none
StateSaveLocation={folder}/state
SlurmdSpoolDir={folder}/spool-%n
SlurmctldPidFile={folder}/slurmctld.pid
SlurmdPidFile={folder}/slurmd-%n.pid
NodeName=n1 NodeHostname={host} NodeAddr=127.0.0.1 Port={ports[1]} CPUs=1
NodeName=n2 NodeHostname={host} NodeAddr=127.0.0.1 Port={ports[2]} CPUs=1
PartitionName=all Nodes=n1,n2 Default=YES MaxTime=INFINITE State=UP
"""


class Cluster(Servers):
    """slurmctld and two slurmd, with ports, configuration and states of their own."""

    def __init__(self, folder: pathlib.Path) -> None:
        super().__init__(folder)
        self.programs = {name: program(name, package) for name, package in (
            ("slurmctld", "slurmctld"), ("slurmd", "slurmd"), ("sinfo", "slurm-client"), ("scontrol", "slurm-client"),
            ("squeue", "slurm-client"), ("sbatch", "slurm-client"))}
        self.configuration = folder / "slurm.conf"
        self.configuration.write_text(CONFIGURATION.format(
            host=socket.gethostname().split(".")[0], user=pwd.getpwuid(os.getuid()).pw_name, ports=free_ports(3),
            folder=folder))
        for name in ("state", "spool-n1", "spool-n2"):
            (folder / name).mkdir()
        self.environment: Dict[str, str] = {**os.environ, "SLURM_CONF": str(self.configuration)}

    def start(self) -> None:
        self.serve_with("slurmctld", "slurmctld", "-D", "-c")
        for node in ("n1", "n2"):
            self.serve_with(node, "slurmd", "-D", "-N", node)
        wait_for("two idle nodes", lambda: self.answer("sinfo", "-h", "-N", "-o", "%T").split() == ["idle", "idle"])

    def serve_with(self, name: str, server: str, *options: str) -> None:
        self.serve(name, [self.programs[server], *options, "-f", str(self.configuration)], self.environment)

    def answer(self, name: str, *arguments: str) -> str:
        for server, process in self.servers.items():
            if process.poll() not in (None, -signal.SIGKILL):
                raise AssertionError(f"{server} has ended: {process.returncode}")
        result = subprocess.run([self.programs[name], *arguments], capture_output=True, text=True, timeout=PATIENCE,
                                env=self.environment, check=False)
        return result.stdout

    def kill_node(self, node: str, worker: int) -> None:
        """All at once, as when its power fails."""
        send([self.servers[node].pid], signal.SIGKILL)
        ancestors = line_of(worker)
        daemons = [place for place, pid in enumerate(ancestors) if content(pid, "cmdline").startswith(b"slurmstepd")]
        send(ancestors[:max(daemons) + 1][::-1], signal.SIGKILL)
        self.servers[node].wait()


class SlurmTest(FleetOnServers):
    def setUp(self) -> None:
        super().setUp()
        self.cluster = Cluster(self.folder)
        self.start(self.cluster, "Slurm")

    def engine(self, *options: str) -> subprocess.Popen:
        return self.engine_of("slurm", *options, SLURM_CONF=str(self.cluster.configuration))

    def test_array_that_nothing_disturbs_gives_all_parts(self) -> None:
        self.assertIn("All 6 shards are done.", self.ended(self.engine()))
        self.check_results()

    def test_node_that_dies_in_a_shard_loses_nothing(self) -> None:
        engine = self.engine()
        worker = self.worker_in_a_shard(lambda pid: b"SLURMD_NODENAME=n2\0" in content(pid, "environ"))
        before = self.finished()
        self.cluster.kill_node("n2", worker)
        self.cluster.answer("scontrol", "update", "NodeName=n2", "State=DOWN", "Reason=killed")
        wait_for("the shard to be queued again", lambda: self.requeued() or engine.poll() is not None)
        for job in self.requeued():
            self.cluster.answer("scontrol", "update", f"JobId={job}", "StartTime=now")
        self.ended(engine)
        self.assertLess(len(before), 6)
        self.check_results()

    def requeued(self) -> List[str]:
        """The jobs that wait for their hold to end, which Slurm gives to those that it queues again."""
        lines = [line.split() for line in self.cluster.answer("squeue", "-h", "-r", "-o", "%i %r").splitlines()]
        return [line[0] for line in lines if line[1:] == ["BeginTime"]]

    def test_jobs_that_are_cancelled_are_done_by_the_same_command(self) -> None:
        engine = self.engine()
        worker = self.worker_in_a_shard(lambda pid: True)
        before = {name: (self.parts / name).stat().st_ino for name in self.finished()}
        subprocess.run([program("scancel", "slurm-client"), "--name=bgp-fleet", "--signal=KILL"],
                       env=self.cluster.environment, check=True, timeout=PATIENCE)
        send([worker], signal.SIGKILL)
        engine.communicate(timeout=PATIENCE)
        self.assertEqual(engine.returncode, 1)
        self.ended(self.engine())
        self.check_results()
        for name, inode in before.items():
            self.assertEqual((self.parts / name).stat().st_ino, inode, f"{name} was done again")


if __name__ == "__main__":
    unittest.main()
