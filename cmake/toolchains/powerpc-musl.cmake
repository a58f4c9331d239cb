# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# The card itself: 32-bit big-endian PowerPC, hard float, musl, static.
set(TARVELD_TARGET powerpc-linux-musl)
set(CMAKE_SYSTEM_PROCESSOR powerpc)
set(CMAKE_OBJCOPY powerpc-linux-gnu-objcopy CACHE FILEPATH "")
set(CMAKE_NM powerpc-linux-gnu-nm CACHE FILEPATH "")
include("${CMAKE_CURRENT_LIST_DIR}/zig-musl.cmake")
set(CMAKE_CROSSCOMPILING_EMULATOR "${_tools}/run-powerpc")
