// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
// On the link line of the musl builds; zig-musl.cmake says why.
