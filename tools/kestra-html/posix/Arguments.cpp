#include "tools/kestra-html/Arguments.h"

#include <algorithm>

namespace Kestra::Tool {

std::vector<std::string> GetArguments(int argc, const char* const* argv) {
    return {argv + std::min(argc, 1), argv + argc};
}

}  // namespace Kestra::Tool
