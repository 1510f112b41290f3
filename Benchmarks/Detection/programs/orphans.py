"""Hands work to processes that lose their parent at once (a double fork), as daemons do. Two of
them work at a time, each for a tenth of a CPU second.
"""
import os
import time


def work():
    end = time.process_time() + 0.1
    while time.process_time() < end:
        pass


def start_orphan():
    """Returns a descriptor that is at its end when the orphan has ended."""
    reading, writing = os.pipe()
    child = os.fork()
    if child == 0:
        if os.fork() == 0:
            os.close(reading)
            work()
        os._exit(0)
    os.close(writing)
    os.waitpid(child, 0)
    return reading


while True:
    for ending in [start_orphan(), start_orphan()]:
        os.read(ending, 1)
        os.close(ending)
