#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "../../platform/CharSet.h"
#include "../../platform/Characters.h"
#include "../../platform/Export.h"
#include "../../platform/InputStream.h"
#include "../framework/ParserObserver.h"
#include "../framework/ResultCodes.h"
#include "../framework/TokenPlace.h"

/// The parsers, the rewriter, what observers get, and the recognizers of the single constructs.
namespace Kestra::HTML {

class GenericParserEngine;

/// Parses one document at a time: bytes in, tokens out to the bound observer.
///
///     GenericParser parser;
///     parser.SetObserver(&observer, false);
///     parser.StartParse(0, GenericParser::DATA_STREAM_AUTO);
///     result = parser.ParseStream(stream, true);   // or ParseBuffer, any number of times
///     result = parser.EndParse();
///
/// **Results**: 0, or a `ParserResult`, a `RecognizerResult` of a construct that could not be
/// re-read as junk, or a code of the stream.
///
/// **Junk**: a construct that fails is re-read from the backing stream and delivered as junk.
/// `ParseBuffer` has no stream to read from, so there such a construct ends the parse with the
/// recognizer's code.
///
/// **Conversion**: a token for an observer of the other flavour that cannot be converted is lost,
/// and the parse goes on; `GetConversionError` says why. When memory was lacking, the next token is
/// converted again as usual, and a feeding or ending call that would have answered 0 answers
/// RESULT_OUT_OF_MEMORY (8); everything else is as with 0. On POSIX a few charsets (ISO-2022, T.61)
/// need tables that ICU sets up once in a process. When memory is lacking at that moment, their
/// tokens are lost, with 8, until the process ends.
///
/// **Stop and limits**: a callback ends the document with `Stop`; `SetMaxTokenSize` and
/// `SetMaxAttributes` limit one token. Initially there are no limits. A host that wants a limit for
/// a whole document counts the bytes that it feeds.
///
/// **Exceptions**: what a callback throws, and `std::bad_alloc` where memory is exhausted and no
/// result says so; no others.
///
/// **Threads**: one parser, one thread. Every callback runs inside the call that fed the input. A
/// callback that calls `StartParse`, `ParseBuffer`, `ParseStream`, `ParseFile` or `EndParse` of its
/// own parser gets 2 and nothing changes (a stream stays the caller's); queries, setters and
/// `SetObserver` work there and take effect from the next callback. A callback must neither assign
/// to the parser nor destroy it.
///
/// **Copies**: a copy continues where the original was, even inside a token. It inherits neither
/// the stream nor the text that the self-check keeps: its checksum goes on, and its
/// `GetSelfCheckStream` is null until the next document. A move is a copy. A copy or an assignment
/// for which there is no memory throws `std::bad_alloc`, and the parser assigned to is unchanged.
/// `SetObserver` throws it too when it takes ownership; the observer then stays the caller's, and
/// the previous one stays bound.
class KESTRA_HTML_API GenericParser {
public:
    static constexpr std::uint64_t BUFFER_SIZE = 16384;                ///< bytes per read of a stream or file
    static constexpr std::uint64_t DETECTCHARSET_MIN_CONFIDENCE = 50;  ///< initial minimum, of 100
    static constexpr std::uint64_t DETECTCHARSET_MIN_SIZE = 256;       ///< bytes

    /// What is compared at the end of a document.
    enum SelfCheck : std::uint32_t {
        SELF_CHECK_OFF = 0,   ///< nothing
        SELF_CHECK_CRC = 1,   ///< compare the checksums of the input and of the tokens written back
        SELF_CHECK_COPY = 2,  ///< the same, and keep the tokens written back
    };

    /// What the bytes of a document are.
    enum DataStreamType : std::uint32_t {
        DATA_STREAM_AUTO = 0,   ///< and every other value: decide by a byte-order mark in the first bytes
        DATA_STREAM_8BIT = 1,   ///< 8-bit text in the given charset
        DATA_STREAM_UTF16 = 2,  ///< UTF-16, low byte first
    };

