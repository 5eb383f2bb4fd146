#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "../../platform/CharSet.h"
#include "../../platform/Characters.h"
#include "../../platform/Export.h"
#include "../../platform/InputStream.h"
#include "../framework/ParserObserver.h"
#include "../output/ParserObserverOutputHandler.h"
#include "../parser/GenericParser.h"
#include "RewriterElement.h"
#include "RewriterToken.h"

namespace Kestra::HTML {

/// Copies a document to a handler, with the edits that the host makes in its callbacks. Everything
/// else is copied byte for byte.
///
///     Rewriter rewriter(&output);
///     rewriter.OnElement("a[href]", [](RewriterElement link) { link.GetStartTag().SetAttribute("rel", "nofollow"); });
///     rewriter.StartParse(0, GenericParser::DATA_STREAM_AUTO);
///     result = rewriter.ParseFile(path);   // or ParseBuffer, any number of times
///     result = rewriter.EndParse();
///
/// **Nothing is lost**: whatever the answers are, the output of a document is its input with the
/// edits made. After an answer other than 0, and other than 8 for a lost token, everything that is
/// not yet written or is fed until `StartParse` is copied unchanged: go on feeding, the answer is
/// 0. Elements that are being removed end there; insertions at the end of an element, or after it,
/// are written at the end of the document. The output is complete after `EndParse`; the destructor
/// writes nothing.
///
/// **Junk**: a construct that fails is re-read from the retained bytes, so `ParseBuffer` never
/// answers a recognizer's code unless memory is lacking.
///
/// **Memory**: it keeps the bytes of the unfinished token, and the names and pending edits of the
/// open elements.
///
/// **Edits** are made to the token that a callback got: by the observer through `GetToken`, by the
/// callbacks of `OnElement` and `OnContent` through their parameter. Content that is removed or
/// replaced causes callbacks as always, and edits in it are removed with it.
///
/// **Elements** are lexical: the start tags and end tags that the parser sees, matched by name; see
/// `RewriterElement`.
///
/// **Charsets**: texts are written in the charset in force at the token. While it is unknown (0),
/// and in one with shifts or escapes (such as ISO-2022), every character beyond ASCII becomes a
/// reference. So does one whose bytes could be taken for markup.
///
/// **Scripts**: what is written into `script`, `style`, `xmp`, `iframe`, `noembed`, `noframes` or
/// `plaintext` is written unchanged, given as text or as markup. It is refused where it would make
/// the element's end tag, alone or with its neighbours, and in a script also for "<!--" or
/// "<script", which together hide the end tag. A text that ends with the beginning of one of them
/// is refused too when what follows is not known. With the default `SCRIPT_AS_TOKENS` an open quote
/// or a "/" can hide the end tag, so that an element ends where no browser ends it: set
/// `SCRIPT_AS_TEXT` to remove or edit scripts.
///
/// **Threads**: as `GenericParser`. Calls from a callback that feed, start or end a document, bind
/// an observer or register a callback answer 2.
///
/// **Exceptions**: what a callback or the handler throws. The current token is then written without
/// its edits and the rest of the piece unchanged, even inside an element that is being removed; the
/// next piece is rewritten again. A handler that throws has received the bytes that it was called
/// with. When memory is exhausted, the answer is 8.
class KESTRA_HTML_API Rewriter {
public:
    using ElementCallback = std::function<void(RewriterElement element)>;  ///< gets an element at its start tag
    using TokenCallback = std::function<void(RewriterToken token)>;        ///< gets a token of a content

    /// @param output  borrowed until the rewriter is destroyed; gets the document in parts of any
    ///                size, `isMarkup` true for all of them. With null nothing is written.
    explicit Rewriter(ParserObserverOutputHandler* output);
    Rewriter(const Rewriter&) = delete;
    Rewriter& operator=(const Rewriter&) = delete;
    ~Rewriter();

    /// Binds an observer, borrowed, and unbinds the previous one; null binds none. It gets the same
    /// callbacks as from a `GenericParser`.
    /// @return 0; 2 when called from a callback
    std::uint32_t SetObserver(ParserObserver<char, std::string>* observer);
    /// The same for an observer that gets tokens in UTF-16.
    std::uint32_t SetObserver(ParserObserver<WideChar, WideString>* observer);

