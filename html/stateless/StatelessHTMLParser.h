#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "../../platform/CharSet.h"
#include "../../platform/CharSetConverter.h"
#include "../../platform/Characters.h"
#include "../../platform/Export.h"
#include "../../platform/InputStream.h"
#include "../../platform/Observable.h"
#include "../../platform/Uninherited.h"
#include "../../platform/Vector.h"
#include "../framework/TokenPlace.h"
#include "StatelessHTMLObserver.h"
#include "StatelessResults.h"

namespace Kestra::HTML {

/// What a `StatelessHTMLParser` remembers between two bytes. A separate structure, so that an
/// assignment can copy all of it before it changes anything.
struct StatelessHTMLParserData {
    std::string identifier;  ///< also the body of a comment
    std::string value;       ///< of the attribute under way, or an item of a declaration
    std::string tagName;     ///< of the construct under way
    std::string text;        ///< also the body of a script or a style sheet
    std::string scriptEnd;   ///< what may be the beginning of the end tag of a script
    std::string styleEnd;    ///< the same of a style sheet
    Vector<std::pair<std::string, std::string>> attributes;        ///< names and values of the tag under way
    Vector<std::string> tokens;                                    ///< items of the declaration under way
    std::uint32_t flags = 1;                                       ///< `SetFlags`
    bool started = false;                                          ///< between `StartParse` and `EndParse`
    StringNS::CharSet::Code charset = StringNS::CharSet::UNKNOWN;  ///< of strings; 0 for the ANSI rule
    const unsigned char* cursor = nullptr;                         ///< the next byte of the piece, during a call
    std::uint64_t position = 0;                                    ///< its index in the piece
    std::uint64_t length = 0;                                      ///< bytes in the piece
    std::uint32_t state = 0;                                       ///< of the main machine
    bool afterNewline = false;         ///< the last byte began a line: a line break right after it begins none
    std::uint32_t attributeState = 0;  ///< of an attribute
    std::uint32_t valueState = 0;      ///< of the value of an attribute, or an item of a declaration
    bool selfClosing = false;          ///< the start tag under way ends in "/>"
    std::uint32_t startTagState = 0;   ///< of a start tag
    std::uint32_t externTagState = 0;  ///< of an instruction
    std::uint32_t entityTagState = 0;  ///< of a declaration
    std::uint32_t endTagState = 0;     ///< of an end tag
    std::uint32_t commentState = 0;    ///< of a comment
    std::uint32_t scriptState = 0;     ///< of a script as tokens
    unsigned char scriptPrevious = 0;  ///< the byte before, in a comment or a string of a script
    std::uint32_t styleState = 0;      ///< of a style sheet
    std::uint64_t line = 1;            ///< `GetCurrentLineNumber`
    std::uint64_t column = 1;          ///< `GetCurrentColumnNumber`

    unsigned char lastByte = 0;    ///< the last one consumed in an earlier piece of the document, 0 for none
    std::uint64_t buffersDue = 0;  ///< where the buffers are limited next: bytes into the piece

    std::uint64_t maxTokenSize = 0;       ///< `SetMaxTokenSize`
    std::uint64_t maxAttributes = 0;      ///< `SetMaxAttributes`
    std::uint64_t maxBytes = UINT64_MAX;  ///< of a token, from `maxTokenSize`
    std::size_t maxListed = SIZE_MAX;     ///< attributes, from both
    std::size_t maxItems = SIZE_MAX;      ///< of a declaration, from `maxTokenSize`
    bool stopped = false;                 ///< a callback has called `Stop`
    bool wentOver = false;                ///< a token was too long, and no bytes have come since
    bool pieceLeft = false;               ///< a callback threw: the rest of the piece was not read
    std::uint64_t pieceOffset = 0;        ///< bytes of the document before the piece
    std::uint64_t tokenOffset = 0;        ///< bytes of the document before the token under way, and its place
    std::uint64_t tokenLine = 1;          ///< the line of that token
    std::uint64_t tokenColumn = 1;        ///< its column
    bool tokenAfterNewline = false;       ///< `afterNewline` at its beginning

    bool scriptsAsText = false;      ///< `SetScriptMode`
    bool isBrowsersName = false;     ///< browsers see the name of the start tag under way as well
    std::uint32_t rawElement = 0;    ///< the one whose content is text
    std::uint32_t rawTextState = 0;  ///< of a content that is text
    /// The end of a content, which may begin its end tag or something else that counts. `line`
    /// and `column` are those before it.
    std::string heldBack;

    AttributePlace attributePlace;           ///< of the one under way
    Vector<AttributePlace> attributePlaces;  ///< of those in `attributes`