    /// How the content of elements without markup is read: `SetScriptMode`.
    enum ScriptMode : std::uint32_t {
        /// Strings and comments in script and style are tokens; a string may hide an end tag.
        SCRIPT_AS_TOKENS = 0,
        /// The content of script, style and similar elements is one text token, up to where
        /// browsers end it.
        SCRIPT_AS_TEXT = 1,
    };

    GenericParser();
    /// Continues where `other` is; see Copies above.
    GenericParser(const GenericParser& other);
    /// The same; what this parser has read is dropped.
    GenericParser& operator=(const GenericParser& other);
    ~GenericParser();

    /// Binds an observer and unbinds the previous one; null binds none.
    ///
    /// @param observer  gets 8-bit tokens
    /// @param owns      the parser frees the observer with the global `operator delete(void*)`,
    ///                  without running a destructor, when another one is bound or the last parser
    ///                  that shares it (copies do) is destroyed; inside a callback only after the
    ///                  call that fed the input. Binding the same pointer again frees nothing and
    ///                  renews `owns`.
    /// @return 0
    std::uint32_t SetObserver(ParserObserver<char, std::string>* observer, bool owns);
    /// The same for an observer that gets tokens in UTF-16.
    std::uint32_t SetObserver(ParserObserver<WideChar, WideString>* observer, bool owns);

    /// Begins a document. The rest of an unfinished one is dropped.
    /// @param code  the charset of 8-bit text; 65000 (UTF-7) is replaced by 1252. With 0, unknown,
    ///              charset declarations in `meta` tags are applied as they come, unless there is a
    ///              byte-order mark, and `ParseStream` asks the detector at the end
    /// @param type  what the bytes are
    /// @return 0; 2 when called from a callback; 710 when a callback has stopped the document
    std::uint32_t StartParse(StringNS::CharSet::Code code, DataStreamType type);

    /// Parses the next piece, of any size.
    /// @param data  borrowed for the call; UTF-16 at an odd address is copied once
    /// @param size  in bytes; 0 changes nothing
    /// @return 0; 2 for null data with a size, or for UTF-16 in an odd number of bytes; 8 as 0, but
    ///         a token was lost because memory was lacking; 705 to parse again; 710 stopped; 711 a
    ///         token exceeded a limit; the code of a failed construct
    std::uint32_t ParseBuffer(const char* data, std::uint64_t size);

    /// Parses a stream from its current position to its end. Does not call `EndParse`.
    ///
    /// Asks the stream for its position before every read. Junk never re-reads more bytes than were
    /// fed since the construct began; when the positions of the stream contradict that, the
    /// construct cannot be re-read.
    ///
    /// @param stream      read from its current position on
    /// @param ownsStream  the parser deletes the stream before it returns, also on an error. A
    ///                    borrowed stream must live until `EndParse`, `StartParse` or the next call
    ///                    that answers an error, because junk is re-read from it. After 0, 706, and
    ///                    8 for a lost token, it stays in use; every other answer ends its use.
    /// @return 0; 2 for null; 8 as 0, but a token was lost because memory was lacking, or when the
    ///         buffer cannot be allocated; 705 when the charset is found late: start again with
    ///         `GetCharset`; 706 when the whole stream has been parsed and its charset could not be
    ///         detected: `EndParse` then ends the document as after 0; 710 and 711, as for
    ///         `ParseBuffer`; a code of `ParseBuffer`, of the stream or of the buffer. 507 when
    ///         the stream delivers nothing, without reaching its end, in 1,000 reads in a row.
    std::uint32_t ParseStream(VFS::InputStream* stream, bool ownsStream);

    /// Parses a file as `ParseStream` does.
    /// @return the same, and 2 when it cannot be opened.
    std::uint32_t ParseFile(const WideChar* path);

