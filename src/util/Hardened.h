// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

// Whether this is the hardened build (CMake's option TARVELD_HARDENED). Where it does something else than the design,
// `if constexpr (hardened)` says so, and SECURITY.md has a line of it; the other builds hold nothing of that code.
#ifdef TARVELD_HARDENED
inline constexpr bool hardened = true;
#else
inline constexpr bool hardened = false;
#endif
