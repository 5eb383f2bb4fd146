#include "tools/kestra-html/input/InputSource.h"

#include "platform/Results.h"

namespace Kestra::Tool {

std::uint32_t InputSource::GetPosition(std::uint64_t* position) {
    *position = next;
    return RESULT_OK;
}

bool InputSource::IsEnd() {
    return false;
}

void InputSource::ReadOnlyOnce() {}

void InputSource::Forget(std::uint64_t) {}

ReadResult InputSource::GetFailure() const {
    return failure;
}

std::uint64_t InputSource::GetFurthest() const {
    return furthest;
}

}  // namespace Kestra::Tool
