"""check_wheels.py <directory>: each wheel holds what its name says, and RECORD lists it all with right checksums."""

import base64
import csv
import email
import hashlib
import io
import pathlib
import sys
import zipfile

MACHINES = {"win32": 0x14C, "win_amd64": 0x8664}

wheels = sorted(pathlib.Path(sys.argv[1]).glob("*.whl"))
assert [wheel.name.split("-")[4] for wheel in wheels] == ["win32.whl", "win_amd64.whl"], wheels
for path in wheels:
    name, version, *tags = path.stem.split("-")
    assert (name, tags[:2]) == ("gputune", ["py3", "none"]), path.name
    wheel = zipfile.ZipFile(path)
    names = wheel.namelist()
    information = f"gputune-{version}.dist-info/"
    assert sorted(file for file in names if file.startswith("gputune/")) == [
        "gputune/THIRD-PARTY.txt", "gputune/__init__.py", "gputune/gputune.dll", "gputune/gputune.h", "gputune/py.typed",
    ], names
    assert any(file.startswith(information) and file.endswith("LICENSE") for file in names), names
    library = wheel.read("gputune/gputune.dll")
    header = int.from_bytes(library[60:64], "little")
    assert int.from_bytes(library[header + 4:header + 6], "little") == MACHINES[tags[2]], f"{path.name}: the other width"

    metadata = email.message_from_bytes(wheel.read(information + "METADATA"))
    assert (metadata["Name"], metadata["Version"], metadata["Requires-Python"]) == ("gputune", version, ">=3.8"), metadata
    assert "Typing :: Typed" in metadata.get_all("Classifier")
    described = email.message_from_bytes(wheel.read(information + "WHEEL"))
    assert (described["Root-Is-Purelib"], described["Tag"]) == ("false", "-".join(tags)), described

    record = {row[0]: row[1:] for row in csv.reader(io.StringIO(wheel.read(information + "RECORD").decode()))}
    assert sorted(record) == sorted(names), "RECORD lists other files"
    for file, (checksum, size) in record.items():
        if not file.endswith("/RECORD"):
            content = wheel.read(file)
            digest = base64.urlsafe_b64encode(hashlib.sha256(content).digest()).rstrip(b"=").decode()
            assert (checksum, int(size)) == (f"sha256={digest}", len(content)), file
