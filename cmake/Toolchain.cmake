# What every target of the project is compiled with. It hangs on one interface target that is linked
# privately, so that none of it reaches the users of the library.
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_program(QUILLMARK_CCACHE ccache)
if(QUILLMARK_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${QUILLMARK_CCACHE})
endif()

add_library(quillmark_build_flags INTERFACE)
target_compile_options(quillmark_build_flags INTERFACE -Wall -Wextra -Wconversion -Wshadow)
target_include_directories(quillmark_build_flags INTERFACE ${PROJECT_SOURCE_DIR})
if(QUILLMARK_WARNINGS_AS_ERRORS)
    target_compile_options(quillmark_build_flags INTERFACE -Werror)
endif()
if(QUILLMARK_SANITIZERS)
    target_compile_options(quillmark_build_flags INTERFACE
        -fsanitize=${QUILLMARK_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(quillmark_build_flags INTERFACE -fsanitize=${QUILLMARK_SANITIZERS})
endif()
if(QUILLMARK_HARDENED AND NOT QUILLMARK_SANITIZERS)
    include(${CMAKE_CURRENT_LIST_DIR}/Hardening.cmake)
    quillmark_harden(quillmark_build_flags)
endif()
if(QUILLMARK_FUZZ)
    # Tells the fuzzer which branches an input takes, in the library as in the targets.
    target_compile_options(quillmark_build_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(QUILLMARK_COVERAGE)
    # Counted by atomic additions: some tests run the library in several threads.
    target_compile_options(quillmark_build_flags INTERFACE --coverage -fprofile-update=atomic)
    target_link_options(quillmark_build_flags INTERFACE --coverage)
endif()

# One object library per floor; they are joined into what is shipped by cmake/Libraries.cmake.
function(quillmark_add_floor name)
    add_library(${name} OBJECT ${ARGN})
    target_compile_features(${name} PUBLIC cxx_std_17 PRIVATE cxx_std_20)
    # Functions are bound inside the library when it is linked, so the compiler may take them for what they are.
    target_compile_options(${name} PRIVATE -fno-semantic-interposition)
    target_link_libraries(${name} PRIVATE quillmark_build_flags)
endfunction()
