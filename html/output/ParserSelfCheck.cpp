#include "html/output/ParserSelfCheck.h"

#include <algorithm>
#include <vector>

#include "html/framework/AssignText.h"
#include "html/framework/Instantiate.h"
#include "html/output/Crc32.h"
#include "platform/Results.h"

namespace Kestra::HTML {

namespace {

/// Bytes. Most pieces are one character, and an update for each costs more than the copying.
constexpr std::size_t GATHER_SIZE = 8192;
constexpr std::uint64_t READ_SIZE = 64 * 1024;  // bytes per read when a copy is verified

}  // namespace

template <typename C, typename S>
ParserSelfCheck<C, S>::ParserSelfCheck()
    : outputCrc(0), gatheredSize(0), checkedSize(0), checkedCrc(0), copyLost(false) {}

template <typename C, typename S>
ParserSelfCheck<C, S>::ParserSelfCheck(const ParserSelfCheck& other)
    : ParserObserverOutput<C, S>(other),
      outputCrc(other.outputCrc),
      gathered(other.gathered),
      gatheredSize(other.gatheredSize),
      checkedSize(0),
      checkedCrc(0),
      copyLost(false) {}

template <typename C, typename S>
ParserSelfCheck<C, S>& ParserSelfCheck<C, S>::operator=(const ParserSelfCheck& other) {
    if (this != &other) {
        ParserObserverOutput<C, S>::operator=(other);
        Reset(false);
        outputCrc = other.outputCrc;
        gathered = other.gathered;
        gatheredSize = other.gatheredSize;
    }
    return *this;
}

template <typename C, typename S>
ParserSelfCheck<C, S>::~ParserSelfCheck() = default;

template <typename C, typename S>
void ParserSelfCheck<C, S>::OnOutput(const void* data, std::uint64_t byteCount, bool) {
    if (byteCount > gathered.size() - gatheredSize) {
        Flush();
        if (byteCount > GATHER_SIZE) {
            Write(data, byteCount);
            return;
        }
        gathered.resize(GATHER_SIZE);
    }
    CopyShort(gathered.data() + gatheredSize, data, static_cast<std::size_t>(byteCount));
    gatheredSize += static_cast<std::size_t>(byteCount);
}

template <typename C, typename S>
void ParserSelfCheck<C, S>::Reset(bool keepCopy) {
    outputCrc = 0;
    copy = nullptr;
    finishedCopy = nullptr;
    gatheredSize = 0;
    checkedSize = 0;
    checkedCrc = 0;
    copyLost = false;
    if (keepCopy)
        copy = std::make_unique<VFS::TmpOutputStream>(COPY_IN_MEMORY);
}

template <typename C, typename S>
std::uint32_t ParserSelfCheck<C, S>::GetOutputCrc() {
    Flush();
    return outputCrc;
}

template <typename C, typename S>
bool ParserSelfCheck<C, S>::CheckCopy() {
    Flush();
    if (copy != nullptr && !CanReadCopy()) {
        copy = nullptr;
        copyLost = true;
    }
    return !copyLost;
}

template <typename C, typename S>
VFS::InputStream* ParserSelfCheck<C, S>::GetSelfCheckStream() {
    if (CheckCopy() && copy != nullptr) {
        finishedCopy = std::make_unique<VFS::TmpInputStream>(*copy);
        copy = nullptr;
    }
    return finishedCopy.get();
}

template <typename C, typename S>
void ParserSelfCheck<C, S>::Flush() {
    if (gatheredSize == 0)
        return;
    Write(gathered.data(), gatheredSize);
    gatheredSize = 0;
}

template <typename C, typename S>
void ParserSelfCheck<C, S>::Write(const void* data, std::uint64_t byteCount) {
    outputCrc = UpdateCrc32(outputCrc, data, byteCount);
    if (copy != nullptr)
        copy->Write(data, byteCount);  // the stream remembers a failure
}

template <typename C, typename S>
bool ParserSelfCheck<C, S>::CanReadCopy() {
    if (copy->GetResult() != RESULT_OK)
        return false;
    VFS::TmpInputStream stream(*copy);
    if (stream.Seek(checkedSize) != RESULT_OK)
        return false;
    std::vector<char> buffer(static_cast<std::size_t>(std::min(READ_SIZE, copy->GetSize() - checkedSize + 1)));
    std::uint64_t count = 0;
    std::uint32_t result = RESULT_OK;
    while ((result = stream.Read(buffer.data(), buffer.size(), &count)) == RESULT_OK) {
        checkedCrc = UpdateCrc32(checkedCrc, buffer.data(), count);
        checkedSize += count;
    }
    return result == RESULT_END_OF_DATA && checkedCrc == outputCrc;
}

KESTRA_HTML_INSTANTIATE(ParserSelfCheck);

}  // namespace Kestra::HTML
