# What cpack makes of the build: two Debian packages, one for the programs that use the library and one for those who
# build them. The libraries take the packages that they need from dpkg-shlibdeps.
set(runtime_package libquillmark-tsp1)
set(development_package libquillmark-tsp-dev)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quillmark-tsp)
set(CPACK_PACKAGE_VENDOR "Quillmark TSP")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_DEB_COMPONENT_INSTALL ON)
# In a system folder the loader finds the platform service without help.
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/remove_search_paths.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/finish_packages.cmake)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "Quillmark TSP")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${runtime_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "Time-Stamp Protocol (RFC 3161), shared libraries
Requests, tokens and responses of the Time-Stamp Protocol, for clients that
ask for a stamp and for authorities that give one. This package holds what
programs need to run.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
# Where the service lies that the library in the same package needs.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/platform)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${development_package})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "Time-Stamp Protocol (RFC 3161), development files
Requests, tokens and responses of the Time-Stamp Protocol, for clients that
ask for a stamp and for authorities that give one. This package holds headers,
the static library of the object layer, and what CMake and pkg-config need.")
# The compiler is the user's choice, the standard library's headers are not.
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "${runtime_package} (= ${PROJECT_VERSION}), libstdc++-12-dev | libstdc++-dev")
# For applications that open keys with libcrypto themselves.
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS libssl-dev)

# What Debian wants in every package, and a plain installation does not.
set(changelog ${CMAKE_CURRENT_BINARY_DIR}/changelog.gz)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/packaging/changelog)
execute_process(COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/packaging/changelog
    OUTPUT_FILE ${changelog} COMMAND_ERROR_IS_FATAL ANY)
foreach(component runtime development)
    install(FILES ${changelog} ${PROJECT_SOURCE_DIR}/packaging/copyright
        DESTINATION share/doc/${${component}_package} COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()

include(CPack)
