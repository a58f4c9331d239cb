# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# A second opinion on the card's processor from another compiler and another libc: gcc and glibc. Time and file
# offsets are 64 bits wide only when asked for; musl's always are.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR powerpc)
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TARVELD_SYSROOT)

get_filename_component(_tools "${CMAKE_CURRENT_LIST_DIR}/../../tools/target/bin" ABSOLUTE)
set(CMAKE_C_COMPILER powerpc-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER powerpc-linux-gnu-g++)
set(CMAKE_OBJCOPY powerpc-linux-gnu-objcopy CACHE FILEPATH "")
set(CMAKE_NM powerpc-linux-gnu-nm CACHE FILEPATH "")
set(CMAKE_C_FLAGS_INIT "-D_TIME_BITS=64 -D_FILE_OFFSET_BITS=64 -ffunction-sections -fdata-sections")
set(CMAKE_CXX_FLAGS_INIT "-D_TIME_BITS=64 -D_FILE_OFFSET_BITS=64 -ffunction-sections -fdata-sections")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-Wl,--gc-sections")
set(CMAKE_EXE_LINKER_FLAGS_MINSIZEREL_INIT "-s")
set(CMAKE_CROSSCOMPILING_EMULATOR "${_tools}/run-powerpc;-L;/usr/powerpc-linux-gnu")

list(APPEND CMAKE_FIND_ROOT_PATH /usr/powerpc-linux-gnu "${TARVELD_SYSROOT}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
