#include "platform/PlatformConverter.h"
#include "platform/Results.h"

/// @file
/// Without ICU there are no converters but the library's own, in `CharSetConverter`.

namespace Kestra::StringNS {

struct CharSetConverter::Platform::System {};

CharSetConverter::Platform::Platform(CharSet::Code openedCode) : code(openedCode) {}

CharSetConverter::Platform::~Platform() = default;

CharSet::Code CharSetConverter::Platform::GetAnsiCode() {
    return CharSet::WINDOWS_1252;
}

CharSet::Code CharSetConverter::Platform::GetCode() const {
    return code;
}

bool CharSetConverter::Platform::Converts() const {
    return system != nullptr;
}

std::uint32_t CharSetConverter::Platform::ToWide(const char*, std::uint64_t, WideString* output) {
    output->clear();
    return RESULT_UNSUPPORTED_CHARSET;
}

std::uint32_t CharSetConverter::Platform::FromWide(const WideChar*, std::uint64_t, std::string* output) {
    output->clear();
    return RESULT_UNSUPPORTED_CHARSET;
}

}  // namespace Kestra::StringNS
