# Run by an installation, before anything else is installed: makes the folders of `KX7_FOLDERS` that do not exist, and
# those above them, for everybody. CMake would make them as the umask of who installs or packs leaves them, which
# CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS does not change. Folders that exist keep their modes.
foreach(folder IN LISTS KX7_FOLDERS)
    if(NOT IS_ABSOLUTE "${folder}")
        string(PREPEND folder "${CMAKE_INSTALL_PREFIX}/")
    endif()
    set(path "$ENV{DESTDIR}${folder}")
    set(missing)
    while(NOT EXISTS "${path}")
        list(PREPEND missing "${path}")
        cmake_path(GET path PARENT_PATH path)
    endwhile()
    foreach(path IN LISTS missing)
        file(MAKE_DIRECTORY "${path}")
        file(
            CHMOD "${path}"
            PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE
        )
    endforeach()
endforeach()
