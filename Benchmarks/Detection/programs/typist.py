"""A shell on a terminal of its own, whose user types a small command every four seconds."""
import itertools
import os
import pty
import select
import time

COMMANDS = ["ls -l /usr/bin | wc -l", "git --version", "grep -r PATH /etc/profile", "cd /; ls",
            "df -h .", "date", "find /etc -maxdepth 2 -name '*.conf' | sort | head", "history"]

pid, terminal = pty.fork()
if pid == 0:
    os.execv("/bin/bash", ["bash", "--norc", "-i"])
for command in itertools.cycle(COMMANDS):
    typing = time.monotonic() + 4
    while (left := typing - time.monotonic()) > 0:
        if select.select([terminal], [], [], left)[0]:
            os.read(terminal, 65536)
    os.write(terminal, command.encode() + b"\n")
