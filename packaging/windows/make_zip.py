#!/usr/bin/env python3
"""Packs a folder so that the same files make the same bytes: make_zip.py FOLDER FILE.zip

Every entry has the time that SOURCE_DATE_EPOCH names, which other packers fill with those of the disk.
"""

import os
import pathlib
import sys
import time
import zipfile

folder = pathlib.Path(sys.argv[1])
moment = time.gmtime(int(os.environ["SOURCE_DATE_EPOCH"]))[:6]
with zipfile.ZipFile(sys.argv[2], "w", zipfile.ZIP_DEFLATED, compresslevel=9) as packed:
    for file in sorted(path for path in folder.rglob("*") if path.is_file()):
        entry = zipfile.ZipInfo(file.relative_to(folder.parent).as_posix(), moment)
        entry.compress_type = zipfile.ZIP_DEFLATED
        entry.external_attr = 0o644 << 16
        packed.writestr(entry, file.read_bytes())
