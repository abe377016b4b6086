# What an installation is made of, by component. Every path is relative to the prefix, which can be moved. The builds of both
# widths can be installed under one prefix: what is for 64-bit processes goes into folders x64 (`width`), what serves both is
# the same file in both builds.
#
#   library        bin/gputune.dll
#   development    include/, lib/: import libraries, CMake package, pkg-config file
#   tool           bin/gputunectl.exe and the example profile file, which it reads from bin/Config
#   simulation     bin/sim, share/gputune/boards
#   simulation_development  headers, import libraries and pkg-config file for programs that use simulated boards
#   bindings       share/gputune/bindings
#   monitoring     share/gputune/prometheus, share/gputune/grafana
#   readme         README.txt, which says what is where in an installation of everything
#   documentation  share/gputune: documents, licences, the bill of materials, the example profile file, the schemas
#   symbols        debug/: what debuggers and addr2line read. Not part of an installation that is not asked for it
if(NOT WIN32)
    return()
endif()
include(CMakePackageConfigHelpers)
include(import-library)
include(package/documents)

install(TARGETS gputune
    RUNTIME DESTINATION "bin${width}" COMPONENT library
    ARCHIVE DESTINATION "lib${width}" COMPONENT development)

gputune_microsoft_import_library(gputune microsoftLibrary)
gputune_microsoft_import_library(gputune_sim microsoftSimLibrary)
if(microsoftLibrary)
    install(FILES "${microsoftLibrary}" DESTINATION "lib${width}" COMPONENT development)
    install(FILES "${microsoftSimLibrary}" DESTINATION "lib${width}" COMPONENT simulation_development)
endif()
install(FILES include/gputune.h DESTINATION include COMPONENT development)

# All that has to be built before an installation.
add_custom_target(package_contents DEPENDS gputune gputunectl sim)
if(microsoftLibrary)
    add_dependencies(package_contents gputune_microsoft_import_library gputune_sim_microsoft_import_library)
endif()

set(packageDir "${PROJECT_BINARY_DIR}/package")
configure_package_config_file(cmake/package/gputuneConfig.cmake.in "${packageDir}/gputuneConfig.cmake"
    INSTALL_DESTINATION lib/cmake/gputune
    NO_SET_AND_CHECK_MACRO)
# One package for hosts of both widths: it looks itself whether it has what the host needs.
write_basic_package_version_file("${packageDir}/gputuneConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion ARCH_INDEPENDENT)
install(FILES "${packageDir}/gputuneConfig.cmake" "${packageDir}/gputuneConfigVersion.cmake"
    DESTINATION lib/cmake/gputune COMPONENT development)
# pkg-config knows libraries of several widths by the folders that it looks into: a file of the same name in each lib.
file(RELATIVE_PATH pkgConfigPrefix "/lib${width}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" pkgConfigPrefix "${pkgConfigPrefix}")
configure_file(cmake/package/gputune.pc.in "${packageDir}/gputune.pc" @ONLY)
install(FILES "${packageDir}/gputune.pc" DESTINATION "lib${width}/pkgconfig" COMPONENT development)
configure_file(cmake/package/gputune_sim.pc.in "${packageDir}/gputune_sim.pc" @ONLY)
install(FILES "${packageDir}/gputune_sim.pc" DESTINATION "lib${width}/pkgconfig" COMPONENT simulation_development)

install(TARGETS gputunectl RUNTIME DESTINATION "bin${width}" COMPONENT tool)
install(FILES Config/ConfigModel.xml DESTINATION "bin${width}/Config" COMPONENT tool)

# The folder as it was built: stand-ins have a folder for each vendor, and some come under two names.
install(DIRECTORY "${GPUTUNE_BIN_DIR}/sim" DESTINATION "bin${width}" COMPONENT simulation FILES_MATCHING PATTERN "*.dll")
install(FILES "$<TARGET_LINKER_FILE:gputune_sim>" DESTINATION "lib${width}" COMPONENT simulation_development)
install(DIRECTORY sim/include/ DESTINATION include COMPONENT simulation_development)
install(DIRECTORY boards DESTINATION share/gputune COMPONENT simulation)

# For someone who has unpacked the ZIP on Windows; README.md is for the source tree.
configure_file(cmake/package/README.txt.in "${packageDir}/README.txt" @ONLY NEWLINE_STYLE CRLF)
install(FILES "${packageDir}/README.txt" DESTINATION . COMPONENT readme)
# Laid out as in the source tree, so that the links between the documents hold.
gputune_released_documents("${packageDir}/docs")
gputune_bill_of_materials("${packageDir}/gputune.cdx.json")
install(FILES CHANGELOG.md LICENSE "${packageDir}/gputune.cdx.json" DESTINATION share/gputune COMPONENT documentation)
install(DIRECTORY "${packageDir}/docs" licenses Config DESTINATION share/gputune COMPONENT documentation)
install(FILES schema/ConfigModel.xsd schema/gputunectl.schema.json schema/test-kit.schema.json
    DESTINATION share/gputune/schema COMPONENT documentation)
install(DIRECTORY bindings DESTINATION share/gputune COMPONENT bindings
    FILES_MATCHING REGEX "\\.(cs|js|json|py|ts)$"
    PATTERN node_modules EXCLUDE PATTERN __pycache__ EXCLUDE)
# What Prometheus and Grafana read.
install(DIRECTORY monitoring/ DESTINATION share/gputune COMPONENT monitoring)

get_property(programs GLOBAL PROPERTY GPUTUNE_RELEASED_PROGRAMS)
foreach(program IN LISTS programs)
    install(FILES "${GPUTUNE_DEBUG_DIR}/$<TARGET_FILE_NAME:${program}>.debug"
        DESTINATION "debug${width}" COMPONENT symbols EXCLUDE_FROM_ALL)
endforeach()
