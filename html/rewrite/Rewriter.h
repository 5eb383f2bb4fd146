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

/// Copies a document to a handler, and changes what the host asks for in its callbacks. All else is
/// copied as the bytes that came in.
///
///     Rewriter rewriter(&output);
///     rewriter.OnElement("a[href]", [](RewriterElement link) { link.GetStartTag().SetAttribute("rel", "nofollow"); });
///     rewriter.StartParse(0, GenericParser::DATA_STREAM_AUTO);
///     result = rewriter.ParseFile(path);   // or ParseBuffer, any number of times
///     result = rewriter.EndParse();
///
/// **Nothing is lost**: whatever the answers are, the output of a document is its input with the
/// edits made. After an answer other than 0, and other than 8 for a token that was lost, all that
/// is not yet written and all that is still fed until `StartParse` is copied as it is: go on
/// feeding, the answer is 0. Elements that are being removed end there; what was to be written at
/// the end of an element, or after it, is written at the end of the document. The output is
/// complete after `EndParse`; destruction writes nothing. **Junk**: a construct that fails is read
/// again from the bytes at hand, so pieces of a buffer never end in a recognizer's code but for
/// want of memory. **Memory**: it keeps the token under way, and of the open elements the names and
/// what was asked for. **Edits** are made to the token that a callback got: by the observer through
/// `GetToken`, by the callbacks of `OnElement` and `OnContent` through what they are given. In
/// content that is removed or replaced callbacks come as always, and what they change goes with it.
/// **Elements** are lexical: the start tags and end tags that the parser sees, matched by name; see
/// `RewriterElement`. **Charsets**: texts are written in the charset in force at the token. While
/// it is unknown (0), and in one with shifts or escapes (as ISO-2022), every character beyond ASCII
/// becomes a reference. So does one whose bytes could be taken for markup. **Scripts**: what is
/// written into `script`, `style`, `xmp`, `iframe`, `noembed`, `noframes` or `plaintext` is written
/// as it is, given as text or as markup, and refused where it would make the element's end tag,
/// alone or with its neighbours, and in a script "<!--" or "<script", which together hide the end
/// tag. A text that ends like the begin of one of them is refused too when what follows is not
/// known. For the default `SCRIPT_AS_TOKENS` an open quote or a "/" can hide the end tag, so that
/// an element ends where no browser ends it: who removes or edits scripts should set
/// `SCRIPT_AS_TEXT`. **Threads**: as `GenericParser`. Calls out of a callback that feed, start or
/// end a document, bind an observer or register a callback answer 2. **Exceptions**: what a
/// callback or the handler throws. The token at hand is then written without its edits and the rest
/// of the piece as it is, also where an element was being removed; the next piece is rewritten
/// again. A handler that throws has got the bytes that it was called with. When memory is
/// exhausted, the answer is 8.
class KESTRA_HTML_API Rewriter {
public:
    using ElementCallback = std::function<void(RewriterElement element)>;
    using TokenCallback = std::function<void(RewriterToken token)>;

    /// @param output  borrowed until the rewriter is destroyed; gets the document in parts of any
    ///                size, `isMarkup` true for all of them. With null nothing is written.
    explicit Rewriter(ParserObserverOutputHandler* output);
    Rewriter(const Rewriter&) = delete;
    Rewriter& operator=(const Rewriter&) = delete;
    ~Rewriter();

    /// Binds an observer, borrowed, in place of the one before; null binds none. It gets what it
    /// would get from a `GenericParser`.
    /// @return 0; 2 inside a callback
    std::uint32_t SetObserver(ParserObserver<char, std::string>* observer);
    std::uint32_t SetObserver(ParserObserver<WideChar, WideString>* observer);

    /// Calls back for every element that a selector matches, when its start tag is delivered, after
    /// the observer and in the order of these calls.
    ///
    /// The selector sees the tag as it came in.
    ///
    /// @param selector  in UTF-8, as in CSS: types and `*`, `#id`, `.class`, attributes with every
    ///                  operator and the flags `i` and `s`, joined by white space (descendant) or
    ///                  ">" (child). Nothing else: no lists, no pseudo-classes. Types and the names
    ///                  of attributes are compared without the case of "A" to "Z".
    /// @param message   receives what is wrong and where, in English; may be null
    /// @return 0; REWRITE_BAD_SELECTOR; 2 for a null callback, or inside a callback
    std::uint32_t OnElement(std::string_view selector, ElementCallback callback, std::string* message = nullptr);

    /// Calls back for every token in the content of the elements that a selector matches, their own
    /// tags left out; an empty selector stands for the whole document, with every token. An end tag
    /// is no content of the elements that it ends.
    /// @return as `OnElement`
    std::uint32_t OnContent(std::string_view selector, TokenCallback callback, std::string* message = nullptr);

    /// The token that is being delivered, for the observer; outside a callback one that is over.
    RewriterToken GetToken();

    /// Begins a document. One that was not ended is written to its end first, without callbacks.
    /// @return as `GenericParser::StartParse`
    std::uint32_t StartParse(StringNS::CharSet::Code code, GenericParser::DataStreamType type);

    /// Rewrites the next piece, of any size; an odd number of bytes of UTF-16 too.
    /// @return as `GenericParser::ParseBuffer`, but for failed constructs; 8 also when memory is
    /// exhausted; 711 when a limit is exceeded
    std::uint32_t ParseBuffer(const char* data, std::uint64_t size);

    /// Rewrites a stream from its current position to its end. The stream is only read, and may be
    /// freed afterwards. A charset that the markup declares too late gives 705; none is detected.
    /// Whatever the answer, the stream is read, and written, to its end, unless it fails itself or
    /// a callback throws.
    /// @return a code of `ParseBuffer` or of the stream
    std::uint32_t ParseStream(VFS::InputStream* stream, bool ownsStream);

    /// Rewrites a file. @return the same, and 2 when it cannot be opened
    std::uint32_t ParseFile(const WideChar* path);

    /// Ends the document, and every element that is still open. All of the input has then been
    /// written.
    /// @return as `GenericParser::EndParse`; 0 after an answer other than 0
    std::uint32_t EndParse();

    /// Out of a callback: nothing more is delivered, the feeding call answers 710, and the rest of
    /// the document is copied. The edits of the token at hand count.
    /// @return as `GenericParser::Stop`
    std::uint32_t Stop();

    /// For its queries: places, charset, errors.
    const GenericParser& GetParser() const;

    /// @name Settings, as those of `GenericParser`
    /// @{
    std::uint32_t SetSelfCheck(GenericParser::SelfCheck selfCheck);
    std::uint32_t SetDetectCharsetErrors(bool detect);
    std::uint32_t SetScriptMode(GenericParser::ScriptMode scriptMode);
    std::uint32_t SetMaxTokenSize(std::uint64_t bytes);
    std::uint32_t SetMaxAttributes(std::uint64_t count);
    /// @}

    /// The most elements that may be open, and the most attributes that all of them have together;
    /// 0, the default, for any number. A start tag that goes over ends the feeding call with 711;
    /// it is copied like all that follows.
    std::uint32_t SetMaxDepth(std::uint64_t count);
    std::uint32_t SetMaxOpenAttributes(std::uint64_t count);

private:
    std::unique_ptr<RewriterEngine> engine;
};

}  // namespace Kestra::HTML
