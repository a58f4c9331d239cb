# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# What the static musl builds share. The including file sets TARVELD_TARGET, as in "powerpc-linux-musl";
# TARVELD_SYSROOT is the place of the libraries built for it.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TARVELD_SYSROOT)

get_filename_component(_tools "${CMAKE_CURRENT_LIST_DIR}/../../tools/target/bin" ABSOLUTE)
set(_prefix "${_tools}/${TARVELD_TARGET}-")
set(CMAKE_C_COMPILER "${_prefix}cc")
set(CMAKE_CXX_COMPILER "${_prefix}c++")
foreach(_variable CMAKE_AR CMAKE_C_COMPILER_AR CMAKE_CXX_COMPILER_AR)
  set(${_variable} "${_prefix}ar" CACHE FILEPATH "")
endforeach()
foreach(_variable CMAKE_RANLIB CMAKE_C_COMPILER_RANLIB CMAKE_CXX_COMPILER_RANLIB)
  set(${_variable} "${_prefix}ranlib" CACHE FILEPATH "")
endforeach()

# Relocations that are read-only after the start, and a stack that is not executable, are what its linker does by itself.
set(_hardening "-fstack-protector-strong")

# The section flags must stand on the link line too: zig compiles its C++ library there, and without them nothing of
# it is collected. The source makes it do so even when only objects are linked; 130 KB less in the end.
set(CMAKE_C_FLAGS_INIT "-ffunction-sections -fdata-sections ${_hardening}")
set(CMAKE_CXX_FLAGS_INIT "-ffunction-sections -fdata-sections ${_hardening}")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -s -Wl,--gc-sections")
set(CMAKE_CXX_STANDARD_LIBRARIES_INIT "${CMAKE_CURRENT_LIST_DIR}/runtime.cpp")

# zig builds its C++ library once for each kind of optimisation and stripping, which takes a minute: CMake's own checks
# shall use the kind that the programs use.
set(CMAKE_TRY_COMPILE_CONFIGURATION MinSizeRel)

# A root of its own, so that find_package never picks up the building machine's /usr.
list(APPEND CMAKE_FIND_ROOT_PATH "${_tools}" "${TARVELD_SYSROOT}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
