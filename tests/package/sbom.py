#!/usr/bin/python3
"""sbom.py <bill of materials> <folder of debug files> <THIRD-PARTY.txt> <schemas>|-

The bill of materials names what is in the programs: what their symbols show is held against it, in both directions, and the
table of THIRD-PARTY.txt. With the schemas of CycloneDX (a folder), it is valid, too.
"""

import json
import pathlib
import re
import subprocess
import sys

# A component that has functions of its own in every program that it is in, and the symbol of one of them.
TRACES = {
    "tinyxml2": r"_*ZN8tinyxml2",
    "nlohmann-json": r"_*ZN8nlohmann",
    "CLI11": r"_*ZN3CLI3App",
    "civetweb": r"_?mg_start2?\b",
    "uPlot": r"_*ZNK?7gputune8embedded12kUplotScript",
    "GCC runtime libraries": r"_*ZS(t|9)|_*ZN?St|___?cxa_",
    "mingw-w64 runtime": r"_+mingw_",
    "winpthreads": r"_+pthread_|_*pthread_",
}

bom = json.loads(pathlib.Path(sys.argv[1]).read_text(encoding="utf-8"))
folder, licences, schemas = pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3]), sys.argv[4]
failures = []


def expect(condition, what):
    if not condition:
        failures.append(what)


def symbols(file):
    return subprocess.run(["x86_64-w64-mingw32-nm", file], check=True, capture_output=True, text=True).stdout


expect(bom["bomFormat"] == "CycloneDX" and bom["specVersion"] == "1.6" and bom["version"] == 1, "not CycloneDX 1.6")
release = bom["metadata"]["component"]
depends = {entry["ref"]: entry["dependsOn"] for entry in bom["dependencies"]}
programs = set(depends[release["bom-ref"]])
parts = {part["bom-ref"]: part for part in bom["components"] if part["bom-ref"] not in programs}
expect(len(parts) == len(bom["components"]) - len(programs), "a component is there twice")
expect(len(programs) > 5, f"few programs: {programs}")
for name, part in parts.items():
    expect(re.fullmatch(r"\d+(\.\d+)*", part["version"]), f"{name}: version {part['version']}")
    expect(len(part["licenses"]) == 1 and part["purl"].endswith(part["version"]), f"{name}: licence or origin is missing")
    expect(part["externalReferences"][0]["url"].startswith("https://"), f"{name}: no source")
    expect(any(name in parts_ for parts_ in depends.values()), f"{name} is in no program")
    expect(name in TRACES, f"{name}: sbom.py knows no symbol of it")
    expect(re.search(rf"^  .*\b{re.escape(name.split()[0])}\b", licences.read_text(encoding="utf-8"), re.M | re.I),
           f"{name} is not in {licences.name}")

# What is in the files. Those for 64 bits have other names, which no target has.
files = {file.name.split(".")[0]: file for file in folder.glob("*.debug")}
files = {{"ControlLib": "ControlLib32", "nvapi64": "nvapi"}.get(name, name): file for name, file in files.items()}
expect(programs == set(files), f"programs {sorted(programs)}, debug files {sorted(files)}")
for name in programs & set(files):
    text = symbols(files[name])
    for part, trace in TRACES.items():
        found = re.search(rf" [a-zA-Z] (?:{trace})", text)
        expect(bool(found) == (part in depends[name]), f"{part} is {'' if found else 'not '}in {name}, unlike what is said")

if schemas != "-":
    import jsonschema

    def schema(name):
        return json.loads(pathlib.Path(schemas, name).read_text(encoding="utf-8"))

    # The files name each other, beside where the first one says that it is.
    main = schema("bom-1.6.SNAPSHOT.schema.json")
    store = {f"{main['$id'].rpartition('/')[0]}/{name}": schema(name)
             for name in ("spdx.SNAPSHOT.schema.json", "jsf-0.82.SNAPSHOT.schema.json")}
    validator = jsonschema.Draft7Validator(main, resolver=jsonschema.RefResolver.from_schema(main, store=store))
    for error in validator.iter_errors(bom):
        failures.append(f"{'/'.join(map(str, error.absolute_path))}: {error.message}")

print("\n".join(failures) or f"{len(programs)} programs, {len(parts)} components")
sys.exit(bool(failures))
