# Run by `cmake --install`: copies the public headers, and has them name each other as <roster/…>, so that no folder of
# a host (core/, search/) can stand in for ours.
#   SOURCE        the folder that our quoted includes start from
#   STAGE         a folder of the build tree for the copies
#   DESTINATION   where they are installed
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/PublicHeaders.cmake)

# The C face stands at the front door: <roster/roster.h>.
function(stage_header header)
    file(READ ${SOURCE}/${header} text)
    string(REGEX REPLACE "(#include )\"([^\"]+)\"" "\\1<roster/\\2>" text "${text}")
    string(REPLACE "<roster/api/roster.h>" "<roster/roster.h>" text "${text}")
    string(REGEX REPLACE "^api/roster.h$" "roster.h" path ${header})
    file(WRITE ${STAGE}/${path} "${text}")
endfunction()

file(REMOVE_RECURSE ${STAGE})
set(waiting ${ROSTER_PUBLIC_HEADERS})
set(staged)
while(waiting)
    list(POP_FRONT waiting header)
    if(NOT header IN_LIST staged)
        stage_header(${header})
        list(APPEND staged ${header})
        file(STRINGS ${SOURCE}/${header} includes REGEX "^#include \"")
        list(TRANSFORM includes REPLACE "^#include \"([^\"]+)\".*" "\\1")
        list(APPEND waiting ${includes})
    endif()
endwhile()
file(INSTALL DESTINATION ${DESTINATION} TYPE DIRECTORY FILES ${STAGE}/)
