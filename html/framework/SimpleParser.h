#pragma once

#include <cstdint>

#include "../../platform/Characters.h"
#include "../../platform/Export.h"
#include "ResultCodes.h"
#include "SimpleParserContext.h"

namespace Kestra::HTML {

/// The base of every state record: no fields, a virtual destructor.
///
/// A record holds all that a recognizer must remember between two pieces of input: the state of its
/// machine, the text gathered, flags. Its strings keep their capacity from one construct to the
/// next.
template <typename C, typename S>
class KESTRA_HTML_API SimpleParserData {
public:
    SimpleParserData();
    /// Copies nothing: the fields are in the records derived from it.
    SimpleParserData(const SimpleParserData& other);
    /// Copies nothing.
    SimpleParserData& operator=(const SimpleParserData& other);
    virtual ~SimpleParserData();
};

/// The base of every recognizer; `D` is its state record.
///
/// A recognizer reads one construct, over any number of pieces: `BeginParse` once, `Parse` until it
/// answers something other than SP_NEED_MORE_DATA, or `EndParse` when the input has ended before.
/// It never throws for bad input. A composite recognizer owns others, each with a record of its
/// own, and copies what they gathered into the caller's record.
///
/// A record whose `state` is none of its listed values is answered with SP_MALFORMED once a
/// character is available.
template <typename C, typename S, typename D>
class KESTRA_HTML_API SimpleParser {
public:
    virtual ~SimpleParser() = default;

    /// Resets the record, options included, and the records of member recognizers.
    /// @return SP_NEED_MORE_DATA, always.
    virtual std::uint32_t BeginParse(D* data) = 0;

    /// Consumes what belongs to the construct, from the context's position on, and appends it to
    /// the record.
    /// @param context  borrowed for the call; afterwards its position is the first character that
    ///                 does not belong to the construct.
    /// @param data     the record that `BeginParse` got
    /// @return a `RecognizerResult`; SP_NEED_MORE_DATA until the construct is complete or wrong
    virtual std::uint32_t Parse(SimpleParserContext<C, S>* context, D* data) = 0;

    /// The whole input has been given: decides whether what was gathered is a complete token. Reads
    /// nothing.
    virtual std::uint32_t EndParse(D* data) = 0;
};

}  // namespace Kestra::HTML
