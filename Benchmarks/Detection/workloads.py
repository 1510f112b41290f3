"""The workloads: what is work and must be found, and what is none and must not be.

Each lasts longer than it is watched, unless its end is the point. `names` are the applications
that a hold may rightly be due to; whatever else is found at the same time is reported, and does not
count. `missed_because` is for work that the rules cannot find.
"""
import dataclasses
import pathlib
import typing

from materials import PYTHON

PROGRAMS = pathlib.Path(__file__).resolve().parent / "programs"
SERVICE_MANAGER = pathlib.Path("/lib/systemd/systemd")
# A hold for a compilation may bear the name of any program that takes part.
COMPILER = ["cc1", "cc1plus", "as", "*-as", "collect2", "ld", "*-ld*", "cc", "gcc", "g++", "c++",
            "*-gcc*", "*-g++*"]
# A shell goes by the name of the file that it runs, and the workloads that are one by "script".
SHELL = ["sh", "dash", "bash", "script"]


@dataclasses.dataclass
class Workload:
    name: str
    title: str
    names: list
    prepare: typing.Callable  # Of `Materials`; returns the command.
    seconds: int = 36
    baseline: int = 7
    is_work: bool = True
    missed_because: str = ""
    needs: tuple = ()  # Of "control groups", "service manager".


def ninja(name, length, count, title, **more):
    def prepare(materials):
        folder = materials.new_folder(name)
        materials.ninja_build(folder, length, count)
        return ["ninja", "-j2", "-C", str(folder)]
    return Workload(name, title, COMPILER + SHELL + ["ninja"], prepare, **more)


def shell_loop(materials):
    folder = materials.new_folder("shell-loop")
    source, compiler = materials.unit(folder, "unit", 0.05, 1)
    return materials.script(
        folder, f"cd '{folder}'; while :; do {compiler} {source} -o unit.o; done")


def make(materials):
    folder = materials.new_folder("make")
    materials.make_build(folder, [0.05, 0.05, 0.5, 0.5, 2, 6], 180)
    return ["make", "-j2", "-C", str(folder)]


def xargs(materials):
    folder = materials.new_folder("xargs")
    source, compiler = materials.unit(folder, "unit", 0.05, 1)
    return materials.script(
        folder, f"cd '{folder}'; seq 6000 | exec xargs -P2 -I{{}} {compiler} {source} -o unit{{}}.o")


def test_suite(materials):
    folder = materials.new_folder("test-suite")
    materials.test_suite(folder, 4000)
    return ["ctest", "-j2", "--test-dir", str(folder)]


def encode(_):
    return ["ffmpeg", "-f", "lavfi", "-i", "testsrc2=size=1280x720:rate=30", "-c:v", "libx264",
            "-f", "null", "-"]


def download(materials, what, *options):
    url = f"http://127.0.0.1:{materials.port}/{what}"
    return ["curl", "-s", *options, "-o", "/dev/null", url]


def many_files(materials):
    folder = materials.new_folder("rsync")
    materials.small_files(folder / "from", 20_000)
    return materials.script(
        folder, f"cd '{folder}'; while rsync -a --ignore-times from/ to/; do :; done")


def backup(materials):
    folder = materials.new_folder("backup")
    materials.large_files(folder / "data", 64)
    return materials.script(
        folder, f"cd '{folder}'; while :; do tar -c data | zstd -q -10 -T2 -c >/dev/null; done")


def checksums(materials):
    folder = materials.new_folder("checksums")
    materials.large_files(folder / "data", 64)
    return materials.script(
        folder, f"cd '{folder}'; while :; do find data -type f -exec sha256sum {{}} ';' >sums; done")


def clone(materials):
    folder = materials.new_folder("served/clone")
    materials.repository(folder)
    url = f"http://127.0.0.1:{materials.port}/clone/served.git"
    return materials.script(
        folder, f"cd '{folder}'; while git clone -q {url} copy; do rm -rf copy; done")


def install(materials):
    folder = materials.new_folder("install")
    materials.packages(folder, 100)
    return materials.script(
        folder, f"cd '{folder}'; while npm ci --offline --no-audit --no-fund; do :; done")


def workers(_):
    return [PYTHON, str(PROGRAMS / "workers.py")]


def unwaited(seconds):
    return lambda _: [PYTHON, str(PROGRAMS / "unwaited.py"), str(seconds)]


def unwaited_in_scope(materials):
    return [PYTHON, str(PROGRAMS / "terminal.py"), str(materials.control_group),
            f"{PYTHON} {PROGRAMS / 'unwaited.py'} 0.1"]


def adopted(materials):
    # Under a name of its own, so that it can be told from the program whose orphans it adopts.
    manager = materials.python_named("service-manager")
    return ["env", "PYTHONHOME=/usr", manager, str(PROGRAMS / "adopter.py"), "env", "-u",
            "PYTHONHOME", PYTHON, str(PROGRAMS / "orphans.py")]


def service(materials):
    return [PYTHON, str(PROGRAMS / "service.py"), str(materials.control_group / "manager"),
            str(materials.new_folder("service")), f"{PYTHON} {PROGRAMS / 'orphans.py'}"]


def terminal(materials):
    folder = materials.new_folder("terminal")
    materials.ninja_build(folder, 0.5, 300)
    return [PYTHON, str(PROGRAMS / "terminal.py"), str(materials.control_group),
            f"ninja -j2 -C '{folder}'"]


