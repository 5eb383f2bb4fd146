#include "tools/kestra-html/system/AnsiCharset.h"

namespace Kestra::Tool {

StringNS::CharSet::Code GetAnsiCharset() {
    return StringNS::CharSet::WINDOWS_1252;
}

}  // namespace Kestra::Tool
