# What is shipped. Applications name Quillmark::tsp alone.

# The exported names, one a line, as a version script for the linker. A test holds the list against the library.
set(QUILLMARK_EXPORTED_NAMES ${CMAKE_CURRENT_LIST_DIR}/exported_names.txt)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${QUILLMARK_EXPORTED_NAMES})
file(STRINGS ${QUILLMARK_EXPORTED_NAMES} exported_names REGEX "^[^#]")
list(JOIN exported_names ";\n        " exported_names)
set(version_script ${CMAKE_CURRENT_BINARY_DIR}/quillmark_tsp.map)
file(CONFIGURE OUTPUT ${version_script} CONTENT
"{
    global:
        @exported_names@;
    local:
        *;
};
" @ONLY)

# Everything of values, runtime, asn1data, asn1 and tsp, hidden but for the exported names.
add_library(quillmark_tsp SHARED
    $<TARGET_OBJECTS:quillmark_values>
    $<TARGET_OBJECTS:quillmark_runtime>
    $<TARGET_OBJECTS:quillmark_support>
    $<TARGET_OBJECTS:quillmark_asn1data>
    $<TARGET_OBJECTS:quillmark_asn1_objects>
    $<TARGET_OBJECTS:quillmark_tsp_objects>)
set_target_properties(quillmark_tsp PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION 1 LINK_DEPENDS ${version_script} LINKER_LANGUAGE CXX)
target_link_libraries(quillmark_tsp PRIVATE quillmark_build_flags quillmark_platform)
# The heap hooks are data that an application may interpose, so functions alone are bound inside.
target_link_options(quillmark_tsp PRIVATE
    -Wl,-Bsymbolic-functions -Wl,--version-script=${version_script} -Wl,--gc-sections)
if(NOT QUILLMARK_SANITIZERS)
    # The sanitizers' run-time comes with the program.
    target_link_options(quillmark_tsp PRIVATE -Wl,--no-undefined)
endif()

# The object layer, for applications: exported signatures name its classes though the shared library
# does not export them. It holds nothing that the shared library exports.
add_library(quillmark_asn1 STATIC
    $<TARGET_OBJECTS:quillmark_support>
    $<TARGET_OBJECTS:quillmark_asn1data>
    $<TARGET_OBJECTS:quillmark_asn1_objects>)
set_target_properties(quillmark_asn1 PROPERTIES LINKER_LANGUAGE CXX)
target_link_libraries(quillmark_asn1 PRIVATE $<BUILD_INTERFACE:quillmark_build_flags>)

add_library(quillmark_user INTERFACE)
add_library(Quillmark::tsp ALIAS quillmark_user)
target_compile_features(quillmark_user INTERFACE cxx_std_17)
target_include_directories(quillmark_user INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
target_link_libraries(quillmark_user INTERFACE quillmark_asn1 quillmark_tsp quillmark_platform)

# All floors in one archive, hidden names within reach: for unit tests only, never shipped.
add_library(quillmark_all_floors STATIC EXCLUDE_FROM_ALL
    $<TARGET_OBJECTS:quillmark_values>
    $<TARGET_OBJECTS:quillmark_runtime>
    $<TARGET_OBJECTS:quillmark_support>
    $<TARGET_OBJECTS:quillmark_asn1data>
    $<TARGET_OBJECTS:quillmark_asn1_objects>
    $<TARGET_OBJECTS:quillmark_tsp_objects>)
set_target_properties(quillmark_all_floors PROPERTIES LINKER_LANGUAGE CXX)
target_link_libraries(quillmark_all_floors PUBLIC quillmark_asn1data_headers quillmark_platform)

include(${CMAKE_CURRENT_LIST_DIR}/Install.cmake)
