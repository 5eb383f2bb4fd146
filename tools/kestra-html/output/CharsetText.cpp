#include "tools/kestra-html/output/CharsetText.h"

#include <fmt/format.h>

#include "platform/Characters.h"
#include "platform/Results.h"
#include "platform/StringHelper.h"

namespace Kestra::Tool {

std::string DescribeCharset(StringNS::CharSet::Code code) {
    if (code == StringNS::CharSet::UNKNOWN)
        return "unknown";
    std::string name;
    for (const WideChar letter : StringNS::CharSet::GetCharSetName(code))
        name.push_back(static_cast<char>(letter));  // registered names are ASCII
    return name.empty() ? fmt::format("{}", code) : fmt::format("{} ({})", code, name);
}

bool HasConverter(StringNS::CharSet::Code code) {
    WideString text;
    return StringNS::StringHelper::GetWideFromGeneric(code, "a", 1, &text) != RESULT_UNSUPPORTED_CHARSET;
}

}  // namespace Kestra::Tool
