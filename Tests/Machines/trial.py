"""One run of a scenario on its machine: what scenarios do and check, and what they found."""
import subprocess
import sys
import time

from image import USER

KINDS = ("cpu", "short", "disk", "download", "inhibitor")
#: How long logind waits before it sends an idle machine to sleep. Work lasts twice as long.
IDLE_SECONDS = 30
WORK_SECONDS = 2 * IDLE_SECONDS
GRACE_SECONDS = 30
#: Longer than any of these ever takes on a machine in software; a machine that needs more is stuck.
PATIENCE_SECONDS = 600
#: How many times slower than this machine the one in QEMU may be. Eight to fifteen times is usual.
#: Where others leave QEMU less of the processors, each program in there, Staylit too, seems to work
#: far harder than it does, and nothing that is found says anything of Staylit.
MOST_SLOWNESS = 40
LOOP = ("import time; begin = time.monotonic(); sum(i * i for i in range(300000)); "
        "print(time.monotonic() - begin)")
SETTINGS = f"graceSeconds = {GRACE_SECONDS}\n"


class Trial:
    def __init__(self, machine, say, quick):
        self.machine = machine
        self.say = say
        self.quick = quick
        self.findings = []  #: What did not hold, in sentences.
        self.skipped = []
        self.figures = {}  #: Lists of seconds, by what they measure.
        self.holder = None  #: The number of the user whose Staylit is tried; any when absent.
        self.work_seconds = WORK_SECONDS
        self.programs = ""  #: What besides the system is tried, with versions.
        self._works = 0

    def check(self, holds, what):
        if not holds:
            self.findings.append(what)
            self.say(f"DID NOT HOLD: {what}")
        return holds

    def skip(self, what):
        self.skipped.append(what)
        self.say(f"skipped: {what}")

    def figure(self, name, seconds):
        self.figures.setdefault(name, []).append(round(seconds, 1))
        self.say(f"{name} {seconds:.1f} s")

    # The machine

    def is_fit(self):
        """Whether the machine is quick enough for a trial."""
        there = float(self.machine.run("python3", "-c", LOOP))
        here = float(subprocess.check_output([sys.executable, "-c", LOOP]))
        slowness = there / here
        self.say(f"{slowness:.0f} times slower than this machine")
        return self.check(slowness <= MOST_SLOWNESS,
                          "this machine has enough time left for a trial")

    def systemd(self):
        return self.machine.shell("systemctl --version | head -n 1").split()[1]

    def versions(self, *packages):
        """Which programs these are, for the table."""
        listed = self.machine.run("dpkg-query", "-W", "-f", "${Package} ${Version}, ", *packages)
        self.programs = listed.strip(", ")
        self.say(self.programs)

    def let_it_sleep(self, seconds=IDLE_SECONDS):
        """From now on logind sends the idle machine to sleep."""
        self.machine.shell(
            "mkdir -p /etc/systemd/logind.conf.d && "
            f"printf '[Login]\\nIdleAction=suspend\\nIdleActionSec={seconds}s\\n' "
            ">/etc/systemd/logind.conf.d/60-idle.conf && systemctl restart systemd-logind")

    def falls_asleep(self, since, why):
        asleep = self.machine.wait_until(lambda: self.machine.times("SUSPEND", since),
                                         PATIENCE_SECONDS)
        if self.check(asleep, f"the machine sleeps {why}"):
            self.figure(f"asleep {why}", self.machine.times("SUSPEND", since)[0] - since)
            time.sleep(2)
            self.machine.wake()
        return asleep

    # Staylit

    def holds(self):
        """The locks by which Staylit keeps the machine awake now."""
        return [lock for lock in (*self.machine.locks, *self.machine.desktop_locks)
                if lock["who"] == "Staylit" and lock["mode"] == "block"
                and "idle" in lock["what"].split(":")
                and self.holder in (None, lock["uid"])]

    def wait_for_hold(self, since):
        """Until there is one for work, or until the machine sleeps without."""
        self.machine.wait_until(
            lambda: self.is_held_for_work() or self.machine.times("SUSPEND", since),
            PATIENCE_SECONDS)

    def is_held_for_work(self):
        return any("waiting for work to resume" not in lock["why"] for lock in self.holds())

    def work(self, kind, user=USER):
        self._works += 1
        return Work(self, kind, user, f"work-{self._works}")

    # What every scenario does

    def cycle(self, kind, user=USER, late=lambda: None):
        """Work of that kind and user, sleep, and waking. `late` is called near the end of the work."""
        machine, begin = self.machine, time.monotonic()
        self.say(f"-- {kind}, {user}")
        with self.work(kind, user):
            self.wait_for_hold(begin)
            if self.check(self.is_held_for_work(), f"there is a hold for {kind}"):
                self.figure("held after", time.monotonic() - begin)
            slept = machine.wait_until(lambda: machine.times("SUSPEND", begin),
                                       self.work_seconds)
            if not self.check(not slept, f"the machine stays awake for {kind}"):
                machine.wake()
            late()
            self.check(self.is_held_for_work(), f"the hold for {kind} lasts as long as the work")
        end = time.monotonic()
        if self.check(machine.wait_until(lambda: not self.holds(), PATIENCE_SECONDS),
                      f"the hold ends after {kind}"):
            self.figure("released after", time.monotonic() - end)
        self.falls_asleep(end, "after work")

    def cycles(self):
        """All kinds of work in turn, each once when it is to be quick."""
        count = len(KINDS) if self.quick else 4 * len(KINDS)
        for index in range(count):
            self.cycle(KINDS[index % len(KINDS)])
        return count

    def troubles(self, kill):
        """Staylit is killed, by `kill`, and logind restarted, both during work."""
        machine = self.machine
        self.say("-- killed during work")
        with self.work("cpu"):
            self.check(machine.wait_until(self.is_held_for_work, PATIENCE_SECONDS),
                       "there is a hold before Staylit is killed")
            begin = time.monotonic()
            machine.shell(kill)
            self.check(machine.wait_until(lambda: not self.holds(), PATIENCE_SECONDS),
                       "the hold ends with Staylit")
            self.wait_for_hold(begin)
            back = self.is_held_for_work()
            if machine.times("SUSPEND", begin):
                # Nothing holds until the next Staylit has seen the work for the sustain time.
                self.say("the machine fell asleep before there was a hold again")
                machine.wake()
                back = machine.wait_until(self.is_held_for_work, PATIENCE_SECONDS)
            if self.check(back, "the next Staylit holds for the same work"):
                self.figure("held again after a kill", time.monotonic() - begin)
            self.say("-- logind restarts during work")
            begin = time.monotonic()
            machine.run("systemctl", "restart", "systemd-logind")
            slept = machine.wait_until(lambda: machine.times("SUSPEND", begin), WORK_SECONDS)
            if not self.check(not slept, "the machine stays awake when logind restarts"):
                machine.wake()
            self.check(self.is_held_for_work(), "there is a hold after logind has restarted")
        end = time.monotonic()
        self.falls_asleep(end, "after work")


class Work:
    """Work of one kind in the machine, in a unit of its own, for as long as a `with` lasts."""

    def __init__(self, trial, kind, user, unit):
        self._trial, self._kind, self._user, self._unit = trial, kind, user, unit

    def __enter__(self):
        self._trial.machine.run("systemd-run", "--quiet", "--collect", f"--unit={self._unit}",
                                f"--uid={self._user}", "/usr/local/lib/machine/work", self._kind)
        return self

    def __exit__(self, kind, *_):
        if kind is None:
            self._trial.machine.run("systemctl", "stop", self._unit)
            self._trial.say("the work ends")
