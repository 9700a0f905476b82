# What is installed: the three libraries, the headers of all floors but the generated one, and what find_package and
# pkg-config need. Sources write the same include lines in the tree and after installation. The component `runtime` is
# what programs need to run, `development` what is needed to build them. A test holds installed_files.txt against both.

# Debian keeps the libraries of each architecture in a folder of their own, under /usr and under /usr/local, and looks
# for them there. GNUInstallDirs knows it of /usr alone.
if(PROJECT_IS_TOP_LEVEL AND EXISTS /etc/debian_version AND CMAKE_LIBRARY_ARCHITECTURE)
    set(CMAKE_INSTALL_LIBDIR lib/${CMAKE_LIBRARY_ARCHITECTURE} CACHE PATH "Where libraries are installed")
endif()
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(include_dir ${CMAKE_INSTALL_INCLUDEDIR}/quillmark)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Quillmark)

target_include_directories(quillmark_user INTERFACE $<INSTALL_INTERFACE:${include_dir}>)
set_target_properties(quillmark_user PROPERTIES EXPORT_NAME tsp)
# The platform service lies beside it.
set_target_properties(quillmark_tsp PROPERTIES EXPORT_NAME tsp_library INSTALL_RPATH $ORIGIN)
set_target_properties(quillmark_asn1 PROPERTIES EXPORT_NAME asn1)
set_target_properties(quillmark_platform PROPERTIES EXPORT_NAME platform)
install(TARGETS quillmark_user quillmark_tsp quillmark_asn1 quillmark_platform EXPORT QuillmarkTargets
    LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE COMPONENT development)
install(EXPORT QuillmarkTargets NAMESPACE Quillmark:: DESTINATION ${package_dir} COMPONENT development)

foreach(floor values runtime asn1 tsp platform)
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/${floor} DESTINATION ${include_dir} COMPONENT development
        FILES_MATCHING PATTERN "*.h" PATTERN detail EXCLUDE)
endforeach()

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/QuillmarkConfig.cmake.in
    ${CMAKE_CURRENT_BINARY_DIR}/QuillmarkConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/QuillmarkConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/QuillmarkConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/QuillmarkConfigVersion.cmake
    DESTINATION ${package_dir} COMPONENT development)

# From the folder of the .pc file up to the prefix, however deep the library folder lies.
file(RELATIVE_PATH prefix_from_pkgconfig /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(${CMAKE_CURRENT_LIST_DIR}/quillmark-tsp.pc.in ${CMAKE_CURRENT_BINARY_DIR}/quillmark-tsp.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/quillmark-tsp.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
