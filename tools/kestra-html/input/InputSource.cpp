#include "tools/kestra-html/input/InputSource.h"

#include <vector>

#include "platform/Results.h"

namespace Kestra::Tool {

void InputSource::Drain() {
    std::vector<char> block(HEAD_SIZE);
    std::uint64_t count = 0;
    do {
        std::uint64_t position = 0;
        GetPosition(&position);
        Forget(position);
    } while (Read(block.data(), block.size(), &count) == RESULT_OK);
}

}  // namespace Kestra::Tool
