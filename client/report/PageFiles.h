// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string_view>

// report.html, report.css and report.js, as they lie beside this file when the client is built.
extern const std::string_view pageHtml;
extern const std::string_view pageStyle;
extern const std::string_view pageScript;
