# What winget and Scoop read to install gputunectl: folders winget/ and scoop/ with manifests of the ZIP that
# component-zips.cmake has put into the output directory, and its SHA-256. Beside BUILDS and OUTPUT (staging.cmake), URL says
# where the ZIP will be downloaded from: an https address of a folder.
include("${CMAKE_CURRENT_LIST_DIR}/staging.cmake")
if(NOT URL MATCHES "^https://[^/\"\\ ]+(/[^\"\\ ]*)?$")
    message(FATAL_ERROR "\"${URL}\" is no https address")
endif()
string(REGEX REPLACE "/+$" "" URL "${URL}")
set(ZIP "gputunectl-${VERSION}-windows.zip")
file(SHA256 "${OUTPUT}/${ZIP}" SHA256)

set(stage "${OUTPUT}")
foreach(kind IN ITEMS "" .installer .locale.en-US)
    gputune_fill("${CMAKE_CURRENT_LIST_DIR}/winget/gputune.gputunectl${kind}.yaml.in" "winget/gputune.gputunectl${kind}.yaml")
endforeach()
gputune_fill("${CMAKE_CURRENT_LIST_DIR}/scoop/gputunectl.json.in" scoop/gputunectl.json)
