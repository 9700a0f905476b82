# The target `docs`: API documentation by Doxygen, in docs/html of the build.
find_package(Doxygen QUIET)
if(NOT DOXYGEN_FOUND)
    message(STATUS "No doxygen: there is no target docs")
    return()
endif()

find_package(Python3 3.9 REQUIRED COMPONENTS Interpreter)
set(output ${PROJECT_BINARY_DIR}/docs)
set(QUILLMARK_DOXYFILE ${PROJECT_BINARY_DIR}/Doxyfile)
configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile.in ${QUILLMARK_DOXYFILE} @ONLY)
add_custom_target(docs
    COMMAND ${CMAKE_COMMAND} -E make_directory ${output}
    COMMAND ${DOXYGEN_EXECUTABLE} ${QUILLMARK_DOXYFILE}
    COMMENT "Writing ${output}/html/index.html"
    VERBATIM)
