# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
"""A Slurm of two nodes on this machine: daemons, ports and files of its own, ended by their numbers."""

import ctypes
import os
import shutil
import signal
import socket
import subprocess
import time

# munged, slurmctld and slurmd stand where ordinary users have no path.
SEARCHED = os.environ["PATH"] + ":/usr/sbin:/sbin"


class NotHere(Exception):
    """Why the engine cannot start on this machine."""


def die_with_parent():
    """For a child: a test that is killed leaves no daemon behind."""
    set_parent_death_signal = 1
    ctypes.CDLL(None).prctl(set_parent_death_signal, signal.SIGKILL)


def free_ports(count):
    sockets = [socket.socket() for _ in range(count)]
    for one in sockets:
        one.bind(("127.0.0.1", 0))
    ports = [one.getsockname()[1] for one in sockets]
    for one in sockets:
        one.close()
    return ports


def processes_of(number):
    """The process and all that it has started."""
    children = {}
    for entry in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open(f"/proc/{entry}/stat") as stat:
                parent = int(stat.read().rsplit(")", 1)[1].split()[1])
        except OSError:
            continue  # it has ended
        children.setdefault(parent, []).append(int(entry))
    found, new = [], [number]
    while new:
        found += new
        new = [child for one in new for child in children.get(one, [])]
    return found


class Cluster:
    NODES = ("n1", "n2")

    def __init__(self, folder):
        for name in ("munged", "slurmctld", "slurmd", "sbatch", "scontrol"):
            if shutil.which(name, path=SEARCHED) is None:
                raise NotHere(f"{name} is not installed (slurm-wlm, munge)")
        if os.getuid() != 0:
            raise NotHere("slurmd runs tasks in their users' names, for which it must be root")
        self.folder = folder
        self.environment = dict(os.environ, PATH=SEARCHED, SLURM_CONF=self.file("slurm.conf"))
        self.started = []

    def file(self, name):
        return os.path.join(self.folder, name)

    def __enter__(self):
        try:
            self._start_munge()
            self._write_configuration()
            self._start(["slurmctld", "-D"], "slurmctld")
            for node in self.NODES:
                self._start(["slurmd", "-D", "-N", node], node)
            self._wait_for_nodes()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        # Tasks belong to daemons of their own, which slurmd would leave behind.
        for node in self.NODES:
            self.lose(node)
        for name, process in reversed(self.started):
            process.terminate()
            try:
                process.wait(10)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
        self.started = []

    def lose(self, node):
        """The node is gone from one moment to the next, with all that runs on it."""
        for name, process in [one for one in self.started if one[0] == node]:
            process.kill()
            process.wait()
            self.started.remove((name, process))
        for number in self._stepds(node):
            for one in processes_of(number):
                try:
                    os.kill(one, signal.SIGKILL)
                except ProcessLookupError:
                    pass

    def run(self, words, **more):
        return subprocess.run(words, env=dict(self.environment, **more.pop("environment", {})), text=True,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **more)

    def logs(self):
        texts = []
        for name in ("munged.log", "slurmctld.log", "n1.log", "n2.log"):
            if os.path.exists(self.file(name)):
                with open(self.file(name), errors="replace") as log:
                    texts.append(f"--- {name}\n" + "".join(log.readlines()[-40:]))
        return "".join(texts)

    def _stepds(self, node):
        """The daemons of the node's tasks, which have its environment."""
        found = []
        for entry in filter(str.isdigit, os.listdir("/proc")):
            try:
                with open(f"/proc/{entry}/environ", "rb") as environ:
                    variables = environ.read().split(b"\0")
                with open(f"/proc/{entry}/comm") as comm:
                    name = comm.read().strip()
            except OSError:
                continue
            own = f"SLURM_CONF={self.file('slurm.conf')}".encode()
            if name.startswith("slurmstepd") and own in variables and f"OVERLAY_NODE={node}".encode() in variables:
                found.append(int(entry))
        return found

    def _start(self, words, name):
        with open(self.file(name + ".out"), "wb") as out:
            process = subprocess.Popen(words, env=dict(self.environment, OVERLAY_NODE=name), stdin=subprocess.DEVNULL,
                                       stdout=out, stderr=subprocess.STDOUT, preexec_fn=die_with_parent)
        self.started.append((name, process))

    def _start_munge(self):
        key = self.file("munge.key")
        with open(key, "wb") as file:
            file.write(os.urandom(128))
        os.chmod(key, 0o400)
        self.socket = self.file("munge.socket")
        self._start(["munged", "--foreground", "--force", f"--key-file={key}", f"--socket={self.socket}",
                     f"--pid-file={self.file('munged.pid')}", f"--log-file={self.file('munged.log')}",
                     f"--seed-file={self.file('munged.seed')}"], "munged")
        self._wait(lambda: os.path.exists(self.socket), "munged")

    def _write_configuration(self):
        host = socket.gethostname()
        controller, first, second = free_ports(3)
        nodes = "".join(f"NodeName={node} NodeHostname={host} NodeAddr=127.0.0.1 Port={port} CPUs=2 RealMemory=2000"
                        " State=UNKNOWN\n" for node, port in zip(self.NODES, (first, second)))
        os.mkdir(self.file("state"))
        with open(self.file("slurm.conf"), "w") as file:
            file.write(f"""ClusterName=overlaytest
SlurmctldHost={host}(127.0.0.1)
SlurmctldPort={controller}
SlurmUser=root
AuthType=auth/munge
AuthInfo=socket={self.socket},cred_expire=5
CredType=cred/munge
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
SlurmdParameters=config_overrides
SchedulerParameters=batch_sched_delay=0,sched_interval=2,sched_min_interval=0
StateSaveLocation={self.file('state')}
SlurmdSpoolDir={self.folder}/spool.%n
SlurmctldPidFile={self.file('slurmctld.pid')}
SlurmdPidFile={self.folder}/slurmd.%n.pid
SlurmctldLogFile={self.file('slurmctld.log')}
SlurmdLogFile={self.folder}/%n.log
ReturnToService=2
SlurmdTimeout=9
KillWait=2
MaxArraySize=41
MailProg=/bin/true
JobAcctGatherType=jobacct_gather/none
{nodes}PartitionName=all Nodes=ALL Default=YES MaxTime=INFINITE State=UP
""")

    def _wait_for_nodes(self):
        def both_idle():
            answer = self.run(["sinfo", "-h", "-N", "-o", "%T"]).stdout
            return answer.split() == ["idle", "idle"]
        self._wait(both_idle, "the nodes")

    def _wait(self, is_there, what, seconds=30):
        end = time.monotonic() + seconds
        while not is_there():
            if time.monotonic() > end:
                raise NotHere(f"{what} did not come up in {seconds} s\n" + self.logs())
            time.sleep(0.1)
