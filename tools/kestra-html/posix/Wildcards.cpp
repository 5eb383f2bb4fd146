#include "tools/kestra-html/Wildcards.h"

namespace Kestra::Tool {

std::vector<std::string> ExpandWildcards(const std::vector<std::string>& names) {
    return names;
}

}  // namespace Kestra::Tool
