// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string_view>

// Why a document is not to be parsed, or null if it may be: it has a document type declaration, which can define
// entities, or it is not said to be in UTF-8, for which a parser may load a module. Looks at the text alone and refuses
// rather too much: "<!DOCTYPE" in a comment, too. The document ends at its first NUL, as for the parser.
[[nodiscard]] const char* objectionTo(std::string_view document);
