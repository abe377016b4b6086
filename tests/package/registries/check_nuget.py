"""check_nuget.py <package>: a package as the Open Packaging Conventions and NuGet want it."""

import pathlib
import sys
import xml.etree.ElementTree as ElementTree
import zipfile

CONVENTIONS = "{http://schemas.openxmlformats.org/package/2006/"
MANIFEST = "{http://schemas.microsoft.com/packaging/2013/05/nuspec.xsd}"
BUILD = "{http://schemas.microsoft.com/developer/msbuild/2003}"

path = pathlib.Path(sys.argv[1])
package = zipfile.ZipFile(path)
assert package.testzip() is None
names = package.namelist()
assert names == sorted(names) and len(names) == len(set(names)), names
# Nothing of who packed it.
assert all(member.external_attr >> 16 == 0o100644 and not member.extra for member in package.infolist())


def tree(name):
    return ElementTree.fromstring(package.read(name))


# Every part has a type, and what the relationships lead to is there.
types = {default.get("Extension") for default in tree("[Content_Types].xml")}
for name in names:
    assert name == "[Content_Types].xml" or name.rsplit(".", 1)[-1] in types, f"{name} has no type"
targets = {relation.get("Type").rsplit("/", 1)[-1]: relation.get("Target") for relation in tree("_rels/.rels")}
assert targets["manifest"] == "/gputune.nuspec", targets
assert targets["core-properties"].lstrip("/") in names, targets

metadata = {element.tag.replace(MANIFEST, ""): element.text for element in tree("gputune.nuspec")[0]}
assert path.name == f"{metadata['id']}.{metadata['version']}.nupkg", (path, metadata)
for key in ("authors", "description", "license"):
    assert metadata[key], key
assert metadata["readme"] in names
assert metadata["version"] == tree(targets["core-properties"].lstrip("/")).find(
    CONVENTIONS + "metadata/core-properties}version").text

# NuGet takes the files of build/ that have the package's name; what they name by a path is there.
for name, count in (("build/gputune.targets", 4), ("build/native/gputune.targets", 0)):
    included = [item.get("Include") for item in tree(name).iter() if "MSBuildThisFileDirectory" in item.get("Include", "")]
    assert len(included) == count, included
    for file in included:
        relative = file.replace("$(MSBuildThisFileDirectory)..\\", "").replace("\\", "/")
        assert relative in names, f"{name} names {relative}"
definitions = tree("build/native/gputune.targets").find(BUILD + "ItemDefinitionGroup")
found = {setting.tag.replace(BUILD, ""): setting.text for tool in definitions for setting in tool}
for setting, value in (("AdditionalIncludeDirectories", "$(GputuneIncludeDirectory)"),
                       ("AdditionalLibraryDirectories", "$(GputuneLibraryDirectory)"),
                       ("AdditionalDependencies", "gputune.lib")):
    assert found[setting] == f"{value};%({setting})", found
for file in ("README.md", "LICENSE.txt", "THIRD-PARTY.txt", "build/native/include/gputune.h"):
    assert file in names, file
