#pragma once

#include <cstddef>
#include <cstdint>

#include "html/stateless/Machine.h"
#include "html/stateless/Scan.h"
#include "platform/CharSetConverter.h"
#include "platform/InputStream.h"
#include "platform/Observable.h"

namespace Kestra::HTML::Stateless {

/// Feeds the machine piece by piece. Not installed.
class Feed {
public:
    /// All are borrowed.
    Feed(Data* newRecord, Base::MultiDelegate* delegate, StringNS::CharSetConverter* converter)
        : data(*newRecord), machine(newRecord, delegate, converter) {}

    /// @return as `StatelessHTMLParser::ParseBuffer`
    std::uint32_t ParsePiece(const void* bytes, std::size_t size);

    /// @param stream  not null
    /// @return as `StatelessHTMLParser::ParseStream`
    std::uint32_t ParseStream(VFS::InputStream* stream);

private:
    Data& data;
    Machine machine;
};

}  // namespace Kestra::HTML::Stateless
