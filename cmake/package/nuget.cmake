# The package of NuGet, gputune.<version>.nupkg: a ZIP in the form of the Open Packaging Conventions. For C# it has the binding as
# source, which every compiler makes for its project's own framework, with that project's own idea of null; for C++ header and
# import libraries; for both the libraries, as runtimes/. Its two .targets say what a project makes of it.
include("${CMAKE_CURRENT_LIST_DIR}/staging.cmake")
gputune_stage(nuget)

set(own "${CMAKE_CURRENT_LIST_DIR}/nuget")
set(coreProperties "package/services/metadata/core-properties/gputune.psmdcp")
gputune_fill("${own}/gputune.nuspec" gputune.nuspec)
gputune_fill("${own}/content-types.xml" "[Content_Types].xml")
gputune_fill("${own}/rels.xml" _rels/.rels)
gputune_fill("${own}/core-properties.xml" "${coreProperties}")
gputune_put("${own}/README.md" README.md)
gputune_put("${own}/managed.targets" build/gputune.targets)
gputune_put("${own}/native.targets" build/native/gputune.targets)
foreach(file IN ITEMS Gputune.cs IGraphicsBoard.cs)
    gputune_put("${prefix}/share/gputune/bindings/csharp/${file}" "src/${file}")
endforeach()
gputune_put("${prefix}/include/gputune.h" build/native/include/gputune.h)
gputune_put("${prefix}/bin/gputune.dll" runtimes/win-x86/native/gputune.dll)
gputune_put("${prefix}/bin/x64/gputune.dll" runtimes/win-x64/native/gputune.dll)
gputune_put("${prefix}/lib/gputune.lib" build/native/lib/x86/gputune.lib)
gputune_put("${prefix}/lib/x64/gputune.lib" build/native/lib/x64/gputune.lib)
gputune_put("${prefix}/share/gputune/LICENSE" LICENSE.txt)
gputune_put("${prefix}/share/gputune/licenses/THIRD-PARTY.txt" THIRD-PARTY.txt)

gputune_run("${stage}" "${PYTHON}" -B "${CMAKE_CURRENT_LIST_DIR}/pack_zip.py" . "${OUTPUT}/gputune.${VERSION}.nupkg")
file(REMOVE_RECURSE "${work}")
