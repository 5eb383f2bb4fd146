#include "tools/kestra-html/output/CharsetText.h"

#include <fmt/format.h>

#include "platform/Characters.h"
#include "platform/Results.h"
#include "platform/StringHelper.h"
#include "tools/kestra-html/system/AnsiCharset.h"

namespace Kestra::Tool {

std::string DescribeCharset(StringNS::CharSet::Code code) {
    if (code == StringNS::CharSet::UNKNOWN)
        return "unknown";
    std::string name;
    for (const WideChar letter : StringNS::CharSet::GetCharSetName(code))
        name.push_back(static_cast<char>(letter));  // registered names are ASCII
    return name.empty() ? fmt::format("{}", code) : fmt::format("{} ({})", code, name);
}

std::string DescribeAssumedCharset() {
    return DescribeCharset(GetAnsiCharset()) + ", assumed";
}

bool HasConverter(StringNS::CharSet::Code code) {
    WideString text;
    return StringNS::StringHelper::GetWideFromGeneric(code, "a", 1, &text) != RESULT_UNSUPPORTED_CHARSET;
}

}  // namespace Kestra::Tool
