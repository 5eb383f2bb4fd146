#include "tests/support/TestStreams.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "platform/Results.h"

namespace Kestra::Test {

ReadBound AtMost(std::uint64_t limit) {
    return [limit](std::uint64_t size) { return std::min(size, limit); };
}

ReadBound InSizes(std::vector<std::uint64_t> sizes) {
    return [list = std::move(sizes), next = std::size_t{0}](std::uint64_t size) mutable {
        return next < list.size() ? std::min(size, list[next++]) : size;
    };
}

ReadBound OnlyFrom(std::uint64_t minimum, ReadBound bound) {
    return [minimum, inner = std::move(bound)](std::uint64_t size) { return size < minimum ? size : inner(size); };
}

BoundedInputStream::BoundedInputStream(std::string bytes, ReadBound readBound, std::uint64_t firstOffset)
    : content(std::move(bytes), firstOffset), bound(std::move(readBound)) {}

std::uint32_t BoundedInputStream::Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) {
    return content.Read(buffer, std::min(size, bound(size)), bytesRead);
}

std::uint32_t BoundedInputStream::GetPosition(std::uint64_t* position) {
    return content.GetPosition(position);
}

std::uint32_t BoundedInputStream::Seek(std::uint64_t position) {
    return content.Seek(position);
}

bool BoundedInputStream::IsEnd() {
    return content.IsEnd();
}

std::uint32_t FaultyInputStream::Script::Next() {
    ++calls;
    const auto failure = failures.find(calls);
    if (failure != failures.end())
        return failure->second;
    return failingFrom != 0 && calls >= failingFrom ? failingCode : RESULT_OK;
}

FaultyInputStream::FaultyInputStream(std::unique_ptr<VFS::InputStream> innerStream) : inner(std::move(innerStream)) {}

FaultyInputStream::FaultyInputStream(std::string bytes)
    : FaultyInputStream(std::make_unique<VFS::MemoryInputStream>(std::move(bytes))) {}

FaultyInputStream::~FaultyInputStream() {
    if (destructions != nullptr)
        ++*destructions;
}

std::uint32_t FaultyInputStream::Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) {
    *bytesRead = 0;
    if (const std::uint32_t code = reads.Next(); code != RESULT_OK)
        return code;
    if (const auto fault = shortened.find(reads.calls); fault != shortened.end())
        return inner->Read(buffer, std::min(size, fault->second), bytesRead);
    const std::uint32_t result = inner->Read(buffer, size, bytesRead);
    if (const auto fault = misreported.find(reads.calls); fault != misreported.end())
        *bytesRead = fault->second;
    return result;
}

std::uint32_t FaultyInputStream::GetPosition(std::uint64_t* position) {
    const std::uint32_t code = positions.Next();
    return code != RESULT_OK ? code : inner->GetPosition(position);
}

std::uint32_t FaultyInputStream::Seek(std::uint64_t position) {
    const std::uint32_t code = seeks.Next();
    return code != RESULT_OK ? code : inner->Seek(position);
}

bool FaultyInputStream::IsEnd() {
    return !neverEnds && inner->IsEnd();
}

FaultyInputStream& FaultyInputStream::FailRead(std::uint64_t call, std::uint32_t code) {
    reads.failures[call] = code;
    return *this;
}

FaultyInputStream& FaultyInputStream::FailGetPosition(std::uint64_t call, std::uint32_t code) {
    positions.failures[call] = code;
    return *this;
}

FaultyInputStream& FaultyInputStream::FailSeek(std::uint64_t call, std::uint32_t code) {
    seeks.failures[call] = code;
    return *this;
}

FaultyInputStream& FaultyInputStream::FailReadsFrom(std::uint64_t call, std::uint32_t code) {
    reads.failingFrom = call;
    reads.failingCode = code;
    return *this;
}

FaultyInputStream& FaultyInputStream::FailGetPositionsFrom(std::uint64_t call, std::uint32_t code) {
    positions.failingFrom = call;
    positions.failingCode = code;
    return *this;
}

FaultyInputStream& FaultyInputStream::FailSeeksFrom(std::uint64_t call, std::uint32_t code) {
    seeks.failingFrom = call;
    seeks.failingCode = code;
    return *this;
}

FaultyInputStream& FaultyInputStream::ReadNothing(std::uint64_t call) {
    return ShortenRead(call, 0);
}

FaultyInputStream& FaultyInputStream::ShortenRead(std::uint64_t call, std::uint64_t count) {
    shortened[call] = count;
    return *this;
}

FaultyInputStream& FaultyInputStream::MisreportRead(std::uint64_t call, std::uint64_t count) {
    misreported[call] = count;
    return *this;
}

FaultyInputStream& FaultyInputStream::NeverEnd() {
    neverEnds = true;
    return *this;
}

FaultyInputStream& FaultyInputStream::CountDestructions(int* counter) {
    destructions = counter;
    return *this;
}

std::uint64_t FaultyInputStream::GetReadCalls() const {
    return reads.calls;
}

std::uint64_t FaultyInputStream::GetPositionCalls() const {
    return positions.calls;
}

std::uint64_t FaultyInputStream::GetSeekCalls() const {
    return seeks.calls;
}

StreamContent ReadAll(VFS::InputStream* stream, std::uint64_t pieceSize) {
    StreamContent content;
    for (int emptyReads = 0; emptyReads < 1000;) {
        // A block of its own for each read, so that sanitizers see a byte written after it.
        std::vector<char> piece(static_cast<std::size_t>(pieceSize));
        std::uint64_t bytesRead = 0;
        content.result = stream->Read(piece.data(), pieceSize, &bytesRead);
        content.bytes.append(piece.data(), static_cast<std::size_t>(std::min(bytesRead, pieceSize)));
        if (content.result != RESULT_OK)
            break;
        if (bytesRead > 0) {
            ++content.reads;
            emptyReads = 0;
        } else {
            ++emptyReads;
        }
    }
    return content;
}

}  // namespace Kestra::Test
