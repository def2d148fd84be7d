# The Debian packages: libkx7text1, libkx7text-dev and kx7conv, a component each. `./dev package` makes them.

set(packages libkx7text1 libkx7text-dev kx7conv)
set(CPACK_COMPONENTS_ALL runtime development tools)
if(KX7_DEBIAN)
    # The documentation that the policy asks for. Compressed without a time in it.
    find_program(KX7_DPKG_GENSYMBOLS dpkg-gensymbols REQUIRED)
    set(changelog ${PROJECT_BINARY_DIR}/package/changelog.Debian.gz)
    execute_process(
        COMMAND ${KX7_GZIP} -9nc ${PROJECT_SOURCE_DIR}/packaging/debian/changelog
        OUTPUT_FILE ${changelog}
        COMMAND_ERROR_IS_FATAL ANY
    )
    foreach(package component IN ZIP_LISTS packages CPACK_COMPONENTS_ALL)
        kx7_install_folders(${component} ${CMAKE_INSTALL_DATADIR}/doc/${package})
        install(
            FILES ${PROJECT_SOURCE_DIR}/packaging/debian/copyright ${changelog}
            DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package}
            COMPONENT ${component}
        )
    endforeach()

    # For the dependencies of packages built with the library: its symbols, and the oldest version that has them.
    set(control ${PROJECT_BINARY_DIR}/package/control)
    file(WRITE ${control}/shlibs "libkx7text 1 libkx7text1 (>= ${PROJECT_VERSION})\n")
    file(WRITE ${control}/triggers "activate-noawait ldconfig\n")
    add_custom_command(
        TARGET kx7text
        POST_BUILD
        COMMAND
            ${KX7_DPKG_GENSYMBOLS} -plibkx7text1 -v${PROJECT_VERSION} -e$<TARGET_FILE:kx7text> -q -c0
            -I${PROJECT_SOURCE_DIR}/packaging/debian/libkx7text1.symbols -O${control}/symbols
        VERBATIM
    )
    # CPack strips programs and shared libraries, but no archives.
    add_custom_command(
        TARGET kx7text_static
        POST_BUILD
        COMMAND ${CMAKE_STRIP} --strip-debug --enable-deterministic-archives $<TARGET_FILE:kx7text_static>
        VERBATIM
    )
    set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${control}/shlibs ${control}/symbols ${control}/triggers)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_SOURCE_DIR}/build/package)
set(CPACK_PACKAGE_VENDOR kx7text)
set(CPACK_PACKAGE_CONTACT "kx7text developers <kx7text@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/debian/finish.cmake)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
# Older than a package of the distribution's own would be.
set(CPACK_DEBIAN_PACKAGE_RELEASE 0kx1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)

set(about "41 character sets (Unicode forms, Windows code pages, ISO 8859, East
Asian multibyte sets) to and from UTF-16, with every table compiled in.")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libkx7text1)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "character-set conversion and UTF-16 text - library
${about}

This package holds the shared library.")

set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libkx7text-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "character-set conversion and UTF-16 text - development files
${about}

This package holds the headers, the archive, the files for CMake and
pkg-config, and the manual of the functions.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME kx7conv)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION text)
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "converter of text between character sets
${about}

kx7conv stops at the first bad byte and says where, unless told otherwise,
and keeps memory bounded at any size of its input.")

include(CPack)
