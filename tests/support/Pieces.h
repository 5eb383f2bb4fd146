#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string_view>

namespace Kestra::Test {

/// A piece of input in a heap block of its exact size, so that sanitizers see a read after it, and
/// a pointer kept into it.
template <typename C>
class HeapPiece {
public:
    explicit HeapPiece(std::basic_string_view<C> text) : block(new C[text.size()]), length(text.size()) {
        std::copy(text.begin(), text.end(), block.get());
    }

    const C* Data() const {
        return block.get();
    }

    std::size_t Size() const {
        return length;
    }

private:
    std::unique_ptr<C[]> block;
    std::size_t length;
};

}  // namespace Kestra::Test
