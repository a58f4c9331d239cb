# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# The same libc and compiler as the card's on an ordinary PC: tells a musl difference from a PowerPC one.
set(TARVELD_TARGET x86_64-linux-musl)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_OBJCOPY objcopy CACHE FILEPATH "")
set(CMAKE_NM nm CACHE FILEPATH "")
include("${CMAKE_CURRENT_LIST_DIR}/zig-musl.cmake")
