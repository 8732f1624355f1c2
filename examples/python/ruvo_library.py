#!/usr/bin/env python3
"""Calls the library of ruvo from Python, without a module of its own.

    ruvo_library.py LIBRARY scramble                  reads a password from standard input
    ruvo_library.py LIBRARY check SITE.ini RV003      the exit status is the result of the connection test
"""

import ctypes
import os
import sys

SCRAMBLED_SIZE, PASSWORD_SIZE = 23, 9  # as ruvo/ruvo.h has them


class Library:
    def __init__(self, path):
        # On Windows ruvo.dll, whose functions are of the kind "stdcall".
        load = ctypes.WinDLL if os.name == "nt" else ctypes.CDLL
        self.functions = load(path)
        for name in ("TestConnectionExt", "encrypt", "decrypt"):
            function = self.functions[name]
            function.restype = ctypes.c_int32
            function.argtypes = [ctypes.c_char_p, ctypes.c_char_p]

    def test_connection(self, ini, key):
        return self.functions.TestConnectionExt(os.fsencode(ini), key.encode("ascii"))

    def encrypt(self, password):
        scrambled = ctypes.create_string_buffer(SCRAMBLED_SIZE)
        if self.functions.encrypt(password, scrambled) != 0:
            raise ValueError(f"a password has at most {PASSWORD_SIZE - 1} characters")
        return scrambled.value

    def decrypt(self, scrambled):
        password = ctypes.create_string_buffer(PASSWORD_SIZE)
        if self.functions.decrypt(scrambled, password) != 0:
            raise ValueError("no scrambled password")
        return password.value


def main(words):
    if words[1:] == ["scramble"]:
        print(Library(words[0]).encrypt(sys.stdin.buffer.readline().rstrip(b"\r\n")).decode("ascii"))
        return 0
    if len(words) == 4 and words[1] == "check":
        return Library(words[0]).test_connection(words[2], words[3])
    print(__doc__, file=sys.stderr)
    return 64


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
