#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/CharSet.h"
#include "platform/CharSetConverter.h"
#include "platform/Characters.h"
#include "platform/SystemConverter.h"

namespace Kestra::StringNS {

/// The system's converter for one code page, opened by the constructor and closed by the
/// destructor.
///
/// An object of a code page without a converter is valid: it does not search again, and both
/// conversions answer RESULT_UNSUPPORTED_CHARSET. The constructor and the conversions throw what
/// those of `SystemConverter` throw.
class CharSetConverter::Platform {
public:
    explicit Platform(CharSet::Code openedCode);

    /// The code page given to the constructor.
    CharSet::Code GetCode() const;

    /// Whether the system converts the code page both ways.
    bool Converts() const;

    /// As `CharSetConverter::ToWide`. Always starts in the initial state of the code page.
    std::uint32_t ToWide(const char* data, std::uint64_t size, WideString* output);

    /// As `CharSetConverter::FromWide`; a stateful code page ends in its initial state.
    std::uint32_t FromWide(const WideChar* data, std::uint64_t size, std::string* output);

private:
    CharSet::Code code;
    std::unique_ptr<SystemConverter> system;  ///< null when the system has no converter for `code`
};

}  // namespace Kestra::StringNS
