# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# Native builds are hardened here; tools/check_hardening verifies the result. A cross build takes its flags from its
# toolchain, which knows the card's compiler and C library (zig-musl.cmake hardens, too); OpenWrt, for one, brings
# hardening options of its own.

if(CMAKE_CROSSCOMPILING)
    set(hardening_default OFF)
else()
    set(hardening_default ON)
endif()
option(TARVELD_HARDENING "Harden the binaries" ${hardening_default})

if(TARVELD_HARDENING)
    include(CheckCXXCompilerFlag)
    include(CheckPIESupported)
    check_pie_supported(LANGUAGES CXX)
    set(CMAKE_POSITION_INDEPENDENT_CODE ON)

    add_compile_options(-fstack-protector-strong)
    add_compile_definitions(_GLIBCXX_ASSERTIONS)
    # What needs optimisation, and what would hide from the sanitizers (they run in Debug builds here) what they look for.
    set(optimised $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
    add_compile_options("$<${optimised}:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=3>")
    foreach(flag -fstack-clash-protection -ftrivial-auto-var-init=zero)
        string(MAKE_C_IDENTIFIER "hardens${flag}" known)
        check_cxx_compiler_flag(${flag} ${known})
        if(${known})
            add_compile_options($<${optimised}:${flag}>)
        endif()
    endforeach()
    add_link_options(LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
endif()
