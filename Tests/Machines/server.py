#!/usr/bin/python3
"""The other end of the machine's download: QEMU starts it for each connection, which is its input and
output. Sends 400 KB in a second until nobody reads any more."""
import sys
import time

PIECE = bytes(40 * 1024)
PAUSE_SECONDS = 0.1

try:
    while sys.stdin.buffer.readline().strip():
        pass
    sys.stdout.buffer.write(b"HTTP/1.0 200 OK\r\nContent-Type: application/octet-stream\r\n\r\n")
    while True:
        sys.stdout.buffer.write(PIECE)
        sys.stdout.buffer.flush()
        time.sleep(PAUSE_SECONDS)
except OSError:
    pass
