# kx7text - what CPack does not do for Debian packages: the field Multi-Arch, a trigger in place of scripts that call
# ldconfig, and folders with modes that do not follow from the umask. CPack runs this when the packages are built.
find_program(DPKG_DEB dpkg-deb REQUIRED)
set(folder ${CPACK_TEMPORARY_DIRECTORY}/finish)
foreach(package IN LISTS CPACK_PACKAGE_FILES)
    file(REMOVE_RECURSE ${folder})
    execute_process(COMMAND ${DPKG_DEB} --raw-extract ${package} ${folder} COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE ${folder}/DEBIAN/postinst ${folder}/DEBIAN/postrm)
    if(package MATCHES "/libkx7text")
        set(multi_arch same)
    else()
        set(multi_arch foreign)
    endif()
    file(READ ${folder}/DEBIAN/control control)
    string(STRIP "${control}" control)
    file(WRITE ${folder}/DEBIAN/control "${control}\nMulti-Arch: ${multi_arch}\n")
    file(GLOB_RECURSE paths LIST_DIRECTORIES TRUE ${folder}/*)
    foreach(path IN LISTS folder paths)
        if(IS_DIRECTORY ${path} AND NOT IS_SYMLINK ${path})
            file(
                CHMOD ${path}
                PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE
            )
        endif()
    endforeach()
    execute_process(
        COMMAND ${DPKG_DEB} --root-owner-group -Zxz --build ${folder} ${package} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY
    )
endforeach()
file(REMOVE_RECURSE ${folder})
