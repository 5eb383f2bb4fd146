#pragma once

#include <cstdint>
#include <string>

#include "html/stateless/Scan.h"
#include "platform/CharSet.h"
#include "platform/CharSetConverter.h"
#include "platform/Characters.h"
#include "platform/Observable.h"

namespace Kestra::HTML::Stateless {

/// Makes events of the bytes in the record, and reads the charset from them. Not installed.
///
/// An event first clears its construct, so that an exception of a callback does not repeat it.
class Events {
public:
    /// All are borrowed.
    Events(Data* newRecord, Base::MultiDelegate* newDelegate, StringNS::CharSetConverter* newConverter)
        : data(*newRecord), delegate(*newDelegate), converter(*newConverter) {}

    /// For a tag that closes itself two events, unless the first one stops the parser.
    void RaiseStartTag();
    void RaiseEndTag();
    void RaiseExternTag();
    void RaiseEntityTag();

    /// Text or a comment.
    /// @param bytes  cleared
    void RaiseString(unsigned long id, std::string* bytes);

    /// A script or a style sheet, whose body follows the ANSI rule whatever the charset (kept).
    void RaiseBody(unsigned long id);

private:
    bool MayChangeCharSet() const;
    std::uint32_t CharSetKnown() const;
    void SetCharSet(const std::string& name);
    std::uint32_t GetCharSetFromStartTag();
    std::uint32_t GetCharSetFromExternTag();
    void ToWide(StringNS::CharSet::Code code, const std::string& bytes, WideString* output);
    void ConvertName();
    void ConvertStr(const std::string& bytes, WideString* output);
    void ConvertAttrs();
    void ConvertTokens();
    void Raise(unsigned long id, const void* first, const void* second = nullptr);

    Data& data;
    Base::MultiDelegate& delegate;
    StringNS::CharSetConverter& converter;
};

}  // namespace Kestra::HTML::Stateless
