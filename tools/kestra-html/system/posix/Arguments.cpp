#include "tools/kestra-html/system/Arguments.h"

#include <algorithm>

namespace Kestra::Tool {

std::vector<std::string> GetArguments(int argc, const char* const* argv) {
    return {argv + std::min(argc, 1), argv + argc};
}

std::vector<std::string> ExpandWildcards(const std::vector<std::string>& names) {
    return names;
}

}  // namespace Kestra::Tool
