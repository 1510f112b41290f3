"""Makes what a machine boots: a disk of a Debian release with our packages installed, its kernel and
its initial RAM disk. What takes long is kept in a cache folder, by what it was made of.

Wants root, because the files of a Debian system have many owners.
"""
import dataclasses
import hashlib
import pathlib
import shutil
import subprocess
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
CLEAN_ROOT = ROOT / "scripts/clean-root"

#: What each machine has besides the base of its release: a kernel, the services that decide on
#: sleep, what the agent runs in, and what the work is done with.
COMMON_PACKAGES = ("linux-image-amd64", "systemd-sysv", "dbus", "dbus-user-session",
                   "libpam-systemd", "polkitd", "udev", "kmod", "iproute2",
                   "curl", "python3", "procps", "util-linux-extra")
#: Debian's own errands would be work of an hour that nobody chose.
ERRANDS = ("apt-daily.timer", "apt-daily-upgrade.timer", "dpkg-db-backup.timer", "man-db.timer",
           "e2scrub_all.timer", "fstrim.timer", "systemd-tmpfiles-clean.timer")
USER = "staylit-test"
#: As Debian's installer sets it for whoever reads English.
LOCALE = "en_US.UTF-8"
#: The disk is sparse, so its size costs nothing.
DISK_SIZE = "6G"


def key_of(*parts):
    return hashlib.sha256("\0".join(parts).encode()).hexdigest()[:12]


def run(log, *command, **more):
    """Runs it with what it says in the log, of which the end is shown should it fail."""
    with open(log, "ab") as output:
        done = subprocess.run([str(part) for part in command], stdin=subprocess.DEVNULL,
                              stdout=output, stderr=output, **more)
    if done.returncode:
        lines = pathlib.Path(log).read_text(errors="replace").splitlines()
        raise RuntimeError("\n".join(lines[-20:] + [f"failed: {command[0]}; see {log}"]))


def remove(folder):
    subprocess.run(["rm", "-rf", "--one-file-system", str(folder)], check=True)


@dataclasses.dataclass
class Image:
    """The files of a machine that can be booted."""
    disk: pathlib.Path  #: To be read only.
    kernel: pathlib.Path
    initrd: pathlib.Path

    @staticmethod
    def in_folder(folder):
        return Image(folder / "disk.img", folder / "vmlinuz", folder / "initrd.img")


