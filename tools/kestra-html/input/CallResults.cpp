#include "tools/kestra-html/input/CallResults.h"

#include <initializer_list>

namespace Kestra::Tool {

std::uint32_t CallResults::GetFirstFailure() const {
    for (const std::uint32_t code : {startParse, parse, endParse}) {
        if (code != 0)
            return code;
    }
    return 0;
}

}  // namespace Kestra::Tool
