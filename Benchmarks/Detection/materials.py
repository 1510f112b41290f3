"""Makes what the workloads work on: sources of a wanted length, packages, repositories, files.

Everything lies below one folder, which whoever uses this removes again.
"""
import os
import pathlib
import random
import resource
import shutil
import subprocess
import tarfile

HERE = pathlib.Path(__file__).resolve().parent
PYTHON = "/usr/bin/python3"
COMPILE = {".c": "cc -O1 -c", ".cpp": "g++ -O2 -c"}

SUITE_TEST = """
#include <sys/wait.h>
#include <unistd.h>
#include <ctime>
int main() {
  for (int worker = 0; worker < 2; ++worker) {
    if (fork() != 0) continue;
    while (std::clock() < CLOCKS_PER_SEC / 25) {}
    _exit(0);
  }
  while (wait(nullptr) > 0) {}
}
"""


def quietly(command, folder, **more):
    """Runs `command`; shows what it said if it fails."""
    done = subprocess.run(command, cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, check=False, **more)
    if done.returncode:
        raise RuntimeError(f"{' '.join(map(str, command))}: {done.stdout[-800:]}")
    return done.stdout


def source(functions, seed):
    """The compiler's time grows evenly with the functions, and its memory hardly."""
    return "".join(
        f"int f{index}(int x) {{ int v = {seed}; while (x--) v = v * 31 + x % {index + 2}; "
        f"return v; }}\n" for index in range(functions))


def cpu_of(command, folder, env):
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    quietly(command.split(), folder, env=env)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


class Calibration:
    """How many functions a source must have to take the compiler so many CPU seconds here."""

    def __init__(self, folder, env):
        folder.mkdir()
        self._lines = {suffix: self._line(folder, env, suffix) for suffix in COMPILE}

    @staticmethod
    def _line(folder, env, suffix, small=1, large=300):
        def best_of_three(functions):
            (folder / f"unit{suffix}").write_text(source(functions, 1))
            return min(cpu_of(f"{COMPILE[suffix]} unit{suffix} -o unit.o", folder, env)
                       for _ in range(3))
        least, most = best_of_three(small), best_of_three(large)
        return least, (most - least) / (large - small)

    def functions(self, suffix, seconds):
        least, slope = self._lines[suffix]
        return max(1, round((seconds - least) / slope))


class Materials:
    def __init__(self, folder, tools, env):
        self.folder = folder
        self.tools = tools  # The folder of the programs that were built for this.
        self.env = env
        self._calibration = None

    def calibration(self):
        if not self._calibration:
            self._calibration = Calibration(self.folder / "calibration", self.env)
        return self._calibration

    def new_folder(self, name):
        folder = self.folder / name
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        return folder

    def unit(self, folder, name, seconds, seed):
        """One source; the shortest are C. Returns its file name and the command that compiles."""
        suffix = ".c" if seconds < 0.2 else ".cpp"
        functions = self.calibration().functions(suffix, seconds)
        (folder / f"{name}{suffix}").write_text(source(functions, seed))
        return f"{name}{suffix}", COMPILE[suffix]

    def ninja_build(self, folder, seconds, count):
        lines = ["rule compile", "  command = $compiler $in -o $out"]
        for index in range(count):
            source, compiler = self.unit(folder, f"unit{index}", seconds, index)
            lines += [f"build unit{index}.o: compile {source}", f"  compiler = {compiler}"]
        (folder / "build.ninja").write_text("\n".join(lines) + "\n")

    def make_build(self, folder, lengths, count):
        lengths = [lengths[index % len(lengths)] for index in range(count)]
        random.Random(1).shuffle(lengths)
        rules = []
        for index, seconds in enumerate(lengths):
            source, compiler = self.unit(folder, f"unit{index}", seconds, index)
            rules.append(f"unit{index}.o: {source}\n\t{compiler} {source} -o $@\n")
        objects = " ".join(f"unit{index}.o" for index in range(count))
        (folder / "Makefile").write_text(f"all: {objects}\n" + "".join(rules))

    def test_suite(self, folder, count):
        (folder / "suite.cpp").write_text(SUITE_TEST)
        quietly(["g++", "-O1", "suite.cpp", "-o", "suite-test"], folder, env=self.env)
        (folder / "CTestTestfile.cmake").write_text("".join(
            f'add_test(test{index} "{folder}/suite-test")\n' for index in range(count)))

    def small_files(self, folder, count):
        chance = random.Random(2)
        for index in range(count):
            below = folder / f"{index // 200}"
            if index % 200 == 0:
                below.mkdir(parents=True)
            (below / f"{index}").write_bytes(chance.randbytes(chance.randint(100, 4000)))

    def large_files(self, folder, count):
        folder.mkdir()
        for index in range(count):
            (folder / f"{index}").write_text(os.urandom(1 << 20).hex())

    def repository(self, folder):
        """A bare one that a plain web server can serve; about 64 MB."""
        work = folder / "work"
        work.mkdir()
        for index in range(2000):
            (work / f"file{index}").write_bytes(os.urandom(32 << 10))
        git = ["git", "-c", "user.name=Measure", "-c", "user.email=measure@localhost"]
        for command in (["init", "-q"], ["add", "."], ["commit", "-q", "-m", "Everything"]):
            quietly(git + command, work, env=self.env)
        quietly(["git", "clone", "-q", "--bare", "work", "served.git"], folder, env=self.env)
        for command in (["repack", "-q", "-a", "-d"], ["update-server-info"]):
            quietly(["git"] + command, folder / "served.git", env=self.env)
        shutil.rmtree(work)

    def packages(self, folder, count):
        """A package with many dependencies, each of them in an archive beside it."""
        dependencies = {}
        (folder / "archives").mkdir()
        for index in range(count):
            name = f"package-{index}"
            self._archive(folder, name)
            dependencies[name] = f"file:archives/{name}.tgz"
        listed = ", ".join(f'"{name}": "{where}"' for name, where in dependencies.items())
        (folder / "package.json").write_text(
            f'{{"name": "all", "version": "1.0.0", "dependencies": {{{listed}}}}}')
        quietly(["npm", "install", "--package-lock-only", "--offline", "--no-audit", "--no-fund"],
                folder, env=self.env)

    @staticmethod
    def _archive(folder, name):
        package = folder / "archives" / "package"
        package.mkdir()
        (package / "package.json").write_text(f'{{"name": "{name}", "version": "1.0.0"}}')
        for index in range(30):
            (package / f"module{index}.js").write_text(f"module.exports = {index};\n" * 100)
        with tarfile.open(folder / "archives" / f"{name}.tgz", "w:gz", compresslevel=1) as archive:
            archive.add(package, "package")
        shutil.rmtree(package)

    def named(self, program, name):
        """A copy of one of our programs under another name. Returns its path."""
        copy = self.folder / "programs" / name
        copy.parent.mkdir(exist_ok=True)
        shutil.copy(self.tools[program], copy)
        return str(copy)

    def python_named(self, name):
        """A copy of the interpreter. It must be told the home of its library. Returns its path."""
        copy = self.folder / "programs" / name
        copy.parent.mkdir(exist_ok=True)
        shutil.copy(os.path.realpath(PYTHON), copy)
        return str(copy)

    def script(self, folder, text):
        path = folder / "script"
        path.write_text(text + "\n")
        return ["sh", str(path)]
