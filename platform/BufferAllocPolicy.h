#pragma once

#include <cstdint>

#include "Export.h"

namespace Kestra::Base {

/// Owns the read buffer of one parser call. Not copyable; `Release` is called by the destructor as
/// well.
class KESTRA_HTML_API DefaultBufferAllocPolicy {
public:
    DefaultBufferAllocPolicy();
    DefaultBufferAllocPolicy(const DefaultBufferAllocPolicy&) = delete;
    DefaultBufferAllocPolicy& operator=(const DefaultBufferAllocPolicy&) = delete;
    ~DefaultBufferAllocPolicy();

    /// Starts without memory: null data, size 0. Memory of an earlier use is released.
    void Initialize();

    /// Makes the buffer at least `size` bytes long. If it had to grow, its content is unspecified
    /// afterwards.
    /// @return 0, or RESULT_OUT_OF_MEMORY; the buffer is then unchanged.
    std::uint32_t AdjustTo(std::uint64_t size);

    /// Frees the memory; `Initialize` or `AdjustTo` may follow.
    void Release();

    char* GetData() const;          ///< the buffer; null when there is none
    std::uint64_t GetSize() const;  ///< in bytes

private:
    char* data;
    std::uint64_t size;
};

}  // namespace Kestra::Base