    // Kept for their buffers.
    WideString wideName;                               ///< the name of an event
    WideString wideText;                               ///< its text or body
    StatelessHTMLObserver::Attributes wideAttributes;  ///< its attributes
    StatelessHTMLObserver::Tokens wideTokens;          ///< its items
};

/// A small parser for 8-bit markup: bytes in, numbered events out. It keeps nothing but the
/// unfinished construct.
///
///     StatelessHTMLParser parser;
///     parser.Attach(&observer);
///     parser.StartParse(0);
///     result = parser.ParseStream(stream, true);   // or ParseBuffer, any number of times; 0 and 16 are good
///     parser.EndParse();
///
/// It reports each start tag, end tag, comment, text, declaration, script and style sheet as soon
/// as it is complete. It is not lossless: white space inside tags, script comments and the text
/// after the last tag are dropped, and a comment ends with its piece.
///
/// **Results**: a `StatelessResult`, or a code of the stream or the buffer. After 701 to 703 the
/// parser is at the byte that does not fit; `GetCurrentLineNumber` and `GetCurrentColumnNumber` say
/// where.
///
/// **Stop and limits**: a callback ends the document with `Stop`; `SetMaxTokenSize` and
/// `SetMaxAttributes` limit one token. Initially there are no limits. A host that wants a limit for
/// a whole document counts the bytes that it feeds.
///
/// **Callbacks** run inside the call that fed the input. Text is reported when the parser is before
/// the "<" that ends it, everything else when it is after the last byte of the construct. A
/// callback must neither assign to the parser nor destroy it; a call that feeds, starts or ends
/// gets 2 and changes nothing. What a callback throws passes through: the rest of the piece is
/// lost, and the next call goes on after the construct.
///
/// **Strings**: texts, comments, attribute values and items of declarations are converted by the
/// charset. Names, scripts and style sheets always follow the rule for 0, the ANSI code page; so
/// does every string while the charset has no converter.
///
/// **Threads**: one parser, one thread.
///
/// **Copies**: a copy continues where the original was and has the same observers attached. When
/// memory is exhausted, an assignment throws `std::bad_alloc` and changes nothing.
class KESTRA_HTML_API StatelessHTMLParser : public Base::Observable, private StatelessHTMLParserData {
public:
    static constexpr std::int32_t BUFFER_SIZE = 65536;  ///< bytes per read of a stream or file

    /// How the content of elements without markup is read: `SetScriptMode`.
    enum ScriptMode : std::uint32_t {
        SCRIPT_AS_TOKENS = 0,  ///< strings and comments in scripts are recognized, and may hide the end tag
        SCRIPT_AS_TEXT = 1,    ///< the content of scripts and similar elements is text, up to where browsers end it
    };

    static constexpr unsigned long ID_START_PARSING = 0;  ///< no values
    static constexpr unsigned long ID_STOP_PARSING = 1;   ///< no values
    static constexpr unsigned long ID_START_TAG = 2;      ///< name, attributes
    static constexpr unsigned long ID_END_TAG = 3;        ///< name
    static constexpr unsigned long ID_SCRIPT = 4;         ///< attributes, body
    static constexpr unsigned long ID_EXTERN_TAG = 5;     ///< name, attributes
    static constexpr unsigned long ID_ENTITY_TAG = 6;     ///< name, tokens
    static constexpr unsigned long ID_COMMENT = 7;        ///< text
    static constexpr unsigned long ID_TEXT = 8;           ///< text
    static constexpr unsigned long ID_STYLE = 9;          ///< attributes, body

    StatelessHTMLParser();
    /// Continues where `other` is, with the same observers attached.
    StatelessHTMLParser(const StatelessHTMLParser& other);
    /// The same; what this parser has read is dropped.
    StatelessHTMLParser& operator=(const StatelessHTMLParser& other);
    ~StatelessHTMLParser() override;

    /// Begins a document, also when another one is unfinished.
    /// @param charset  0: the ANSI code page, until the markup chooses another one; 1200: each two
    ///                 bytes are a unit of UTF-16, an odd last one becomes U+FFFD
    /// @return 0; 2 when called from a callback; 710 stopped
    std::uint32_t StartParse(StringNS::CharSet::Code charset);

    /// Parses the next piece, of any size.
    /// @param data  borrowed for the call
    /// @param size  in bytes
    /// @return 0; 16 when the piece ends inside a construct, no error; 10 before `StartParse`; 2
    ///         for null data with a size, and when called from a callback; 701 to 703; 710 stopped;
    ///         711 a token exceeded a limit
    std::uint32_t ParseBuffer(const void* data, std::size_t size);

    /// Parses a stream from its current position to its end, in reads of BUFFER_SIZE bytes. Neither
    /// starts nor ends the document. It reads for as long as the stream answers 0, even when no
    /// bytes come.
    /// @param stream   read from its current position on
    /// @param release  delete the stream, whatever the result; a call from a callback leaves it to
    ///                 the caller
    /// @return 0, also when the stream ends inside a construct; 2 for null, and when called from a
    ///         callback; 10 before `StartParse`; 701 to 703, 710, 711; the code of the stream or of
    ///         the buffer; 512 for a stream that claims more bytes than were requested
    std::uint32_t ParseStream(VFS::InputStream* stream, bool release);

    /// Parses a file as `ParseStream` does.
    /// @return the same; 506 when it cannot be opened, or for a null path
    std::uint32_t ParseFile(const WideChar* path);

    /// Ends the document. Text after the last tag, and a construct that is not complete, cause no
    /// event. Without a document it does nothing, and after 710 and 711 it causes no event.
    /// @return 0; 2 when called from a callback; 710 when `OnStopParsing` stopped
    std::uint32_t EndParse();

