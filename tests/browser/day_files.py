"""Writes day files and error logs, as docs/day-file-format.md has them, for pages to be made from."""

import datetime
import os
import struct

HEADER = b"APP: Parlane\r\nTYPE: EventList\r\nFORMAT: 1.0\r\nNEXTEXTENDED: 000001\r\n\r\nheaderText\r\n\x1a"


def text(value):
    data = value if isinstance(value, bytes) else value.encode("cp1252")
    return bytes([len(data)]) + data


def tagged(code, data):
    return bytes([code, len(data)]) + data


NO_VALUE = tagged(0xFF, b"")


def flags(word):
    return tagged(0x20, bytes([word]))


def unsigned(number):
    return tagged(0x24, struct.pack("<H", number))


def string(value):
    data = value.encode("cp1252")
    return tagged(0x18, data)


def stamp(time, trusted=True, summer=False):
    """Seven bytes; `time` may be bytes already, such as those of no real time."""
    if isinstance(time, bytes):
        return time
    return struct.pack("<HBBBBB", time.second * 1000 + time.microsecond // 1000,
                       time.minute | (0 if trusted else 0x80), time.hour | (0x80 if summer else 0), time.day, time.month, time.year % 100)


class Relay:
    """One relay's day files below a folder; records are kept by the day that they belong to."""

    def __init__(self, name, address, plant, description, model):
        self.name = name
        self.address = address
        self.about = text(plant) + text(description) + text(model)
        self.days = {}
        self.next_id = {}

    def _start(self, number, unique_id, time, location, event, value):
        return (bytes([number]) + struct.pack("<I", unique_id) + tagged(0x3C, stamp(time)) + b"\0" + text("") +
                bytes([1, self.address]) + self.about + bytes(reversed(location)) + text(event) + value)

    # A location is (column, row).

    def simple(self, time, location, event, value=NO_VALUE, form="", values=(), day=None):
        body = self._start(0, 0, time, location, event, value) + text(form) + b"".join(values)
        self._add(day or time.date(), b"\0" + struct.pack("<H", len(body)) + body)

    def extended(self, time, location, event, value, cells, day=None):
        """`cells`: (label, value, names of bits) each."""
        day = day or time.date()
        unique_id = self.next_id[day] = self.next_id.get(day, 0) + 1
        body = self._start(unique_id % 256, unique_id, time, location, event, value) + text("")
        rest = struct.pack("<I", unique_id)
        for label, cell, bits in cells:
            rest += text(label) + cell + bytes([len(bits)]) + b"".join(text(bit) for bit in bits)
        self._add(day, b"\0" + struct.pack("<H", len(body)) + body + b"\1" + struct.pack("<H", len(rest)) + rest)

    def raw(self, day, data):
        self._add(day, data)

    def _add(self, day, data):
        self.days.setdefault(day, []).append(data)

    def write(self, root):
        folder = os.path.join(root, self.name)
        os.makedirs(folder, exist_ok=True)
        for day, records in self.days.items():
            with open(os.path.join(folder, f"{self.name}-{day}-DEV.evt"), "wb") as file:
                file.write(HEADER + b"".join(records))


def write_log(path, lines):
    """`lines`: (time, text) each; a time of None gives a foreign line."""
    with open(path, "wb") as file:
        for time, line in lines:
            start = time.strftime("%Y/%m/%d %H:%M:%S ") if isinstance(time, datetime.datetime) else ""
            file.write((start + line + "\r\n").encode())
