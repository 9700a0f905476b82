# Runs in cpack, over the files of each package before they are packed.
file(GLOB_RECURSE libraries ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*.so.*)
foreach(library IN LISTS libraries)
    if(NOT IS_SYMLINK ${library})
        file(RPATH_REMOVE FILE ${library})
    endif()
endforeach()