    /// Ends the document: flushes what is open and calls `OnEndParsing`. With no parser running, or
    /// called twice or after 710 or 711, returns 0 without callbacks. Bytes fed afterwards without
    /// `StartParse` continue the document.
    /// @return 0; 710 when a callback has stopped the document; 711 when the last characters made
    ///         the last token exceed a limit; 8 as 0, but a token was lost because memory was
    ///         lacking. Without `OnEndParsing`: 704 when the self-check finds a difference or lost
    ///         its copy, and 16 or a recognizer's code when a construct is open and cannot be
    ///         re-read as junk
    std::uint32_t EndParse();

    /// Ends the document from a callback. When the callback has returned, the call that feeds,
    /// starts or ends answers 710, and nothing more is delivered. An exception of the same callback
    /// passes through, and the document is over as well. `EndParse` then answers 0 without
    /// callbacks, and `GetTokenPlace` still answers the place of the callback's token. Until the
    /// next `StartParse` no bytes are read: feeding calls answer 710. A stop in `OnEndParsing`
    /// changes nothing but the answer of `EndParse`. A copy of a stopped parser is stopped.
    /// @return 0; 2 when no callback is running, and nothing changes
    std::uint32_t Stop();

    /// Limits the size of one token.
    ///
    /// A token of more bytes of the document ends the call with 711, as soon as more bytes than the
    /// limit have been fed, in pieces of any size, or when the token is complete. Text and junk are
    /// tokens too, and so are line comments that reach no observer. Junk is delivered in parts: the
    /// construct that failed, and what follows it up to the next "<". All tokens before the long
    /// one have been delivered, `GetTokenPlace().end` is its first byte, and `GetLine` and
    /// `GetColumn` answer the place of that byte.
    ///
    /// After 711 `EndParse` answers 0 without callbacks. Or the host goes on without `StartParse`:
    /// the next byte that it feeds has the offset `GetTokenPlace().end`, and the parser is where it
    /// was before the token, in a script for example. A host that feeds the document again from
    /// there, with another limit or with none, gets the same tokens as without a limit. A host that
    /// skips some bytes gets the tokens of the rest, at offsets that are too low by the number of
    /// bytes skipped. The self-check starts again: it compares what is fed from then on.
    ///
    /// **Memory**: with a limit a parser allocates for a stream at most 64 KiB and 16 times the
    /// limit, not counting observers, streams, a kept self-check, the charset detector and what
    /// `SetChrDetMaxSize` lets it look at, and the tables of charsets, which are loaded once. For
    /// this a limit also bounds the attributes of a tag and the items of a declaration: 24 of them
    /// and one more for every 128 bytes of the limit; one too many ends the call with 711 as if the
    /// token were too long. `SetMaxAttributes` sets another number for attributes, each of which
    /// takes up to 1 KiB.
    ///
    /// @param bytes  of the document; 0, the default, for no limit. Takes effect immediately,
    ///               survives `StartParse`, and is copied with the parser
    /// @return 0
    std::uint32_t SetMaxTokenSize(std::uint64_t bytes);
    std::uint64_t GetMaxTokenSize() const;  ///< bytes of the document; 0 for no limit

    /// Limits the attributes of a tag or an instruction. They are counted as written, before bare
    /// words become a part of a value. One more ends the call with 711, as for `SetMaxTokenSize`.
    /// @param count  0, the default, for no limit. Takes effect with the next attribute, survives
    ///               `StartParse`, and is copied with the parser
    /// @return 0
    std::uint32_t SetMaxAttributes(std::uint64_t count);
    std::uint64_t GetMaxAttributes() const;  ///< 0 for no limit

    /// Detects the charset of a buffer; needs DETECTCHARSET_MIN_SIZE bytes and the minimum
    /// confidence.
    /// @param data  the first bytes of a document, or all
    /// @param size  in bytes
    /// @param out   receives the code, 0 when there is none; untouched by 2 and 707
    /// @return 0; 2 for null; 707 too little data; 708 not confident; 709 the detector failed;
    ///         11 no detector, or no usable answer (ASCII)
    std::uint32_t DetectCharset(const void* data, std::uint64_t size, StringNS::CharSet::Code* out);

