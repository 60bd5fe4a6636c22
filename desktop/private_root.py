"""A private copy of this machine for programs that install packages or run a service manager: what is written there
stays in memory, processes, displays and control groups are its own, and all of it ends with its first process.
Takes root. Programs that start with every session are left out."""

import glob
import os
import subprocess
import tempfile

from desktop import REPOSITORY
from waiting import wait

GROUPS = "/sys/fs/cgroup"
NAMESPACES = ["unshare", "--mount", "--pid", "--fork", "--net", "--ipc", "--kill-child"]
# Arguments: a folder, the repository, "yes" for control groups, then the command.
ROOT = """set -e
mount --make-rprivate /
mount -t tmpfs tmpfs "$1"
cd "$1"
mkdir upper work root
mount -t overlay -o lowerdir=/,upperdir=upper,workdir=work overlay root
mount -t proc proc root/proc
mount -t sysfs sysfs root/sys
mount --rbind /dev root/dev
mount -t tmpfs tmpfs root/tmp
mount -t tmpfs tmpfs root/run
rm -f root/etc/xdg/autostart/*
mkdir -p "root$2"
mount --rbind "$2" "root$2"
[ "$3" != yes ] || mount -t cgroup2 cgroup2 root/sys/fs/cgroup
shift 3
exec chroot root "$@"
"""


def allowed():
    return os.getuid() == 0 and subprocess.run([*NAMESPACES, "true"], check=False, stderr=subprocess.DEVNULL).returncode == 0


def run(command, groups=None):
    """The command's exit status. With `groups`, from control_groups(), the command has some of its own below."""
    own = groups and tempfile.mkdtemp(prefix="orvo-", dir=groups)
    with tempfile.TemporaryDirectory() as folder:
        process = subprocess.Popen(
            [*NAMESPACES, *(["--cgroup"] if own else []), "sh", "-c", ROOT, "sh", folder, REPOSITORY, "yes" if own else "no",
             *command], preexec_fn=lambda: own and _join(own, os.getpid()))
        if own:
            wait(lambda: len(_members(own)) > 1, what="a process on the private root")
            _join(groups, process.pid)  # What it has started stays.
        status = process.wait()
    for group in sorted(glob.glob(f"{own}/**/", recursive=True), reverse=True) if own else []:
        os.rmdir(group)
    return status


def control_groups():
    """Where control groups can be made; None where nobody may."""
    return next((folder for folder in (f"{GROUPS}/unified", GROUPS)
                 if os.path.exists(f"{folder}/cgroup.procs") and os.access(folder, os.W_OK)), None)


def expect_own_groups():
    """To be called on the private root before a service manager starts, which takes every process that it finds."""
    wait(lambda: 0 not in _members(GROUPS), what="a control group without strangers")
    assert os.getpid() in _members(GROUPS)


def _members(group):
    """Its processes; 0 is one of another root."""
    with open(f"{group}/cgroup.procs", encoding="ascii") as file:
        return [int(line) for line in file]


def _join(group, process):
    with open(f"{group}/cgroup.procs", "w", encoding="ascii") as file:
        file.write(str(process))
