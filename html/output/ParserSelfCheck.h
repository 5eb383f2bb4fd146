#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "../../platform/InputStream.h"
#include "../../platform/TmpStream.h"
#include "ParserObserverOutput.h"

namespace Kestra::HTML {

template <typename C, typename S>
class SelfCheckSink;

/// Writes every token back and keeps the CRC-32 of what it wrote (ISO 3309) and, on demand, a copy
/// of it.
///
/// A copy of a self-check goes on with the checksum and keeps no text: the streams belong to the
/// one that made them.
template <typename C, typename S>
class KESTRA_HTML_API ParserSelfCheck final : public ParserObserverOutput<C, S> {
public:
    static constexpr std::uint64_t COPY_IN_MEMORY = 4194304;  ///< bytes of the copy before it goes to a temporary file

    ParserSelfCheck();
    ParserSelfCheck(const ParserSelfCheck& other);
    ParserSelfCheck& operator=(const ParserSelfCheck& other);

    /// Takes the bytes that a token is written back as.
    void OnOutput(const void* data, std::uint64_t byteCount, bool isMarkup) override;

    virtual ~ParserSelfCheck();

    /// Begins a document: the checksum is 0, and a copy from before is gone.
    /// @param keepCopy  keep the text from now on
    virtual void Reset(bool keepCopy);

    /// The CRC-32 of all bytes written since `Reset`.
    std::uint32_t GetOutputCrc();

    /// Makes sure that the copy, if one is being written, can be read back to its last byte; what
    /// was found good before is not read again. One that cannot is dropped for good.
    /// @return false when there is a copy that was lost, now or before
    bool CheckCopy();

    /// Ends the copy and answers it, from its first byte on; later calls answer the same stream,
    /// which lives until `Reset`. Null when none was kept, or when it could not be written.
    VFS::InputStream* GetSelfCheckStream();

private:
    friend class SelfCheckSink<C, S>;

    void Flush();
    void Write(const void* data, std::uint64_t byteCount);
    bool CanReadCopy();

    std::uint32_t outputCrc;
    std::unique_ptr<VFS::TmpOutputStream> copy;
    std::unique_ptr<VFS::TmpInputStream> finishedCopy;
    std::string gathered;  ///< a buffer, empty until the first small piece,
    std::size_t
        gatheredSize;  ///< and how many bytes of pieces wait in it for the next update of the checksum and the copy
    std::uint64_t checkedSize;  ///< bytes of the copy that have been read back,
    std::uint32_t checkedCrc;   ///< and their checksum
    bool copyLost;
};

}  // namespace Kestra::HTML
