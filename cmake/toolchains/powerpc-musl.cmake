# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# The card itself: 32-bit big-endian PowerPC, hard float, musl, static.
set(TARVELD_TARGET powerpc-linux-musl)
set(CMAKE_SYSTEM_PROCESSOR powerpc)
set(CMAKE_OBJCOPY powerpc-linux-gnu-objcopy CACHE FILEPATH "")
set(CMAKE_NM powerpc-linux-gnu-nm CACHE FILEPATH "")
include("${CMAKE_CURRENT_LIST_DIR}/zig-musl.cmake")

# The program stands where it was linked to. Position-independent code, zig's default, has in each object file a table of
# all functions that it mentions, and keeps them in the program for it: 38 KB, most of them libxml2's.
string(APPEND CMAKE_C_FLAGS_INIT " -Xclang -mrelocation-model -Xclang static")
string(APPEND CMAKE_CXX_FLAGS_INIT " -Xclang -mrelocation-model -Xclang static")

string(APPEND CMAKE_CXX_STANDARD_LIBRARIES_INIT " ${CMAKE_CURRENT_LIST_DIR}/unwinding.cpp")

set(CMAKE_CROSSCOMPILING_EMULATOR "${_tools}/run-powerpc")
