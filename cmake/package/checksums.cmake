# Run by CPack over the files it is about to pack.
include("${CMAKE_CURRENT_LIST_DIR}/zip.cmake")
gputune_checksums("${CPACK_TEMPORARY_DIRECTORY}")
