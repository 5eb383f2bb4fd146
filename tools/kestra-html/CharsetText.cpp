#include "tools/kestra-html/CharsetText.h"

#include <fmt/format.h>

#include "platform/Characters.h"

namespace Kestra::Tool {

std::string DescribeCharset(StringNS::CharSet::Code code) {
    if (code == StringNS::CharSet::UNKNOWN)
        return "unknown";
    std::string name;
    for (const WideChar letter : StringNS::CharSet::GetCharSetName(code))
        name.push_back(static_cast<char>(letter));  // registered names are ASCII
    return name.empty() ? fmt::format("{}", code) : fmt::format("{} ({})", code, name);
}

}  // namespace Kestra::Tool
