# A stranger's project: one target, linked against what find_package brings.
cmake_minimum_required(VERSION 3.16)
project(Stranger LANGUAGES ${LANGUAGE})
find_package(Roster ${WANTED} REQUIRED)
set(CMAKE_CXX_STANDARD 20)
add_executable(round_trip ${SOURCE})
target_link_libraries(round_trip PRIVATE Roster::roster)