class Images:
    def __init__(self, cache, log):
        self._cache = cache
        self._log = log

    def root_of(self, release, packages):
        """A root folder with these packages, which nobody may change."""
        wanted = sorted({*packages})
        folder = self._cache / f"root-{release}-{key_of(*wanted)}"
        if not folder.exists():
            making = folder.with_suffix(".making")
            remove(making)
            run(self._log, CLEAN_ROOT, "make-release", release, making, *wanted)
            run(self._log, CLEAN_ROOT, "run", making, "apt-get", "update")
            making.rename(folder)
        return folder

    def own_packages(self, release):
        """A folder with our packages, built in a root of that release from what is here now."""
        tree = self._tree_key()
        folder = self._cache / f"packages-{release}-{tree}"
        if folder.exists():
            return folder
        making = folder.with_suffix(".making")
        remove(making)
        base = self.root_of(release, ("build-essential", "devscripts", "equivs", "git"))
        with tempfile.TemporaryDirectory(dir=self._cache) as work:
            root = pathlib.Path(work) / "root"
            run(self._log, "cp", "-a", "--reflink=auto", base, root)
            source = root / "build/staylit"
            source.mkdir(parents=True)
            files = subprocess.run(["git", "ls-files", "-z", "-co", "--exclude-standard",
                                    "--deduplicate"], cwd=ROOT, check=True,
                                   capture_output=True).stdout
            for name in filter(None, files.decode().split("\0")):
                if (ROOT / name).exists():
                    (source / name).parent.mkdir(parents=True, exist_ok=True)
                    shutil.copy2(ROOT / name, source / name, follow_symlinks=False)
            inside = ("cd /build/staylit && apt-get update && apt-get build-dep -y "
                      "--no-install-recommends . && DEB_BUILD_OPTIONS=nocheck dpkg-buildpackage "
                      "--no-sign --build=binary")
            run(self._log, CLEAN_ROOT, "run", root, "sh", "-c", inside)
            making.mkdir()
            for package in (root / "build").glob("*.deb"):
                shutil.copy2(package, making)
        making.rename(folder)
        return folder

    def machine(self, machine, own):
        """The image of `machine` (see scenario.Machine) with the packages of the folder `own`."""
        base = self.root_of(machine.release, (*COMMON_PACKAGES, *machine.packages))
        debs = self._own_files(own, machine.own_packages)
        added = [*debs, *sorted((HERE / "guest").iterdir()), HERE / "image.py"]
        key = key_of(base.name, *(hashlib.sha256(path.read_bytes()).hexdigest() for path in added))
        folder = self._cache / f"machine-{machine.release}-{key}"
        if not folder.exists():
            making = folder.with_suffix(".making")
            remove(making)
            making.mkdir()
            with tempfile.TemporaryDirectory(dir=self._cache) as work:
                root = pathlib.Path(work) / "root"
                run(self._log, "cp", "-a", "--reflink=auto", base, root)
                self._install(root, debs)
                self._furnish(root)
                self._pack(root, Image.in_folder(making))
            making.rename(folder)
        return Image.in_folder(folder)

    @staticmethod
    def _own_files(own, names):
        found = [path for name in names for path in own.glob(f"{name}_*.deb")]
        if len(found) != len(names):
            raise RuntimeError(f"{own} lacks some of {', '.join(names)}")
        return found

    def _install(self, root, debs):
        inside = root / "packages"
        inside.mkdir()
        for path in debs:
            shutil.copy2(path, inside)
        paths = " ".join(f"/packages/{path.name}" for path in debs)
        run(self._log, CLEAN_ROOT, "run", root, "sh", "-c",
            self._with_lists(f"apt-get install -y --no-install-recommends locales {paths}"))
        remove(inside)

    @staticmethod
    def _with_lists(command):
        """The command, with the mirrors' lists renewed where it fails without."""
        return f"{command} || {{ apt-get update && {command}; }}"

    def _furnish(self, root):
        """What each machine has: the agent, the work and a user who may not log in."""
        agent = root / "usr/local/lib/machine"
        agent.mkdir(parents=True)
        for name in ("agent.py", "day.py", "lid.py", "within", "work"):
            shutil.copy(HERE / "guest" / name, agent / name)
            (agent / name).chmod(0o755)
        units = root / "etc/systemd/system"
        shutil.copy(HERE / "guest/machine-agent.service", units)
        for errand in ERRANDS:
            (units / errand).unlink(missing_ok=True)
            (units / errand).symlink_to("/dev/null")
        shutil.copy(HERE / "guest/outside.network", root / "etc/systemd/network")
        (root / "etc/fstab").write_text("/dev/vda / ext4 defaults 0 1\n")
        (root / "etc/hostname").write_text("machine\n")
        (root / "etc/default/locale").write_text(f"LANG={LOCALE}\n")
        run(self._log, CLEAN_ROOT, "run", root, "sh", "-c",
            f"localedef -i {LOCALE.split('.')[0]} -f UTF-8 {LOCALE} && "
            "systemctl enable machine-agent.service systemd-networkd.service && "
            "systemctl mask systemd-networkd-wait-online.service && "
            f"useradd --create-home --shell /bin/bash {USER}")

    def _pack(self, root, image):
        shutil.copy(max((root / "boot").glob("vmlinuz-*")), image.kernel)
        shutil.copy(max((root / "boot").glob("initrd.img-*")), image.initrd)
        remove(root / "var/cache/apt")
        run(self._log, "mke2fs", "-q", "-t", "ext4", "-L", "machine", "-d", root, image.disk,
            DISK_SIZE)

    def _tree_key(self):
        """What the tree holds now, committed or not."""
        index = subprocess.run(["git", "ls-files", "-s", "-o", "--exclude-standard"], cwd=ROOT,
                               check=True, capture_output=True, text=True).stdout
        changes = subprocess.run(["git", "diff", "HEAD"], cwd=ROOT, check=True,
                                 capture_output=True, text=True, errors="replace").stdout
        return key_of(index, changes)
