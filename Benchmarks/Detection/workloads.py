"""The workloads: what is work and must be found, and what is none and must not be.

Each lasts longer than it is watched, unless its end is the point. `names` are the applications
that a hold may rightly be due to; whatever else is found at the same time is reported, and does not
count.
"""
import dataclasses
import pathlib
import typing

PROGRAMS = pathlib.Path(__file__).resolve().parent / "programs"
PYTHON = "/usr/bin/python3"
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
    needs_control_groups: bool = False


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
    Workload("make", "make -j2, 0.05 to 6 s a unit", COMPILER + SHELL + ["make"], make),
    Workload("test-suite", "ctest, tests that fork", ["ctest", "suite-test"],
             test_suite),
    Workload("encode", "ffmpeg encodes", ["ffmpeg"], encode),
    Workload("download", "curl, from a line of 150 KB/s", ["curl"],
             lambda materials: download(materials, "slow")),
    Workload("download-limited", "curl, limiting itself to 150 KB/s", ["curl"],
             lambda materials: download(materials, "endless", "--limit-rate", "150K")),
    Workload("download-fast", "curl at full speed", ["curl"],
             lambda materials: download(materials, "endless")),
    Workload("rsync", "rsync, 20,000 small files", ["rsync"] + SHELL, many_files),
    Workload("backup", "tar into zstd", ["tar", "zstd"] + SHELL, backup),
    Workload("clone", "git clone over HTTP", ["git", "git-*", "rm"] + SHELL, clone),
    Workload("install", "npm ci, 100 packages", ["npm*", "node"] + SHELL, install),
    Workload("workers", "Python, a pool of processes", ["python*"], workers),
    Workload("terminal", "ninja in a terminal's scope", COMPILER + SHELL + ["ninja"], terminal,
             needs_control_groups=True),
    Workload("desktop", "an idle desktop, 65 processes", [], desktop, 40, is_work=False),
    Workload("chat", "wakes every second for 5 ms", [], pulse("chat", 5, 995), 40, is_work=False),
    Workload("bursts", "6 s of full load every minute", [], pulse("bursts", 6000, 54000), 75,
             is_work=False),
    Workload("typist", "a shell, a command every 4 s", [], typist, 50, is_work=False),
    Workload("scheduled", "a job of 8 s", [], scheduled, 28, is_work=False),
]
