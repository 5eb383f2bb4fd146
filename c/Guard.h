#pragma once

#include <cstdint>
#include <cstring>
#include <new>
#include <stdexcept>

#include "c/kestra/html.h"

namespace Kestra::C {

/// Runs what a function of the C interface does. No exception leaves it.
template <typename Function>
std::uint32_t Guard(Function function) noexcept {
    try {
        return function();
    } catch (const std::bad_alloc&) {
        return KESTRA_HTML_OUT_OF_MEMORY;
    } catch (const std::length_error&) {
        return KESTRA_HTML_OUT_OF_MEMORY;
    } catch (...) {
        return KESTRA_HTML_CALLBACK_FAILED;
    }
}

/// Copies a struct of the host that begins with its size: what the host does not have is 0.
/// @return false when the host has more than the library knows, and it is not 0
template <typename Struct>
bool CopyStruct(const Struct* from, Struct* to) noexcept {
    std::memset(to, 0, sizeof(Struct));
    const std::size_t size = from->size;
    if (size < sizeof(from->size))
        return false;
    const auto* const bytes = reinterpret_cast<const unsigned char*>(from);
    for (std::size_t i = sizeof(Struct); i < size; ++i) {
        if (bytes[i] != 0)
            return false;
    }
    std::memcpy(to, from, size < sizeof(Struct) ? size : sizeof(Struct));
    to->size = sizeof(Struct);
    return true;
}

/// Writes a struct for the host, as much of it as the host has; its size stays.
template <typename Struct>
void AnswerStruct(const Struct& from, Struct* to) noexcept {
    const std::size_t size = to->size;
    if (size >= sizeof(Struct))
        *to = from;
    else
        std::memcpy(to, &from, size);
    to->size = size;
}

inline kestra_html_string MakeString(const void* data, std::size_t size) noexcept {
    return {size == 0 ? "" : data, size};
}

}  // namespace Kestra::C