def desktop(materials):
    folder = materials.new_folder("desktop")
    lines = [f"'{materials.named('crowd-member', f'helper-{index % 12}')}' awake &"
             for index in range(60)]
    for name, work, rest in [("clock", 1, 999), ("panel", 3, 497), ("browser", 25, 475),
                             ("editor", 10, 290), ("music", 30, 970)]:
        lines.append(f"'{materials.named('pulse', name)}' {work} {rest} 100000 &")
    return materials.script(folder, "\n".join(lines + ["wait"]))


def pulse(name, work, rest):
    return lambda materials: [materials.named("pulse", name), str(work), str(rest), "100000"]


def typist(_):
    return [PYTHON, str(PROGRAMS / "typist.py")]


def turns(name, first_rest):
    def prepare(materials):
        one, other = (materials.named("pulse", f"{name}-{which}") for which in ("one", "other"))
        return materials.script(materials.new_folder(name), f"sleep {first_rest}; while :; do "
                                f"'{one}' 2000 0 1; '{other}' 2000 0 1; done")
    return prepare


def scheduled(materials):
    folder = materials.new_folder("scheduled")
    job = materials.named("pulse", "scheduled-job")
    return materials.script(folder, f"sleep 3; '{job}' 8000 0 1; sleep 60")


ALL = [
    ninja("ninja-short", 0.05, 6000, "ninja, 0.05 s a unit"),
    # Longer than the grace period with which the program starts: the drawing shows this one.
    ninja("ninja-half", 0.5, 600, "ninja, 0.5 s a unit", baseline=35),
    ninja("ninja-long", 6, 60, "ninja, 6 s a unit"),
    ninja("ninja-very-long", 30, 12, "ninja, 30 s a unit", seconds=65),
    Workload("shell-loop", "short compilations in a shell loop", COMPILER + SHELL, shell_loop),
    Workload("xargs", "xargs -P2, 0.05 s a unit", COMPILER + SHELL + ["xargs"], xargs),
    Workload("make", "make -j2, 0.05 to 6 s a unit", COMPILER + SHELL + ["make"], make),
    Workload("test-suite", "ctest, tests that fork", ["ctest", "suite-test"],
             test_suite),
    Workload("encode", "ffmpeg encodes", ["ffmpeg"], encode),
    Workload("download", "curl, from a line of 150 KB/s", ["curl"],
             lambda materials: download(materials, "slow")),
    Workload("download-limited", "curl, limiting itself to 150 KB/s", ["curl"],
             lambda materials: download(materials, "endless", "--limit-rate", "150K"),
             missed_because="over loopback, curl takes megabytes at once and then pauses"),
    Workload("download-bursts", "curl, from a line of 150 KB/s, in bursts of 1 s", ["curl"],
             lambda materials: download(materials, "bursts")),
    Workload("download-gaps", "curl, from a line of 150 KB/s, in bursts of 5 s", ["curl"],
             lambda materials: download(materials, "gaps"),
             missed_because="there are ticks without a byte, and each begins the sustain time anew"),
    Workload("download-fast", "curl at full speed", ["curl"],
             lambda materials: download(materials, "endless")),
    Workload("rsync", "rsync, 20,000 small files", ["rsync"] + SHELL, many_files),
    Workload("backup", "tar into zstd", ["tar", "zstd"] + SHELL, backup),
    Workload("checksums", "sha256sum, a process for each file", ["find", "sha256sum"] + SHELL,
             checksums),
    Workload("clone", "git clone over HTTP", ["git", "git-*", "rm"] + SHELL, clone),
    Workload("install", "npm ci, 100 packages", ["npm*", "node"] + SHELL, install),
    Workload("workers", "Python, a pool of processes", ["python*"], workers),
    Workload("unwaited", "workers of 3 s that nobody waits for", ["python*"], unwaited(3)),
    Workload("unwaited-short", "workers of 0.1 s that nobody waits for, in a scope", ["python*"],
             unwaited_in_scope, needs=("control groups",)),
    Workload("adopted", "orphans of 0.1 s, a stand-in for a service manager", ["python*",
             "service-manager"], adopted),
    Workload("service", "orphans of 0.1 s in a service of systemd", ["python*", "systemd"], service,
             needs=("control groups", "service manager")),
    Workload("agent", "an AI agent, 4 % of a core", ["codex"], pulse("codex", 4, 96)),
    Workload("agent-bursts", "an AI agent, 1 s of full load, 5 s of waiting", ["gemini"],
             pulse("gemini", 1000, 5000), missed_because="there are ticks without any use, and each "
             "begins the sustain time anew"),
    Workload("turns", "two programs in turn, 2 s each, between the ticks", ["turn-*"],
             turns("turn", 0)),
    Workload("turns-on-ticks", "two programs in turn, 2 s each, on the ticks", ["step-*"],
             turns("step", 0.95), missed_because="every second tick finds nothing of either program, "
             "and each counts for itself"),
    Workload("terminal", "ninja in a terminal's scope", COMPILER + SHELL + ["ninja"], terminal,
             needs=("control groups",)),
    Workload("desktop", "an idle desktop, 65 processes", [], desktop, 40, is_work=False),
    Workload("chat", "wakes every second for 5 ms", [], pulse("chat", 5, 995), 40, is_work=False),
    Workload("bursts", "6 s of full load every minute", [], pulse("bursts", 6000, 54000), 75,
             is_work=False),
    Workload("typist", "a shell, a command every 4 s", [], typist, 50, is_work=False),
    Workload("scheduled", "a job of 8 s", [], scheduled, 28, is_work=False),
]
