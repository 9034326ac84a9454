# The house is built room by room: one object library a folder, which may use only the rooms it names.
# Object libraries do not hand on their objects, so each room remembers every room below it, and a
# program, a test or the shared library links that whole list.

# roster_room(NAME SOURCES file… [ROOMS room…] [LIBRARIES target…])
function(roster_room name)
    cmake_parse_arguments(ROOM "" "" "SOURCES;ROOMS;LIBRARIES" ${ARGN})
    add_library(${name} OBJECT ${ROOM_SOURCES})
    target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(${name} PUBLIC ${ROOM_LIBRARIES} Threads::Threads PRIVATE roster_compiler)
    roster_rooms_below(below ${ROOM_ROOMS})
    foreach(room ${below})
        target_include_directories(${name} PUBLIC $<TARGET_PROPERTY:${room},INTERFACE_INCLUDE_DIRECTORIES>)
    endforeach()
    set_property(GLOBAL PROPERTY ROSTER_BELOW_${name} ${below} ${name})
    set_property(GLOBAL APPEND PROPERTY ROSTER_ROOMS ${name})
endfunction()

# The named rooms with all rooms below them, each once.
function(roster_rooms_below result)
    set(all)
    foreach(room ${ARGN})
        get_property(below GLOBAL PROPERTY ROSTER_BELOW_${room})
        list(APPEND all ${below})
    endforeach()
    list(REMOVE_DUPLICATES all)
    set(${result} ${all} PARENT_SCOPE)
endfunction()

# roster_program(NAME SOURCES file… ROOMS room… [LIBRARIES target…])
function(roster_program name)
    cmake_parse_arguments(PROGRAM "" "" "SOURCES;ROOMS;LIBRARIES" ${ARGN})
    roster_rooms_below(rooms ${PROGRAM_ROOMS})
    add_executable(${name} ${PROGRAM_SOURCES})
    target_link_libraries(${name} PRIVATE ${rooms} ${PROGRAM_LIBRARIES} roster_compiler)
endfunction()

# roster_test(NAME SOURCES file… ROOMS room… [LIBRARIES target…] [LABELS label…] [TIMEOUT seconds])
# One CTest entry for the program, run in an environment of its own (tests/support/main.cpp).
function(roster_test name)
    cmake_parse_arguments(TEST "" "TIMEOUT" "SOURCES;ROOMS;LIBRARIES;LABELS" ${ARGN})
    roster_program(${name} SOURCES ${TEST_SOURCES} ROOMS ${TEST_ROOMS}
        LIBRARIES ${TEST_LIBRARIES} test_support GTest::gmock GTest::gtest)
    add_test(NAME ${name} COMMAND ${name})
    if(NOT TEST_TIMEOUT)
        set(TEST_TIMEOUT 300)
    endif()
    set_tests_properties(${name} PROPERTIES LABELS "${TEST_LABELS}" TIMEOUT ${TEST_TIMEOUT})
endfunction()
