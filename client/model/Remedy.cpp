// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/model/Remedy.h"

std::string_view wordOf(Remedy remedy)
{
    switch (remedy) {
    case Remedy::goOnAllTheSame:
        return "--force";
    case Remedy::believeGroups:
        return "--trust-groups";
    case Remedy::leaveOutProbe:
        return "--no-probe";
    case Remedy::chooseInterface:
        return "-i";
    case Remedy::waitLonger:
        return "--timeout";
    case Remedy::readTime:
        return "tarvelctl time get";
    case Remedy::setAddress:
        return "tarvelctl ip set";
    case Remedy::rescueAddress:
        return "tarvelctl ip rescue";
    }
    return {};
}
