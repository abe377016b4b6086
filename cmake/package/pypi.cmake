# The packages of the Python Package Index: a wheel for each width, with its library beside the binding, and a source
# distribution, which says to every other system why there is nothing to install. Made by setuptools and wheel.
include("${CMAKE_CURRENT_LIST_DIR}/staging.cmake")
gputune_stage(pypi)

# One tree for all three; the libraries are what makes a wheel of it.
set(binding "${prefix}/share/gputune/bindings/python")
file(STRINGS "${binding}/gputune.py" line REGEX "^__version__ = ")
if(NOT line STREQUAL "__version__ = \"${VERSION}\"")
    message(FATAL_ERROR "bindings/python/gputune.py has ${line}, the project version ${VERSION}")
endif()
set(own "${CMAKE_CURRENT_LIST_DIR}/pypi")
gputune_fill("${own}/pyproject.toml" source/pyproject.toml)
gputune_put("${own}/setup.py" source/setup.py)
gputune_put("${own}/README.md" source/README.md)
gputune_put("${prefix}/share/gputune/LICENSE" source/LICENSE)
gputune_put("${binding}/gputune.py" source/gputune/__init__.py)
gputune_put("${prefix}/include/gputune.h" source/gputune/gputune.h)
gputune_put("${prefix}/share/gputune/licenses/THIRD-PARTY.txt" source/gputune/THIRD-PARTY.txt)
# Says that the types in it are meant for its users.
file(WRITE "${work}/py.typed" "")
gputune_put("${work}/py.typed" source/gputune/py.typed)
gputune_put("${prefix}/bin/gputune.dll" win32/gputune.dll)
gputune_put("${prefix}/bin/x64/gputune.dll" win_amd64/gputune.dll)
gputune_run("${stage}" "${PYTHON}" -B "${own}/build.py" "${OUTPUT}")
file(REMOVE_RECURSE "${work}")
