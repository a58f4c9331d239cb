# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# Native builds are hardened here; tools/check_hardening verifies the result. A cross build takes its flags from its
# toolchain, which knows the card's compiler and C library; OpenWrt, for one, brings hardening options of its own.

if(CMAKE_CROSSCOMPILING)
    set(hardening_default OFF)
else()
    set(hardening_default ON)
endif()
option(TARVELD_HARDENING "Harden the binaries" ${hardening_default})

if(TARVELD_HARDENING)
    include(CheckPIESupported)
    check_pie_supported(LANGUAGES CXX)
    set(CMAKE_POSITION_INDEPENDENT_CODE ON)

    add_compile_options(-fstack-protector-strong)
    add_compile_definitions(_GLIBCXX_ASSERTIONS)
    # Fortification needs optimisation, and sanitizers (which run in Debug builds here) see more without it.
    add_compile_options(
        $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE>
        $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-D_FORTIFY_SOURCE=2>)
    add_link_options(LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
endif()
