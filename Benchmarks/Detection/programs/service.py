"""Runs a command as a service of a systemd of its own, one for a user's services.

    service.py CONTROL-GROUP FOLDER COMMAND

The manager takes the machine for one that systemd has started, if `/run/systemd/system` is there,
and looks for the unified hierarchy in its usual place. Where either is missing, both are put into a
mount namespace, which only this has.
"""
import os
import pathlib
import subprocess
import sys

MANAGER = "/lib/systemd/systemd"
BOOTED = pathlib.Path("/run/systemd/system")
HIERARCHY = pathlib.Path("/sys/fs/cgroup")


def mount(kind, place):
    subprocess.run(["mount", "-t", kind, "none", place], check=True)


def is_usual():
    return BOOTED.exists() and (HIERARCHY / "cgroup.procs").exists()


def arrange():
    mount("tmpfs", "/run")
    BOOTED.mkdir(parents=True)
    mount("cgroup2", HIERARCHY)


def write_units(folder, command):
    units = folder / "config/systemd/user"
    units.mkdir(parents=True)
    (units / "workload.service").write_text(
        f"[Unit]\nDefaultDependencies=no\n[Service]\nExecStart={command}\n")
    (units / "workload.target").write_text(
        "[Unit]\nDefaultDependencies=no\nWants=workload.service\n")


group, folder, command = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3]
if "arranged" in sys.argv:
    arrange()
else:
    group.mkdir()
    (group / "cgroup.procs").write_text(str(os.getpid()))
    if not is_usual():
        os.execvp("unshare", ["unshare", "--mount", sys.executable, *sys.argv, "arranged"])
write_units(folder, command)
(folder / "run/systemd").mkdir(parents=True, mode=0o700)
os.environ.update(XDG_CONFIG_HOME=str(folder / "config"), XDG_RUNTIME_DIR=str(folder / "run"))
os.execv(MANAGER, [MANAGER, "--user", "--unit=workload.target"])