    /// The same over the bytes from the stream's current position, at most as many as
    /// `SetChrDetMaxSize` says. The stream stays the caller's.
    /// @return also a code of the stream; 8 when there is no memory for the bytes
    std::uint32_t DetectCharset(VFS::InputStream* stream, StringNS::CharSet::Code* out);

    /// Line of the next unread character, from 1. In a callback that is the end of the token; in
    /// `OnText` it is the place after the opener of the next construct, such as "<", which has been
    /// read.
    std::uint64_t GetLine() const;
    /// Column of the same character, from 1, in characters of the running parser.
    std::uint64_t GetColumn() const;

    /// The place of the token that is being delivered; outside a callback, of the last one
    /// delivered.
    ///
    /// A token begins where the token before it ended, so places never overlap. Some bytes are in
    /// no token's place:
    ///
    /// * those of tokens that reach no observer: line comments for an 8-bit observer of the 8-bit
    ///   parser, and records that could not be converted;
    /// * those in an earlier piece that might have been a byte-order mark and were none, or of a
    ///   mark that stayed unfinished;
    /// * those that a call did not parse because it failed or a callback threw.
    ///
    /// In a callback without a record it is the place of the tag that caused the callback; in
    /// `OnStartParsing`, and in the `OnCharset` of `StartParse`, the beginning of the document; in
    /// `OnEndParsing` its end. When no parser runs it is the beginning. A place costs nothing until
    /// it is asked for; offsets have 64 bits.
    TokenPlace GetTokenPlace() const;

    /// The place of an attribute of the tag, or instruction, that is being delivered, for observers
    /// of both flavours. A value into which bare words were folded extends to the last of them, and
    /// its quotes are a part of it. Asking for all attributes in ascending order takes time in
    /// proportion to their number.
    /// @param index  from 0, as in the record's list
    /// @param place  untouched when the answer is not 0
    /// @return 0; 2 for null, or when there is no such attribute
    std::uint32_t GetAttributePlace(std::uint64_t index, AttributePlace* place) const;

    /// The places of the parts of that attribute: of the attribute with its own value, and then of
    /// every bare word that was folded into the value. `AttributesNormalizer::Split` gives their
    /// texts.
    /// @param index   of the attribute, from 0
    /// @param places  receives one place or more; untouched when the answer is not 0
    /// @return 0; 2 for null, or when there is no such attribute
    std::uint32_t GetAttributeParts(std::uint64_t index, std::vector<AttributePlace>* places) const;

    /// Name of the recognizer that is running; in junk, of the one that failed; in `OnEndParsing`,
    /// of the one that ran last. Empty when no parser runs.
    WideString GetCurrentParserName() const;

    /// The charset in force; when no parser runs, the one that was given, or found by the detector.
    /// In `OnStartParsing`, and in `OnBOM` for a UTF-8 mark, it is still the charset of the
    /// previous document, 0 in a new parser; with a UTF-16 mark it is already 1200 (kept).
    StringNS::CharSet::Code GetCharset() const;

    /// True when the 16-bit parser runs.
    bool IsWParser() const;

    /// True when `SetDetectCharsetErrors` is on and a string for a wide observer could not be
    /// decoded without loss: a replacement character was written for some bytes, or the conversion
    /// failed (`GetConversionError`) and the token was lost.
    bool HasCharsetErrors() const;

    /// Why the last failed conversion of the document failed, for an observer of the other flavour:
    /// RESULT_UNSUPPORTED_CHARSET (50) when there is no converter for `GetCharset` or it failed, or
    /// RESULT_OUT_OF_MEMORY (8). 0 when none has failed, and when no parser runs. Works without any
    /// setting.
    std::uint32_t GetConversionError() const;

    /// True when a charset declared in the markup came too late: parse again with `GetCharset`. Not
    /// yet in `OnCharset`.
    bool NeedsReparsing() const;

    /// True when the charset was chosen by the detector.
    bool WasCharsetDetectorUsed() const;

