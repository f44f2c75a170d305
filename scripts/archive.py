#!/usr/bin/env python3
"""Makes a zip archive of a folder: archive.py FOLDER ARCHIVE

The archive is the same whoever makes it, and where. Its files bear the time that SOURCE_DATE_EPOCH names in seconds since
1970, and without one the first that an archive can hold.
"""

import os
import pathlib
import sys
import time
import zipfile

FIRST = 315532800  # 1980, in seconds since 1970


def write(folder, archive):
    moment = time.gmtime(max(FIRST, int(os.environ.get("SOURCE_DATE_EPOCH", FIRST))))[:6]
    with zipfile.ZipFile(archive, "w") as zipped:
        for file in sorted(path for path in folder.rglob("*") if path.is_file()):
            entry = zipfile.ZipInfo(file.relative_to(folder.parent).as_posix(), moment)
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.create_system = 3
            entry.external_attr = 0o100644 << 16
            zipped.writestr(entry, file.read_bytes())


write(pathlib.Path(sys.argv[1]).resolve(), sys.argv[2])
