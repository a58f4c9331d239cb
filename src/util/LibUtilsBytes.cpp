// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "util/LibUtils.h"

#include <algorithm>

namespace
{

// Byte by byte, because a section that stands behind one of odd length is not aligned.
template<std::size_t width>
void reverseElements(void* data, std::size_t count)
{
    auto* element = static_cast<std::byte*>(data);
    for (std::size_t i = 0; i < count; ++i, element += width) {
        std::reverse(element, element + width);
    }
}

} // namespace

void LibUtils::swapBytes64(void* data, std::size_t count)
{
    reverseElements<8>(data, count);
}

void LibUtils::swapBytes32(void* data, std::size_t count)
{
    reverseElements<4>(data, count);
}

void LibUtils::swapBytes16(void* data, std::size_t count)
{
    reverseElements<2>(data, count);
}
