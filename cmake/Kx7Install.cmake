# What is installed, in three components: runtime (the shared library), development (headers, archive, package files,
# manual of the functions) and tools (kx7conv, its manual and completion).
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

option(KX7_INSTALL_SHARED "Install the shared library" ON)
option(KX7_INSTALL_STATIC "Install the archive" ON)

set(KX7_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/kx7text)

# Called before what is installed into the folders.
function(kx7_install_folders component)
    install(CODE "set(KX7_FOLDERS \"${ARGN}\")" COMPONENT ${component})
    install(SCRIPT ${PROJECT_SOURCE_DIR}/cmake/Kx7InstallFolders.cmake COMPONENT ${component})
endfunction()

kx7_install_folders(runtime ${CMAKE_INSTALL_LIBDIR})
kx7_install_folders(development ${CMAKE_INSTALL_LIBDIR}/pkgconfig ${KX7_CMAKE_DIR} ${CMAKE_INSTALL_MANDIR}/man3)
if(KX7_BUILD_CLI)
    kx7_install_folders(
        tools ${CMAKE_INSTALL_BINDIR} ${CMAKE_INSTALL_MANDIR}/man1 ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
    )
endif()

set(libraries)
if(KX7_INSTALL_SHARED)
    list(APPEND libraries kx7text)
endif()
if(KX7_INSTALL_STATIC)
    list(APPEND libraries kx7text_static)
endif()
foreach(library ${libraries})
    install(
        TARGETS ${library}
        EXPORT kx7textTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    )
endforeach()

# A header whose first line says "(internal)" is not for callers.
file(GLOB_RECURSE headers CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/kx7/*.h)
foreach(header ${headers})
    file(STRINGS ${PROJECT_SOURCE_DIR}/${header} first_line LIMIT_COUNT 1)
    if(NOT first_line MATCHES "\\(internal\\)")
        get_filename_component(folder ${header} DIRECTORY)
        if(NOT folder IN_LIST header_folders)
            list(APPEND header_folders ${folder})
            kx7_install_folders(development ${CMAKE_INSTALL_INCLUDEDIR}/${folder})
        endif()
        install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${folder} COMPONENT development)
    endif()
endforeach()

install(EXPORT kx7textTargets NAMESPACE kx7text:: DESTINATION ${KX7_CMAKE_DIR} COMPONENT development)
configure_package_config_file(
    packaging/kx7textConfig.cmake.in ${PROJECT_BINARY_DIR}/package/kx7textConfig.cmake
    INSTALL_DESTINATION ${KX7_CMAKE_DIR}
    NO_SET_AND_CHECK_MACRO
)
write_basic_package_version_file(
    ${PROJECT_BINARY_DIR}/package/kx7textConfigVersion.cmake COMPATIBILITY SameMajorVersion
)
install(
    FILES ${PROJECT_BINARY_DIR}/package/kx7textConfig.cmake ${PROJECT_BINARY_DIR}/package/kx7textConfigVersion.cmake
    DESTINATION ${KX7_CMAKE_DIR}
    COMPONENT development
)

# The prefix follows from where the file lies, so that an installation can be moved; absolute folders stay as they are.
set(KX7_PC_PREFIX ${CMAKE_INSTALL_PREFIX})
if(NOT IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
    file(RELATIVE_PATH up /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
    string(REGEX REPLACE "/$" "" up ${up})
    set(KX7_PC_PREFIX "\${pcfiledir}/${up}")
endif()
foreach(folder INCLUDEDIR LIBDIR)
    if(IS_ABSOLUTE "${CMAKE_INSTALL_${folder}}")
        set(KX7_PC_${folder} ${CMAKE_INSTALL_${folder}})
    else()
        set(KX7_PC_${folder} "\${prefix}/${CMAKE_INSTALL_${folder}}")
    endif()
endforeach()
configure_file(packaging/kx7text.pc.in ${PROJECT_BINARY_DIR}/package/kx7text.pc @ONLY)
install(
    FILES ${PROJECT_BINARY_DIR}/package/kx7text.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development
)

option(KX7_DEBIAN "Install what Debian packages hold beside the components' own files" OFF)

# Debian's manual pages are compressed.
if(KX7_DEBIAN)
    find_program(KX7_GZIP gzip REQUIRED)
endif()

# A manual page stands under each name of its NAME section.
function(kx7_install_manual section component)
    file(GLOB pages CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/share/man/man${section}/*.${section})
    set(folder ${PROJECT_BINARY_DIR}/package/man${section})
    file(REMOVE_RECURSE ${folder})
    file(MAKE_DIRECTORY ${folder})
    foreach(page ${pages})
        get_filename_component(own_name ${page} NAME)
        if(KX7_GZIP)
            # Without a time in it, so that the same sources give the same package.
            execute_process(
                COMMAND ${KX7_GZIP} -9nc ${page} OUTPUT_FILE ${folder}/${own_name}.gz COMMAND_ERROR_IS_FATAL ANY
            )
            set(suffix .gz)
        else()
            file(COPY ${page} DESTINATION ${folder})
            set(suffix "")
        endif()
        set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${page})
        file(STRINGS ${page} lines)
        set(in_name FALSE)
        foreach(line ${lines})
            if(line MATCHES "^\\.Sh ")
                string(COMPARE EQUAL "${line}" ".Sh NAME" in_name)
            elseif(in_name AND line MATCHES "^\\.Nm ([A-Za-z0-9_:]+)")
                set(name ${CMAKE_MATCH_1}.${section})
                if(NOT name STREQUAL own_name)
                    file(CREATE_LINK ${own_name}${suffix} ${folder}/${name}${suffix} SYMBOLIC)
                endif()
            endif()
        endforeach()
    endforeach()
    install(DIRECTORY ${folder}/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT ${component})
endfunction()

kx7_install_manual(3 development)
if(KX7_BUILD_CLI)
    install(TARGETS kx7conv RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
    kx7_install_manual(1 tools)
    if(EXISTS ${PROJECT_SOURCE_DIR}/share/bash-completion/completions/kx7conv)
        install(
            FILES share/bash-completion/completions/kx7conv
            DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
            COMPONENT tools
        )
    endif()
endif()
