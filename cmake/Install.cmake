# What is installed: the three libraries, the headers of all floors but the generated one, and what find_package and
# pkg-config need. Sources write the same include lines in the tree and after installation.
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
install(TARGETS quillmark_user quillmark_tsp quillmark_asn1 quillmark_platform EXPORT QuillmarkTargets)
install(EXPORT QuillmarkTargets NAMESPACE Quillmark:: DESTINATION ${package_dir})

foreach(floor values runtime asn1 tsp platform)
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/${floor} DESTINATION ${include_dir}
        FILES_MATCHING PATTERN "*.h" PATTERN detail EXCLUDE)
endforeach()

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/QuillmarkConfig.cmake.in
    ${CMAKE_CURRENT_BINARY_DIR}/QuillmarkConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/QuillmarkConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/QuillmarkConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/QuillmarkConfigVersion.cmake DESTINATION ${package_dir})

# From the folder of the .pc file up to the prefix, however deep the library folder lies.
file(RELATIVE_PATH prefix_from_pkgconfig /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(${CMAKE_CURRENT_LIST_DIR}/quillmark-tsp.pc.in ${CMAKE_CURRENT_BINARY_DIR}/quillmark-tsp.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/quillmark-tsp.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
