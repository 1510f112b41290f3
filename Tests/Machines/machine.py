"""A machine that QEMU runs in software: boots, sleeps, is woken, and does what it is told."""
import json
import os
import queue
import socket
import subprocess
import sys
import threading
import time

from image import HERE
from picture import Picture

BOOT_SECONDS = 900
WAKE_SECONDS = 300
#: The second line spares work that means nothing in software. The third keeps the kernel from taking
#: a late timer of a busy machine for a broken one, and ends QEMU when the kernel gives up. With
#: no_console_suspend the console would say how far a kernel came that does not wake; but then the
#: kernel switches consoles for each sleep, and Cinnamon takes its session for one that nobody sees.
KERNEL_OPTIONS = ("root=/dev/vda rw console=ttyS0 mem_sleep_default=deep "
                  "mitigations=off cryptomgr.notests "
                  "no_timer_check panic=-1")
#: The machine's clock is the one of this machine.
HERE_TIME = ("-accel", "tcg,thread=multi", "-smp", "2", "-rtc", "base=utc")
#: The machine's clock counts what its one processor does: four nanoseconds for each instruction. While
#: there is nothing to do the clock jumps to the next timer, so that an idle hour takes seconds. Other
#: work here slows this down, and the machine does not see it; only its disk answers by our clock.
OWN_TIME = ("-accel", "tcg,thread=single", "-smp", "1", "-icount", "shift=2,sleep=off",
            "-rtc", "base=utc,clock=vm")
#: The address at which the machine's one connection to the outside answers. There is nothing else.
SERVER = "10.0.2.100"
#: Cinnamon switches nothing off on a machine that looks virtual, and GNOME never sends it to sleep.
LOOKS_REAL = ("-cpu", "qemu64,-hypervisor", "-smbios", "type=1,manufacturer=Staylit,product=Machine")
#: What QEMU takes for the other end of the screen.
POINTER_RANGE = 0x7FFF


class Lost(Exception):
    """The machine ended, or does not answer."""


def connected(path, process, seconds=30):
    end = time.monotonic() + seconds
    while True:
        connection = socket.socket(socket.AF_UNIX)
        try:
            connection.connect(str(path))
            return connection
        except OSError:
            connection.close()
            if process.poll() is not None or time.monotonic() > end:
                raise Lost("QEMU does not start; see its log") from None
            time.sleep(0.1)


class Lines:
    """Both ways of a socket that carries JSON objects, one on a line. `received` gets each, on a
    thread of its own."""

    def __init__(self, connection, received):
        self._connection = connection
        self._received = received
        threading.Thread(target=self._read, daemon=True).start()

    def send(self, message):
        self._connection.sendall(json.dumps(message).encode() + b"\n")

    def _read(self):
        try:
            for line in self._connection.makefile("rb"):
                try:
                    self._received(json.loads(line))
                except ValueError:
                    pass  # What the port said before the agent had it.
        except OSError:
            pass

    def close(self):
        # The reading thread ends with the connection.
        self._connection.shutdown(socket.SHUT_RDWR)
        self._connection.close()


