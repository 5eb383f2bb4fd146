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

/// Writes every token back and keeps the CRC-32 of the output (ISO 3309) and, on demand, a copy of
/// the output.
///
/// A copied self-check continues the checksum and keeps no output: the streams belong to the
/// original.
template <typename C, typename S>
class KESTRA_HTML_API ParserSelfCheck final : public ParserObserverOutput<C, S> {
public:
    static constexpr std::uint64_t COPY_IN_MEMORY = 4194304;  ///< bytes of the copy before it goes to a temporary file

    ParserSelfCheck();
    /// Continues the checksum, and keeps no output.
    ParserSelfCheck(const ParserSelfCheck& other);
    /// The same; an output that was kept here is freed.
    ParserSelfCheck& operator=(const ParserSelfCheck& other);

    /// Takes the bytes that a token is written back as.
    void OnOutput(const void* data, std::uint64_t byteCount, bool isMarkup) override;

    virtual ~ParserSelfCheck();

    /// Begins a document: the checksum is 0, and an earlier copy is freed.
    /// @param keepCopy  keep a copy of the output from now on
    virtual void Reset(bool keepCopy);

    /// The CRC-32 of all bytes written since `Reset`.
    std::uint32_t GetOutputCrc();

    /// Checks that the copy, if one is being written, can be read back to its last byte; what was
    /// checked before is not read again. A copy that cannot be read is freed.
    /// @return false when a copy was lost, now or before
    bool CheckCopy();

    /// Ends the copy and answers a stream at its first byte; later calls answer the same stream,
    /// which is valid until `Reset`. Null when no copy was kept, or when it could not be written.
    VFS::InputStream* GetSelfCheckStream();

private:
    friend class SelfCheckSink<C, S>;

    void Flush();
    void Write(const void* data, std::uint64_t byteCount);
    bool CanReadCopy();

    std::uint32_t outputCrc;
    std::unique_ptr<VFS::TmpOutputStream> copy;
    std::unique_ptr<VFS::TmpInputStream> finishedCopy;
    std::string gathered;       ///< a buffer; empty until the first small piece
    std::size_t gatheredSize;   ///< bytes of pieces in it that wait for the next update of checksum and copy
    std::uint64_t checkedSize;  ///< bytes of the copy that have been read back,
    std::uint32_t checkedCrc;   ///< and their checksum
    bool copyLost;
};

}  // namespace Kestra::HTML
