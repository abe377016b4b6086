"""manifests.py <directory of the programs> <version>

What the shipped images tell the system before they run: programs what they expect of it, DLLs nothing. A DLL runs under its
host's manifest; one of its own would only say which side-by-side libraries it wants, and these want none.
"""

import os
import sys
import xml.etree.ElementTree as xml

from image import Image
from images import shipped

_MANIFEST = 24  # type of resource

_SYSTEMS = {
    "{35138b9a-5d96-4fbd-8e2d-a2440225f93a}": "Windows 7",
    "{4a2f28e3-53b9-4441-ba9c-d69d4a4a6e38}": "Windows 8",
    "{1f676c76-80e1-4239-95bb-83d0f6d0da78}": "Windows 8.1",
    "{8e0f7a12-bfb3-4fe8-b9a5-48fd50a15a9a}": "Windows 10",
}

_SETTINGS = {
    "{http://schemas.microsoft.com/SMI/2019/WindowsSettings}activeCodePage": "UTF-8",
    "{http://schemas.microsoft.com/SMI/2016/WindowsSettings}longPathAware": "true",
}


def problems_of(manifest, name, version):
    root = xml.fromstring(manifest)
    first = "{urn:schemas-microsoft-com:asm.v1}"
    third = "{urn:schemas-microsoft-com:asm.v3}"
    compatibility = "{urn:schemas-microsoft-com:compatibility.v1}"
    problems = []
    if root.tag != first + "assembly" or root.get("manifestVersion") != "1.0":
        problems.append("is no assembly's manifest")
    identity = root.find(first + "assemblyIdentity")
    if identity is None or dict(identity.attrib) != {"type": "win32", "name": name, "version": f"{version}.0",
                                                     "processorArchitecture": "x86"}:
        problems.append(f"has another identity: {identity}")
    level = root.find(f"{third}trustInfo/{third}security/{third}requestedPrivileges/{third}requestedExecutionLevel")
    if level is None or dict(level.attrib) != {"level": "asInvoker", "uiAccess": "false"}:
        problems.append("asks for other rights than its caller has")
    systems = root.findall(f"{compatibility}compatibility/{compatibility}application/{compatibility}supportedOS")
    if sorted(system.get("Id") for system in systems) != sorted(_SYSTEMS):
        problems.append(f"does not know the systems {', '.join(_SYSTEMS.values())}")
    settings = root.find(f"{third}application/{third}windowsSettings")
    if settings is None or {setting.tag: setting.text for setting in settings} != _SETTINGS:
        problems.append("has other settings")
    return problems


def main(directory, version):
    failures = []
    for path in shipped(directory):
        with open(os.path.join(directory, path), "rb") as file:
            manifests = Image(file.read()).resources(_MANIFEST)
        if len(manifests) != path.endswith(".exe"):
            failures.append(f"{path} has {len(manifests)} manifests")
        for manifest in manifests:
            name = os.path.splitext(os.path.basename(path))[0]
            failures += [f"{path}: its manifest {problem}" for problem in problems_of(manifest, name, version)]
    print("\n".join(failures) or "the manifests are right")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
