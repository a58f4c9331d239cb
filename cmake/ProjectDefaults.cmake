# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# What holds for every target of the tree. A project that includes ours, and a packager who sets these, keeps the say.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Debug, Release, RelWithDebInfo or MinSizeRel" FORCE)
endif()

if(NOT CMAKE_RUNTIME_OUTPUT_DIRECTORY)
    set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})
endif()

# The redirected copies of the libraries, made in tests/, link what the libraries link.
set(CMAKE_FIND_PACKAGE_TARGETS_GLOBAL ON)

set(TARVELD_IS_SANITIZED FALSE)
if("${CMAKE_CXX_FLAGS} ${CMAKE_CXX_FLAGS_DEBUG}" MATCHES "-fsanitize")
    set(TARVELD_IS_SANITIZED TRUE)
endif()
