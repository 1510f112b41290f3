"""Stands in for a service manager: starts a command, adopts whatever below it loses its parent, and
reaps it.

    adopter.py COMMAND...
"""
import ctypes
import os
import sys

PR_SET_CHILD_SUBREAPER = 36

if ctypes.CDLL(None).prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0) != 0:
    sys.exit("cannot adopt")
if os.fork() == 0:
    os.execvp(sys.argv[1], sys.argv[1:])
try:
    while True:
        os.wait()
except ChildProcessError:
    """Nothing is left."""
