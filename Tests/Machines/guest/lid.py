#!/usr/bin/python3
"""A lid that the machine's kernel takes for a real one: lid.py FIFO. Each line of the FIFO, 1 or 0,
closes or opens it. It is gone when the program ends."""
import fcntl
import os
import struct
import sys

EV_SYN, EV_SW, SW_LID = 0x00, 0x05, 0x00
BUS_VIRTUAL = 0x06
# From linux/uinput.h, for this kind of machine.
UI_SET_EVBIT, UI_SET_SWBIT = 0x40045564, 0x4004556D
UI_DEV_SETUP, UI_DEV_CREATE = 0x405C5503, 0x5501
EVENT = struct.Struct("@qqHHi")


def setup():
    identity = struct.pack("@HHHH", BUS_VIRTUAL, 1, 1, 1)
    return identity + b"Trial lid".ljust(80, b"\0") + struct.pack("@I", 0)


def write(device, kind, code, value):
    os.write(device, EVENT.pack(0, 0, kind, code, value))


def main():
    device = os.open("/dev/uinput", os.O_WRONLY)
    fcntl.ioctl(device, UI_SET_EVBIT, EV_SW)
    fcntl.ioctl(device, UI_SET_SWBIT, SW_LID)
    fcntl.ioctl(device, UI_DEV_SETUP, setup())
    fcntl.ioctl(device, UI_DEV_CREATE)
    while True:
        with open(sys.argv[1]) as fifo:
            for line in fifo:
                write(device, EV_SW, SW_LID, int(line))
                write(device, EV_SYN, 0, 0)


main()
