"""A picture of a machine's screen, and what of it can be told without looking at it."""
import dataclasses
import re
import struct
import zlib

CHANNELS = 3


@dataclasses.dataclass(frozen=True)
class Picture:
    width: int
    height: int
    pixels: bytes  #: Red, green and blue of each, row after row.

    @staticmethod
    def of_ppm(data):
        """From what QEMU dumps."""
        head = re.match(rb"P6\s(\d+)\s(\d+)\s255\s", data)
        if not head:
            raise ValueError("not a picture of this kind")
        return Picture(int(head[1]), int(head[2]), data[head.end():])

    def row(self, y):
        stride = self.width * CHANNELS
        return self.pixels[y * stride:(y + 1) * stride]

    def changed(self, before):
        """The least box (left, top, right, bottom) around what differs, or nothing."""
        if (self.width, self.height) != (before.width, before.height):
            return 0, 0, self.width, self.height
        rows = [y for y in range(self.height) if self.row(y) != before.row(y)]
        if not rows:
            return None
        columns = [x for y in rows for x in ends(self.row(y), before.row(y))]
        return min(columns), rows[0], max(columns) + 1, rows[-1] + 1

    def same_rows(self, other):
        """How many of the rows are the same: from 0, none, to 1, all."""
        if (self.width, self.height) != (other.width, other.height):
            return 0.0
        return sum(self.row(y) == other.row(y) for y in range(self.height)) / self.height

    def brightness(self):
        """From 0, all black, to 255, all white."""
        return sum(self.pixels) / len(self.pixels)

    def save(self, path):
        """As PNG."""
        rows = b"".join(b"\0" + self.row(y) for y in range(self.height))
        head = struct.pack(">IIBBBBB", self.width, self.height, 8, 2, 0, 0, 0)
        parts = ((b"IHDR", head), (b"IDAT", zlib.compress(rows)), (b"IEND", b""))
        path.write_bytes(b"\x89PNG\r\n\x1a\n" + b"".join(chunk(*part) for part in parts))


def ends(row, other):
    """The first and the last pixel that differ in two rows that do."""
    differ = [index // CHANNELS for index, (one, two) in enumerate(zip(row, other)) if one != two]
    return differ[0], differ[-1]


def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
