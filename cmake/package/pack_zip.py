"""pack_zip.py <folder> <ZIP>: packs the files of a folder so that who packs them, when and in which time zone does not show.

Names are in order, modes the same, the time is SOURCE_DATE_EPOCH. (CMake's own archiver writes the user's number into a ZIP.)
"""

import os
import pathlib
import sys
import time
import zipfile

folder = pathlib.Path(sys.argv[1])
date_time = time.gmtime(int(os.environ["SOURCE_DATE_EPOCH"]))[:6]
with zipfile.ZipFile(sys.argv[2], "w") as packed:
    for name in sorted(path.relative_to(folder).as_posix() for path in folder.rglob("*") if path.is_file()):
        member = zipfile.ZipInfo(name, date_time)
        member.create_system = 3  # the modes are those of Unix, wherever it is packed
        member.external_attr = 0o100644 << 16
        packed.writestr(member, (folder / name).read_bytes(), zipfile.ZIP_DEFLATED, 9)
