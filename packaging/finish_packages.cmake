# Runs in cpack, over the packages that it has made: turns what it writes for every kind of Debian into what the policy
# asks for today. The linker's cache is brought up to date by a trigger, so that no script of ours runs on the user's
# machine (policy 8.1.1), and packages of several architectures can be installed side by side.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
    set(tree ${package}.tree)
    execute_process(COMMAND dpkg-deb --raw-extract ${package} ${tree} COMMAND_ERROR_IS_FATAL ANY)
    file(READ ${tree}/DEBIAN/control control)
    string(STRIP "${control}" control)
    file(WRITE ${tree}/DEBIAN/control "${control}\nMulti-Arch: same\n")
    if(EXISTS ${tree}/DEBIAN/shlibs)
        file(REMOVE ${tree}/DEBIAN/postinst ${tree}/DEBIAN/postrm)
        file(WRITE ${tree}/DEBIAN/triggers "activate-noawait ldconfig\n")
    endif()
    execute_process(COMMAND dpkg-deb --root-owner-group --build ${tree} ${package}
        OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE_RECURSE ${tree})
endforeach()