    /// The tokens written back, as kept by SELF_CHECK_COPY: a stream at their first byte, the same
    /// stream in every call. It belongs to the parser, and is valid until the next document begins
    /// or the parser is assigned to or destroyed. Null when there is none, when no parser runs, and
    /// when the copy could not be written to the temporary file or read back. The first call ends
    /// the copy: tokens of bytes fed later are not in it.
    VFS::InputStream* GetSelfCheckStream();

    /// Sets what is compared at the end of a document. Takes effect immediately: a self-check that
    /// is switched on or off inside a document compares only a part of it, so it may report a
    /// difference; a copy is kept only when the mode is set as the document begins.
    /// @return 0
    std::uint32_t SetSelfCheck(SelfCheck selfCheck);
    SelfCheck GetSelfCheck() const;  ///< 0 when no parser runs

    /// Sets how the content of elements without markup is read. Takes effect with the next start
    /// tag that is delivered; a content that has begun continues as it began. The setting survives
    /// `StartParse`, and is copied with the parser.
    ///
    /// With SCRIPT_AS_TEXT the content of `script`, `style`, `textarea`, `title`, `xmp`, `iframe`,
    /// `noembed` and `noframes` is one text token, none when it is empty, up to the element's own
    /// end tag: "</" and the name, compared without case, followed by white space, "/" or ">". In a
    /// script the part between `<!--` and `-->` may contain scripts with their end tags, as in the
    /// HTML standard. Nothing ends `plaintext`, and the content of `noscript` is markup. No string,
    /// comment, regular expression, tag or section is recognized in the content. The name of the
    /// element ends at a "/", so such content follows short tags too. There is no tree, so it also
    /// follows tags inside `svg` and `math`, where browsers read markup. `OnJSTagStart` and the
    /// similar callbacks come as in the other mode, and also after short tags. The end of the
    /// document ends the content, and so does a call that an exception leaves.
    /// @return 0; 2 for another value, and nothing changes
    std::uint32_t SetScriptMode(ScriptMode scriptMode);
    ScriptMode GetScriptMode() const;  ///< the mode that was set

    /// Sets whether `HasCharsetErrors` is kept; costs time. Takes effect immediately.
    /// @return 0
    std::uint32_t SetDetectCharsetErrors(bool detect);
    bool GetDetectCharsetErrors() const;  ///< false when no parser runs
    /// Sets how sure of its answer the detector must be, of 100. Takes effect immediately.
    /// @return 0
    std::uint32_t SetChrDetMinConfidence(std::uint64_t confidence);
    std::uint64_t GetChrDetMinConfidence() const;  ///< as it was set; initially 50
    /// Sets how much of a stream the detector looks at, in `ParseStream`, `ParseFile` and the
    /// stream form of `DetectCharset`. During the detection up to four times these bytes are in
    /// memory: they, their text without markup, and what the engines copy. Time and memory are in
    /// proportion to what the stream has of them, not to the number set.
    /// @param bytes  from the first byte looked at; initially BUFFER_SIZE, 16,384; 0 for the whole
    ///               stream. With fewer than DETECTCHARSET_MIN_SIZE the detector is never asked.
    ///               Takes effect immediately, survives `StartParse`, and is copied with the parser
    /// @return 0
    std::uint32_t SetChrDetMaxSize(std::uint64_t bytes);
    std::uint64_t GetChrDetMaxSize() const;  ///< as it was set; initially 16,384

    /// How sure the detector was when it was asked last, by a parse or by `DetectCharset`: of 100,
    /// also when that was less than the minimum, or its answer was not usable. 0 when it was never
    /// asked or had no answer, and after a detection that failed before it was asked. Nothing else
    /// changes it: it survives `StartParse`, a parse that needs no detector leaves it, and it is
    /// copied with the parser.
    std::uint64_t GetDetectedConfidence() const;

    /// Defined inside the library only.
    struct Internals;

private:
    std::unique_ptr<GenericParserEngine> engine;
};

}  // namespace Kestra::HTML
