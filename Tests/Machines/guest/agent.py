#!/usr/bin/python3
"""Runs in the machine: does what the host asks on the second serial port, and tells of the locks that
logind knows.

One JSON object stands on a line. The host sends {"id", "run", "timeout"} and gets {"id", "status",
"output"}. Unasked come {"hello"} once, {"awake"} after each sleep of the machine, and {"locks": [...]}
at each change. In between it waits, and looks twice a second at a clock and the time of a folder.
"""
import json
import os
import select
import subprocess
import termios
import threading
import time
import tty

PORT = "/dev/ttyS1"
LOCKS = "/run/systemd/inhibit"
LOOK_SECONDS = 0.5
FIELDS = {"WHAT": "what", "WHO": "who", "WHY": "why", "MODE": "mode", "UID": "uid", "PID": "pid"}


class Port:
    def __init__(self):
        self._descriptor = os.open(PORT, os.O_RDWR | os.O_NOCTTY)
        tty.setraw(self._descriptor, termios.TCSANOW)
        self._lock = threading.Lock()
        self._pending = b""

    def send(self, message):
        data = json.dumps(message).encode() + b"\n"
        with self._lock:
            while data:
                data = data[os.write(self._descriptor, data):]

    def requests(self):
        """Those that have come within a moment."""
        ready, _, _ = select.select([self._descriptor], [], [], LOOK_SECONDS)
        if ready:
            self._pending += os.read(self._descriptor, 4096)
        *lines, self._pending = self._pending.split(b"\n")
        for line in lines:
            try:
                yield json.loads(line)
            except ValueError:
                self.send({"damaged": line.decode(errors="replace")})


def answer(port, request):
    try:
        done = subprocess.run(request["run"], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, timeout=request.get("timeout", 60))
        status, output = done.returncode, done.stdout
    except subprocess.TimeoutExpired as expired:
        status, output = 124, expired.stdout or b""
    except OSError as error:
        status, output = 127, str(error).encode()
    port.send({"id": request["id"], "status": status,
               "output": output.decode(errors="replace")})


def unquoted(value):
    # logind writes these as for C.
    if "\\" not in value:
        return value
    return value.encode("latin-1", "backslashreplace").decode("unicode_escape").encode(
        "latin-1", "replace").decode(errors="replace")


def lock_in(path):
    with open(path, encoding="utf-8", errors="replace") as file:
        pairs = dict(line.rstrip("\n").split("=", 1) for line in file if "=" in line)
    return {ours: unquoted(pairs.get(theirs, "")) for theirs, ours in FIELDS.items()}


def locks():
    found = []
    for name in sorted(os.listdir(LOCKS)):
        if name.startswith(".") or name.endswith(".ref"):
            continue
        try:
            found.append(lock_in(os.path.join(LOCKS, name)))
        except OSError:
            pass  # It has just been released.
    return found


def slept():
    """For how many seconds the machine has slept since its start."""
    return time.clock_gettime(time.CLOCK_BOOTTIME) - time.clock_gettime(time.CLOCK_MONOTONIC)


def main():
    port = Port()
    port.send({"hello": os.uname().release})
    seen_at, seen, slept_before = None, None, slept()
    while True:
        if slept() > slept_before + 0.5:
            slept_before = slept()
            port.send({"awake": slept_before})
        for request in port.requests():
            threading.Thread(target=answer, args=(port, request), daemon=True).start()
        try:
            changed_at = os.stat(LOCKS).st_mtime_ns
            if changed_at != seen_at:
                seen_at, now = changed_at, locks()
                if now != seen:
                    seen = now
                    port.send({"locks": now})
        except OSError:
            pass  # logind has not started yet.


main()
