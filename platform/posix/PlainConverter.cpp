#include "platform/SystemConverter.h"

/// @file
/// Without ICU there are no converters but the library's own, in `CharSetConverter`.

namespace Kestra::StringNS {

CharSet::Code SystemConverter::GetAnsiCode() {
    return CharSet::WINDOWS_1252;
}

std::unique_ptr<SystemConverter> SystemConverter::Open(CharSet::Code) {
    return nullptr;
}

}  // namespace Kestra::StringNS
