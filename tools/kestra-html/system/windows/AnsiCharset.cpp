#include "tools/kestra-html/system/AnsiCharset.h"

#include "platform/windows/WindowsApi.h"

namespace Kestra::Tool {

StringNS::CharSet::Code GetAnsiCharset() {
    return GetACP();
}

}  // namespace Kestra::Tool
