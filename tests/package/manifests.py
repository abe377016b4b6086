#!/usr/bin/python3
"""manifests.py <release> <url> <version>

The manifests of winget and Scoop: they have the fields that their formats require and no others than these formats know, and
what they say of the ZIP is so. The published schemas are in no package registry; the shapes here have their constraints on the
fields that are used.
"""

import hashlib
import json
import pathlib
import sys
import zipfile

import jsonschema
import yaml

release, url, version = pathlib.Path(sys.argv[1]), sys.argv[2], sys.argv[3]


def record(required, optional=None):
    return {"type": "object", "properties": {**required, **(optional or {})}, "required": list(required),
            "additionalProperties": False}


def text(longest, shortest=1):
    return {"type": "string", "minLength": shortest, "maxLength": longest}


def every(items, longest=1024):
    return {"type": "array", "items": items, "minItems": 1, "maxItems": longest, "uniqueItems": True}


SHA256 = {"type": "string", "pattern": "^[A-Fa-f0-9]{64}$"}
URL = {"type": "string", "pattern": "^https://.+$", "maxLength": 2048}
COMMON = {
    "PackageIdentifier": {"type": "string", "maxLength": 128, "pattern": r"^[^.\s\\/:*?\"<>|]{1,32}(\.[^.\s\\/:*?\"<>|]{1,32}){1,7}$"},
    "PackageVersion": {"type": "string", "const": version},
    "ManifestVersion": {"type": "string", "const": "1.10.0"},
}
WINGET = {
    "": record({**COMMON, "ManifestType": {"const": "version"}, "DefaultLocale": {"const": "en-US"}}),
    ".installer": record({
        **COMMON, "ManifestType": {"const": "installer"}, "InstallerType": {"const": "zip"},
        "NestedInstallerType": {"const": "portable"},
        "Installers": every(record({
            "Architecture": {"enum": ["x86", "x64"]}, "InstallerUrl": URL, "InstallerSha256": SHA256,
            "NestedInstallerFiles": every(record({"RelativeFilePath": text(512)}, {"PortableCommandAlias": text(40)}))})),
    }, {"ArchiveBinariesDependOnPath": {"type": "boolean"}, "Commands": every(text(40), 16)}),
    ".locale.en-US": record({
        **COMMON, "ManifestType": {"const": "defaultLocale"}, "PackageLocale": {"const": "en-US"}, "Publisher": text(256, 2),
        "PackageName": text(256, 2), "License": text(512, 3), "ShortDescription": text(256, 3),
    }, {"Description": text(10000, 3), "Moniker": text(40), "Tags": every(text(40), 16)}),
}
SCOOP = record({
    "version": {"const": version}, "description": text(500), "homepage": URL, "license": {"const": "MIT"}, "url": URL,
    "hash": SHA256, "architecture": record({width: record({"bin": text(200)}) for width in ("64bit", "32bit")}),
}, {"notes": text(1000)})

problems = []


def check(name, value, shape):
    for error in jsonschema.Draft7Validator(shape).iter_errors(value):
        problems.append(f"{name}: {'/'.join(map(str, error.absolute_path))}: {error.message}")


def check_program(name, address, checksum, program, x64):
    """The program is in the ZIP that is at this address of the release."""
    file = release / address.removeprefix(url + "/")
    if address != f"{url}/{file.name}" or not file.is_file():
        problems.append(f"{name}: {address} is no file of the release")
        return
    if hashlib.sha256(file.read_bytes()).hexdigest() != checksum:
        problems.append(f"{name}: the checksum is not that of {file.name}")
    with zipfile.ZipFile(file) as archive:
        path = program.replace("\\", "/")
        image = archive.read(path)
        start = int.from_bytes(image[60:64], "little")
        if image[start + 4:start + 6] != (b"\x64\x86" if x64 else b"\x4c\x01"):
            problems.append(f"{name}: {program} is for another width")
        # What it is linked with lies beside it.
        archive.getinfo(path.replace("gputunectl.exe", "gputune.dll"))


identifiers = set()
for kind, shape in WINGET.items():
    file = release / "winget" / f"gputune.gputunectl{kind}.yaml"
    manifest = yaml.safe_load(file.read_text(encoding="utf-8"))
    check(file.name, manifest, shape)
    identifiers.add(manifest["PackageIdentifier"])
    for installer in manifest.get("Installers", []):
        for nested in installer["NestedInstallerFiles"]:
            check_program(file.name, installer["InstallerUrl"], installer["InstallerSha256"], nested["RelativeFilePath"],
                          installer["Architecture"] == "x64")
if identifiers != {"gputune.gputunectl"}:
    problems.append(f"several packages: {identifiers}")

scoop = json.loads((release / "scoop/gputunectl.json").read_text(encoding="utf-8"))
check("scoop", scoop, SCOOP)
for width, entry in scoop["architecture"].items():
    check_program("scoop", scoop["url"], scoop["hash"], entry["bin"], width == "64bit")

print("\n".join(problems) or "winget and Scoop have the tool of both widths")
sys.exit(bool(problems))
