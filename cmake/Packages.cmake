# Debian packages by CPack, one a component: libroster1, libroster-dev, roster (`make deb`, preset `deb`).
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME roster)
set(CPACK_PACKAGE_CONTACT "The authors of Roster <authors@roster.invalid>")
set(CPACK_COMPONENTS_ALL Library Development Tool)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
# What else the programs need is read from themselves; of the library, the tool needs the very version it came with.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(library libroster${PROJECT_VERSION_MAJOR})

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION
    "People, groups and their details in one store that several programs share:
the library, and the helper programs that it starts.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libroster-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "Headers for C and C++, files for CMake and pkg-config, and examples.")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME roster)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "${library} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_TOOL_DESCRIPTION
    "Imports, searches, edits, merges and exports the contacts of the user, and
completes addresses for mail programs.")

include(CPack)
