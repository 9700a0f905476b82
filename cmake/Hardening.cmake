# What turns a defect into an abort instead of a break-in. It is part of what every target is compiled with; under
# sanitizers, which find the same and more, it is left out. Flags that the compiler does not know are left out too.
include(CheckCXXCompilerFlag)
include(CheckPIESupported)

check_pie_supported()

# quillmark_harden(target): adds the flags to what the interface target hands on
function(quillmark_harden target)
    foreach(flag
            -fstack-protector-strong
            -fstack-clash-protection
            -fcf-protection=full          # x86
            -mbranch-protection=standard) # ARM
        string(MAKE_C_IDENTIFIER "QUILLMARK_HAS${flag}" known)
        check_cxx_compiler_flag(${flag} ${known})
        if(${known})
            target_compile_options(${target} INTERFACE ${flag})
        endif()
    endforeach()

    # Bounds of the C library's functions need the optimizer; who packages the library may ask for a level of his own.
    if(NOT CMAKE_CXX_FLAGS MATCHES "_FORTIFY_SOURCE")
        target_compile_options(${target} INTERFACE
            "$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
    endif()
    # Bounds of the standard library's containers and views.
    target_compile_definitions(${target} INTERFACE _GLIBCXX_ASSERTIONS)

    target_link_options(${target} INTERFACE -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
endfunction()
