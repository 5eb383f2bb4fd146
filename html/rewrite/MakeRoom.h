#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace Kestra::HTML {

/// Reserves capacity for more elements, so that adding them cannot fail. A vector grows by half of
/// its capacity at least, so that adding one at a time stays linear. Not installed.
template <typename T>
void MakeRoom(std::size_t more, std::vector<T>* vector) {
    const std::size_t needed = vector->size() + more;
    if (needed > vector->capacity())
        vector->reserve(std::max(needed, vector->capacity() + vector->capacity() / 2));
}

}  // namespace Kestra::HTML