    /// Calls back for every element that a selector matches, when its start tag is delivered, after
    /// the observer and in the order of these calls.
    ///
    /// The selector is matched against the tag as it came in, without edits.
    ///
    /// @param selector  in UTF-8, as in CSS: types and `*`, `#id`, `.class`, attributes with every
    ///                  operator and the flags `i` and `s`, joined by white space (descendant) or
    ///                  ">" (child). Nothing else: no lists, no pseudo-classes. Types and the names
    ///                  of attributes are compared without the case of "A" to "Z".
    /// @param callback  gets each element; kept until the rewriter is destroyed
    /// @param message   receives what is wrong and where, in English; may be null
    /// @return 0; REWRITE_BAD_SELECTOR; 2 for a null callback, or when called from a
    ///         callback
    std::uint32_t OnElement(std::string_view selector, ElementCallback callback, std::string* message = nullptr);

    /// Calls back for every token in the content of the elements that a selector matches, except
    /// for their own tags; an empty selector means every token of the document. An end tag is no
    /// content of the elements that it ends.
    /// @return as `OnElement`
    std::uint32_t OnContent(std::string_view selector, TokenCallback callback, std::string* message = nullptr);

    /// The token that is being delivered, for the observer; outside a callback, one that is over.
    RewriterToken GetToken();

    /// Begins a document. An unfinished one is written to its end first, without callbacks.
    /// @return as `GenericParser::StartParse`
    std::uint32_t StartParse(StringNS::CharSet::Code code, GenericParser::DataStreamType type);

    /// Rewrites the next piece, of any size; an odd number of bytes of UTF-16 too.
    /// @return as `GenericParser::ParseBuffer`, but for failed constructs; 8 also when memory is
    ///         exhausted; 711 when a limit is exceeded
    std::uint32_t ParseBuffer(const char* data, std::uint64_t size);

    /// Rewrites a stream from its current position to its end. The stream is only read, and may be
    /// freed afterwards. A charset that the markup declares too late gives 705; the detector is not
    /// used. Whatever the answer, the stream is read and written to its end, unless the stream
    /// fails or a callback throws.
    /// @return a code of `ParseBuffer` or of the stream
    std::uint32_t ParseStream(VFS::InputStream* stream, bool ownsStream);

    /// Rewrites a file.
    /// @return the same, and 2 when it cannot be opened
    std::uint32_t ParseFile(const WideChar* path);

    /// Ends the document and every element that is still open. After that, all of the input has
    /// been written.
    /// @return as `GenericParser::EndParse`; 0 after an answer other than 0
    std::uint32_t EndParse();

    /// From a callback: nothing more is delivered, the feeding call answers 710, and the rest of
    /// the document is copied. The edits of the current token are made.
    /// @return as `GenericParser::Stop`
    std::uint32_t Stop();

    /// For its queries: places, charset, errors.
    const GenericParser& GetParser() const;

    /// @name Settings, as those of GenericParser
    /// @{

    /// As `GenericParser::SetSelfCheck`.
    std::uint32_t SetSelfCheck(GenericParser::SelfCheck selfCheck);
    /// As `GenericParser::SetDetectCharsetErrors`.
    std::uint32_t SetDetectCharsetErrors(bool detect);
    /// As `GenericParser::SetScriptMode`.
    std::uint32_t SetScriptMode(GenericParser::ScriptMode scriptMode);
    /// As `GenericParser::SetMaxTokenSize`.
    std::uint32_t SetMaxTokenSize(std::uint64_t bytes);
    /// As `GenericParser::SetMaxAttributes`.
    std::uint32_t SetMaxAttributes(std::uint64_t count);

    /// @}

    /// Limits the number of open elements; 0, the default, for no limit. A start tag that exceeds
    /// it ends the feeding call with 711; it is copied, as is everything after it.
    /// @return 0
    std::uint32_t SetMaxDepth(std::uint64_t count);
    /// The same for the number of attributes of all open elements together.
    std::uint32_t SetMaxOpenAttributes(std::uint64_t count);

private:
    std::unique_ptr<RewriterEngine> engine;
};

}  // namespace Kestra::HTML