class Machine:
    """Use it in a `with`: at its end QEMU is ended, by its number. `said` gets a line of text for
    each thing that happens. All waiting is the caller's, on its own thread."""

    def __init__(self, image, folder, said, memory="1G", screen="", own_time=False):
        self._folder = folder
        self._said = said
        self._number = 0
        self._answers = {}
        self._replies = queue.Queue()
        self._hello = threading.Event()
        self._changed = threading.Condition()
        self.kernel = ""
        self.locks = []  #: What logind has.
        self.desktop_locks = []  #: What a desktop's own service has, in the same form.
        #: Pairs of a time (monotonic) and a name: SUSPEND, WAKEUP, SHUTDOWN, ...
        self.events = []
        self._start(image, memory, screen, OWN_TIME if own_time else HERE_TIME)

    def _start(self, image, memory, screen, time_options):
        for name in ("qmp", "agent"):
            (self._folder / name).unlink(missing_ok=True)
        command = [
            "qemu-system-x86_64", "-name", "staylit-machine", "-nodefaults", "-no-user-config",
            "-machine", "pc", "-global", "PIIX4_PM.disable_s3=0",
            *LOOKS_REAL, "-m", memory, *time_options,
            "-kernel", image.kernel, "-initrd", image.initrd,
            "-append", KERNEL_OPTIONS,
            "-drive", f"file={image.disk},if=virtio,format=raw,snapshot=on",
            "-serial", f"file:{self._folder / 'console.log'}",
            "-serial", f"unix:{self._folder / 'agent'},server=on,wait=off",
            "-qmp", f"unix:{self._folder / 'qmp'},server=on,wait=off",
            "-netdev", f"user,id=outside,restrict=on,"
            f"guestfwd=tcp:{SERVER}:80-cmd:{sys.executable} {HERE / 'server.py'}",
            "-device", "virtio-net-pci,netdev=outside,romfile=",
            "-display", "none", "-no-reboot"]
        command += ["-device", screen, "-device", "virtio-keyboard-pci",
                    "-device", "virtio-tablet-pci"] if screen else ["-vga", "none"]
        with open(self._folder / "qemu.log", "wb") as log:
            self._process = subprocess.Popen(list(map(str, command)), stdin=subprocess.DEVNULL,
                                             stdout=log, stderr=log, env=self._environment())
        self._agent = Lines(connected(self._folder / "agent", self._process), self._from_agent)
        self._qmp = Lines(connected(self._folder / "qmp", self._process), self._from_qmp)
        self.command("qmp_capabilities")

    def _environment(self):
        # The disk's changes go where the results go, which has the room.
        return {**os.environ, "TMPDIR": str(self._folder)}

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.terminate()
        try:
            self._process.wait(20)
        except subprocess.TimeoutExpired:
            self._process.kill()
            self._process.wait()
        self._agent.close()
        self._qmp.close()

    # What arrives, on other threads.

    def _from_agent(self, message):
        with self._changed:
            if "hello" in message:
                self.kernel = message["hello"]
                self._hello.set()
            elif "awake" in message:
                self.events.append((time.monotonic(), "AWAKE"))
            elif "locks" in message:
                self.locks = message["locks"]
                self._say_locks("locks", self.locks)
            elif "damaged" in message:
                self._said(f"a message came to the machine damaged: {message['damaged'][:200]}")
            elif message.get("id") in self._answers:
                self._answers[message["id"]].put(message)
            self._changed.notify_all()

    def _from_qmp(self, message):
        if "event" in message:
            with self._changed:
                self.events.append((time.monotonic(), message["event"]))
                self._changed.notify_all()
            if message["event"] in ("SUSPEND", "WAKEUP", "SHUTDOWN", "RESET"):
                self._said(message["event"].lower())
        elif "return" in message or "error" in message:
            self._replies.put(message)

    def _say_locks(self, name, locks):
        self._said(f"{name}: " + ("; ".join(map(text_of, locks)) or "none"))

    # What the caller does.

    def desktop_lists(self, locks):
        """To be called when a desktop's own service lists others, on any thread."""
        with self._changed:
            self.desktop_locks = locks
            self._say_locks("the desktop's list", locks)
            self._changed.notify_all()

    def command(self, name, **arguments):
        """A command of QEMU's own."""
        self._qmp.send({"execute": name, "arguments": arguments})
        try:
            reply = self._replies.get(timeout=60)
        except queue.Empty:
            raise Lost(f"QEMU does not answer {name}") from None
        if "error" in reply:
            raise Lost(f"{name}: {reply['error'].get('desc')}")
        return reply["return"]

    def boot(self):
        """Returns when the machine is up. Says how long that took."""
        begin = time.monotonic()
        while not self._hello.wait(1):
            if self._process.poll() is not None or time.monotonic() - begin > BOOT_SECONDS:
                raise Lost("the machine does not come up; see console.log")
        self.run("systemctl", "is-system-running", "--wait", seconds=BOOT_SECONDS, may_fail=True)
        self._said(f"booted after {time.monotonic() - begin:.0f} s")

    def run(self, *command, seconds=600, may_fail=False):
        """Runs a command in the machine as root, and returns what it says."""
        with self._changed:
            self._number += 1
            number = self._number
            answer = self._answers[number] = queue.Queue()
        self._agent.send({"id": number, "run": list(command), "timeout": seconds})
        try:
            message = answer.get(timeout=seconds + 60)
        except queue.Empty:
            raise Lost(f"no answer to {' '.join(command)}") from None
        finally:
            self._answers.pop(number, None)
        if message["status"] and not may_fail:
            raise RuntimeError(f"{' '.join(command)}: {message['output'].strip()}")
        return message["output"]

    def shell(self, text, **more):
        return self.run("sh", "-c", text, **more)

    def wait_until(self, holds, seconds):
        """Waits until `holds()`, which is asked at each thing that happens; whether it came true."""
        end = time.monotonic() + seconds
        with self._changed:
            while not holds():
                left = end - time.monotonic()
                if left <= 0 or self._process.poll() is not None:
                    return False
                self._changed.wait(min(left, 1))
            return True

    def times(self, name, since=0.0):
        """When the event with that name came, not before `since`."""
        return [at for at, event in list(self.events) if event == name and at >= since]

    def wake(self):
        """Wakes the sleeping machine, and returns when it answers again."""
        begin = time.monotonic()
        self.command("system_wakeup")
        # What is sent before the machine's kernel has its serial port again is lost.
        if not self.wait_until(lambda: self.times("AWAKE", begin), WAKE_SECONDS):
            raise Lost("the machine does not wake")
        self.run("true")

    def picture(self, name):
        """What the screen shows now, which is also kept as NAME.png."""
        path = self._folder / f"{name}.ppm"
        self.command("screendump", filename=str(path))
        shown = Picture.of_ppm(path.read_bytes())
        path.unlink()
        shown.save(path.with_suffix(".png"))
        return shown

    def click(self, x, y, shown, button="left"):
        """Clicks on that pixel of the screen, which is as large as the picture `shown`."""
        places = ((axis, round((at + 0.5) * POINTER_RANGE / size))
                  for axis, at, size in (("x", x, shown.width), ("y", y, shown.height)))
        self.command("input-send-event", events=[
            {"type": "abs", "data": {"axis": axis, "value": value}} for axis, value in places])
        for down in (True, False):
            # A real finger takes its time, too.
            time.sleep(0.3)
            self.command("input-send-event", events=[
                {"type": "btn", "data": {"down": down, "button": button}}])

    def write(self, path, text, owner="root"):
        """A file in the machine."""
        self.shell(f"install -d -o {owner} -g {owner} $(dirname {path})")
        self.run("sh", "-c", 'printf %s "$1" >"$2" && chown "$3:" "$2"', "sh", text, path, owner)

    def press(self, *keys):
        """Presses these keys at once, by QEMU's names."""
        self.command("send-key", keys=[{"type": "qcode", "data": key} for key in keys])


def text_of(lock):
    return f"{lock['who']} ({lock['what']}, {lock['mode']}, user {lock['uid']}): {lock['why']}"
