#include "tools/kestra-html/system/RawInput.h"

#include <cerrno>
#include <utility>

/// @file
/// What is the same on every system.

namespace Kestra::Tool {

ReadResult ReadResult::OfFailure(int systemError) {
    switch (systemError) {
        case ENOENT:
        case ENOTDIR:
            return {MISSING, systemError};
        case EACCES:
        case EPERM:
            return {FORBIDDEN, systemError};
        case ENOMEM:
            return {OUT_OF_MEMORY, systemError};
        default:
            return {UNREADABLE, systemError};
    }
}

ReadResult RawInput::Open(const std::string& name, std::unique_ptr<RawInput>* input) {
    int descriptor = -1;
    if (const ReadResult result = OpenDescriptor(name, &descriptor); result != ReadResult::READ)
        return result;
    std::unique_ptr<RawInput> opened(new RawInput(descriptor, name != "-"));
    const ReadResult result = opened->LookAt();
    if (result == ReadResult::READ)
        *input = std::move(opened);
    return result;
}

RawInput::RawInput(int openDescriptor, bool closesDescriptor) : descriptor(openDescriptor), closes(closesDescriptor) {}

bool RawInput::IsFile() const {
    return isFile;
}

std::uint64_t RawInput::GetSize() const {
    return size;
}

}  // namespace Kestra::Tool
