#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/CharSet.h"
#include "platform/Characters.h"

namespace Kestra::StringNS {

/// The operating system's (on POSIX: ICU's) converter for one code page, open until its destructor
/// runs.
///
/// When memory is lacking, also in the system, `Open` and the conversions throw `std::bad_alloc`,
/// which says nothing about the code page. Not exported.
class SystemConverter {
public:
    /// The code page that 0, the ANSI rule, stands for.
    static CharSet::Code GetAnsiCode();

    /// @return null when the system has no converter for the code page.
    static std::unique_ptr<SystemConverter> Open(CharSet::Code code);

    SystemConverter(const SystemConverter&) = delete;
    SystemConverter& operator=(const SystemConverter&) = delete;
    virtual ~SystemConverter() = default;

    /// Whether the system also converts to the code page: some can only be read.
    virtual bool Writes() const;

    /// As `CharSetConverter::ToWide`, into an empty string. Always starts in the initial state of
    /// the code page.
    virtual std::uint32_t ToWide(const char* data, std::uint64_t size, WideString* output) = 0;

    /// As `CharSetConverter::FromWide`, into an empty string; a stateful code page ends in its
    /// initial state. Called only when `Writes()`.
    virtual std::uint32_t FromWide(const WideChar* data, std::uint64_t size, std::string* output) = 0;

protected:
    SystemConverter() = default;
};

}  // namespace Kestra::StringNS