    /// Ends the document from a callback. The call that feeds, starts or ends answers 710 when the
    /// event has reached all observers, and no other event follows, not even the `OnEndTag` of a
    /// short tag. An exception of the same callback passes through, and the document is over as
    /// well. `EndParse` then answers 0 without an event. Until the next `StartParse` no bytes are
    /// read: feeding calls answer 710. A copy of a stopped parser is stopped.
    /// @return 0; 2 when no callback is running, and nothing changes
    std::uint32_t Stop();

    /// Limits the size of one token. A token is a text, or a construct from its "<" to its end,
    /// white space included; a script or a style sheet is one token with its tags. A token of more
    /// bytes ends the call with 711. All events before it have been caused, `GetCurrentOffset` is
    /// the offset of its first byte, and line and column are those of that byte. `EndParse` then
    /// answers 0 without an event. Or the host goes on: the next byte that it feeds has that
    /// offset, and is read as the first one of a token.
    ///
    /// **Memory**: with a limit of at least 4 KiB a parser allocates for a stream at most 64 KiB
    /// for its buffer, and 16 times the limit. For this a limit also bounds the attributes of a tag
    /// and the items of a declaration: 24 of them and one more for every 128 bytes of the limit.
    /// `SetMaxAttributes` sets another number for attributes.
    /// @param bytes  of the document; 0, the default, for no limit. Takes effect immediately,
    ///               survives `StartParse`, and is copied with the parser
    /// @return 0
    std::uint32_t SetMaxTokenSize(std::uint64_t bytes);
    std::uint64_t GetMaxTokenSize() const;  ///< bytes of the document; 0 for no limit

    /// Limits the attributes of a tag or an instruction. One more ends the call with 711, as for
    /// `SetMaxTokenSize`.
    /// @param count  0, the default, for no limit. Takes effect with the next attribute, survives
    ///               `StartParse`, and is copied with the parser
    /// @return 0
    std::uint32_t SetMaxAttributes(std::uint64_t count);
    std::uint64_t GetMaxAttributes() const;  ///< 0 for no limit

    /// Bit 0: the markup may replace a charset that was given or found before.
    /// @return 0
    std::uint32_t SetFlags(unsigned long newFlags);
    unsigned long GetFlags() const;  ///< initially 1

    /// Sets how the content of elements without markup is read. Takes effect with the next start
    /// tag that is complete; a content that has begun continues as it began. The setting survives
    /// `StartParse`, and is copied with the parser.
    ///
    /// With SCRIPT_AS_TEXT the content of `script`, `style`, `textarea`, `title`, `xmp`, `iframe`,
    /// `noembed` and `noframes` is text up to the element's own end tag: "</" and the name,
    /// compared without case, followed by white space, "/" or ">". In a script the part between
    /// `<!--` and `-->` may contain scripts with their end tags, as in the HTML standard.
    /// `OnScript` and `OnStyle` get the body as it is written; the other elements cause
    /// `OnStartTag`, `OnText` unless the content is empty, and `OnEndTag`. Nothing ends
    /// `plaintext`, so its content causes no event.
    ///
    /// What is between the name of such an end tag and its first ">" is dropped. A "/" at the end
    /// of such a start tag closes nothing. A tag whose name browsers would not recognize, as in
    /// "< title>" and "<title=a>", has no such content; such tags of scripts and style sheets cause
    /// `OnStartTag`. A stop or an exception in the callback of such a tag or of its text ends the
    /// content.
    /// @return 0; 2 for another value, and nothing changes
    std::uint32_t SetScriptMode(ScriptMode newMode);
    ScriptMode GetScriptMode() const;  ///< the mode that was set

    /// Line, from 1. Two line breaks in a row, of any kind, count as one (kept).
    /// @param out  not null
    /// @return 0
    std::uint32_t GetCurrentLineNumber(std::size_t* out) const;

    /// Column, from 1. A byte of text, of a script or of a style sheet counts two (kept).
    /// @param out  not null
    /// @return 0
    std::uint32_t GetCurrentColumnNumber(std::size_t* out) const;

    /// Offset of the next unread byte, from the first one fed after `StartParse`. A construct
    /// extends from the offset of the previous event, or from 0, to that of its own event; the end
    /// tag that a tag ending in "/>" causes is after that tag and has no bytes. Bytes that may
    /// begin the end tag of a content that is text count as unread, for line and column too.
    /// @param out  not null
    /// @return 0
    std::uint32_t GetCurrentOffset(std::uint64_t* out) const;

    /// The place of an attribute, in a callback that gets attributes.
    /// @param index  from 0, in document order
    /// @param place  unchanged when the answer is not 0
    /// @return 0; 2 for null, in another callback, outside a callback, or when there is no such
    ///         attribute
    std::uint32_t GetAttributePlace(std::size_t index, AttributePlace* place) const;

private:
    Uninherited<bool> busy;  // a call that feeds, starts or ends is on the stack
    StringNS::CharSetConverter converter;
};

}  // namespace Kestra::HTML
