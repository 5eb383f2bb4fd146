#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>

#include "platform/InputStream.h"
#include "platform/Services.h"
#include "tests/support/DocumentMaker.h"
#include "tests/support/Splits.h"

namespace Kestra::Test {

/// Puts a charset detector in place that has no answer, for as long as it lives: the reference has
/// none, and those of the platforms answer differently.
class SilentDetector {
public:
    SilentDetector();

private:
    Base::Services services;
    Base::ServicesOverride replacement;
};

/// A stream over borrowed bytes, to be used for any number of documents. A read of new bytes ends
/// at the next cut at the latest; bytes that were delivered before, those of a token being re-read,
/// are delivered as far as they were.
class CutInputStream final : public VFS::InputStream {
public:
    /// Begins another document.
    /// @param documentBytes  borrowed, like the cuts, until the next `Reset`
    void Reset(std::string_view documentBytes, const Cuts& readCuts);

    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override;
    std::uint32_t GetPosition(std::uint64_t* position) override;
    std::uint32_t Seek(std::uint64_t position) override;
    bool IsEnd() override;

private:
    std::string_view bytes;
    const Cuts* cuts = nullptr;
    std::size_t nextCut = 0;  // index of the first cut after the bytes delivered so far
    std::size_t next = 0;
    std::size_t delivered = 0;  // the most that was ever read, as an offset
};

/// The cuts at which a stream is read in fact: a piece that is longer than one read is read in
/// several.
/// @param readSize  of the longest read, in the unit of the cuts
Cuts CutsAsRead(const Cuts& cuts, std::size_t length, std::size_t readSize);

/// Cuts into pieces of random sizes from 1 to 64, or to a smaller number for short documents.
Cuts CutsOfShortReads(std::size_t length, Dice* dice);

/// Where the piece with the character at `index` begins.
std::size_t PieceBegin(const Cuts& cuts, std::size_t index);

/// Calls `run` for every way to cut a document of `length` characters before its last `tail` ones
/// or between them, each with the characters before them in one piece, and with each of them alone.
/// Stops when `run` answers false.
void ForEverySplitOfTheTail(std::size_t length, std::size_t tail, const std::function<bool(const Cuts&)>& run);

}  // namespace Kestra::Test
