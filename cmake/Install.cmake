# What `cmake --install` lays down, in three components that are packages of their own: what programs run on (Library),
# what programmers build against (Development), and the command-line tool (Tool).
include(CMakePackageConfigHelpers)

set(packages ${CMAKE_INSTALL_LIBDIR}/cmake/Roster)

install(TARGETS roster EXPORT RosterTargets
    LIBRARY COMPONENT Library NAMELINK_COMPONENT Development
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS zrd RosterSync DESTINATION ${ROSTER_INSTALL_HELPERDIR} COMPONENT Library)
install(TARGETS roster_tool COMPONENT Tool)

# Outside the places that the system's loader looks into, the tool finds the library from where it lies itself.
if(NOT CMAKE_INSTALL_FULL_LIBDIR IN_LIST CMAKE_CXX_IMPLICIT_LINK_DIRECTORIES)
    file(RELATIVE_PATH libraries ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
    set_target_properties(roster_tool PROPERTIES INSTALL_RPATH "$ORIGIN/${libraries}")
endif()

install(CODE "
    set(SOURCE \"${PROJECT_SOURCE_DIR}/src\")
    set(STAGE \"${PROJECT_BINARY_DIR}/headers\")
    set(DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_INCLUDEDIR}/roster\")
    include(\"${PROJECT_SOURCE_DIR}/cmake/InstallHeaders.cmake\")"
    COMPONENT Development)

# For CMake: find_package(Roster), target Roster::roster. For everybody else: pkg-config roster.
install(EXPORT RosterTargets NAMESPACE Roster:: FILE RosterConfig.cmake DESTINATION ${packages} COMPONENT Development)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/RosterConfigVersion.cmake COMPATIBILITY SameMajorVersion)
file(RELATIVE_PATH ROSTER_PREFIX_FROM_PKGCONFIG
    ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" ROSTER_PREFIX_FROM_PKGCONFIG ${ROSTER_PREFIX_FROM_PKGCONFIG})
configure_file(cmake/roster.pc.in roster.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/RosterConfigVersion.cmake DESTINATION ${packages} COMPONENT Development)
install(FILES ${PROJECT_BINARY_DIR}/roster.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT Development)

# The pages and completions that are there: of commands in section 1, of their language and files in 5 and 7.
foreach(section 1 5 7)
    file(GLOB pages CONFIGURE_DEPENDS docs/man/*.${section})
    install(FILES ${pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT Tool)
endforeach()
install(FILES tools/completions/roster.bash RENAME roster
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT Tool)
install(FILES tools/completions/_roster
    DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT Tool)
install(FILES tools/completions/roster.fish
    DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT Tool)

# Licence and notices go with each component. The tables of countries inside the library have authors of their own.
function(roster_install_licence component package)
    install(FILES cmake/copyright LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
endfunction()
roster_install_licence(Library libroster${PROJECT_VERSION_MAJOR})
roster_install_licence(Development libroster-dev)
roster_install_licence(Tool roster)
install(FILES resources/README-ZRAddressFormats.md resources/README-ZRPhoneFormats.md
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libroster${PROJECT_VERSION_MAJOR} COMPONENT Library)
install(DIRECTORY examples/ DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libroster-dev/examples COMPONENT Development)
