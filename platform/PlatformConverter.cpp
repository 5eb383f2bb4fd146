#include "platform/PlatformConverter.h"

#include "platform/Results.h"

namespace Kestra::StringNS {

bool SystemConverter::Writes() const {
    return true;
}

CharSetConverter::Platform::Platform(CharSet::Code openedCode)
    : code(openedCode), system(SystemConverter::Open(openedCode)) {}

CharSet::Code CharSetConverter::Platform::GetCode() const {
    return code;
}

bool CharSetConverter::Platform::Converts() const {
    return system != nullptr && system->Writes();
}

std::uint32_t CharSetConverter::Platform::ToWide(const char* data, std::uint64_t size, WideString* output) {
    output->clear();
    return system == nullptr ? std::uint32_t{RESULT_UNSUPPORTED_CHARSET} : system->ToWide(data, size, output);
}

std::uint32_t CharSetConverter::Platform::FromWide(const WideChar* data, std::uint64_t size, std::string* output) {
    output->clear();
    return Converts() ? system->FromWide(data, size, output) : std::uint32_t{RESULT_UNSUPPORTED_CHARSET};
}

}  // namespace Kestra::StringNS
