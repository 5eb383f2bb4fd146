#include "platform/CharSet.h"

#include <string_view>

#include "platform/CharSetNames.h"

namespace Kestra::StringNS {

CharSet::Code CharSet::GetCharSetCode(const WideString& name) {
    return FindCharSetCode(name);
}

WideString CharSet::GetCharSetName(Code code) {
    const std::string_view name = FindCharSetName(code);
    return WideString(name.begin(), name.end());
}

bool CharSet::IsIso2022(Code code) {
    return code == ISO_2022_JP || code == ISO_2022_JP_SISO || code == ISO_2022_KR;
}

}  // namespace Kestra::StringNS
