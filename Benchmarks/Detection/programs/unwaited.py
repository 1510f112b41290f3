"""A parent that ignores the end of its children, so that the kernel tells it nothing of what they
used. Two children work at a time.

    unwaited.py SECONDS

Each child takes so much CPU time.
"""
import os
import signal
import sys
import time


def work(seconds):
    end = time.process_time() + seconds
    while time.process_time() < end:
        pass


signal.signal(signal.SIGCHLD, signal.SIG_IGN)
while True:
    for _ in range(2):
        if os.fork() == 0:
            work(float(sys.argv[1]))
            os._exit(0)
    try:
        os.wait()  # Returns when none is left, and knows of none that ended.
    except ChildProcessError:
        pass
