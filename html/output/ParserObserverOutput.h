#pragma once

#include "../framework/ParserObserver.h"
#include "ParserObserverOutputHandler.h"

namespace Kestra::HTML {

/// An observer that writes the tokens back as markup. For most documents the output is not an exact
/// copy: `Rewriter` makes one, with edits.
///
/// An 8-bit observer of 8-bit text gets no line comments of scripts, so none are written. The wide
/// one passes the bodies of markup comments, CDATA sections and conditional sections (condition and
/// tail) with a byte count equal to their length in characters, so that only their first half
/// arrives (kept). A UTF-16 document with such a body that is not empty answers 704 to the
/// self-check, which is written by the same writers.
///
/// Of 258 real pages (npm, htmlparser-benchmark 1.1.3) 57 come out identical in 8 bits and one in
/// the wide flavour. A copy of an 8-bit document is what `GenericParser::GetSelfCheckStream` gives:
/// the self-check gets every token of the parser's own flavour.
///
/// A host derives from it and receives the output in `OnOutput`; the static writers put a single
/// record out to any handler. Each punctuation character is a separate piece, each string one
/// piece, empty ones too. Null strings and lists in a record made by a host are written as empty.
template <typename C, typename S>
class KESTRA_HTML_API ParserObserverOutput : public ParserObserver<C, S> {
public:
    ParserObserverOutput();
    /// Writes to its own `OnOutput`: there is nothing to copy.
    ParserObserverOutput(const ParserObserverOutput& other);
    /// Copies nothing.
    ParserObserverOutput& operator=(const ParserObserverOutput& other);

    /// As it is in the record.
    static void GetTextOutput(const TextData<C, S>* data, ParserObserverOutputHandler* sink);
    /// Always closed, also when the input ended inside the comment.
    static void GetCCommentOutput(const CCommentData<C, S>* data, ParserObserverOutputHandler* sink);
    /// Without a line end.
    static void GetCPPCommentOutput(const CPPCommentData<C, S>* data, ParserObserverOutputHandler* sink);
    /// Always in both quotes.
    static void GetSQuoteStringOutput(const SQuoteStringData<C, S>* data, ParserObserverOutputHandler* sink);
    /// Always in both quotation marks.
    static void GetDQuoteStringOutput(const DQuoteStringData<C, S>* data, ParserObserverOutputHandler* sink);
    /// An unclosed tag loses its suffix together with its ">".
    static void GetStartTagOutput(const StartTagData<C, S>* data, ParserObserverOutputHandler* sink);
    /// The suffix and the "/" are always written.
    static void GetShortTagOutput(const ShortTagData<C, S>* data, ParserObserverOutputHandler* sink);
    /// The suffix is written only after attributes.
    static void GetEndTagOutput(const EndTagData<C, S>* data, ParserObserverOutputHandler* sink);
    /// "]]>" only when it is closed.
    static void GetCDATATagOutput(const CDATATagData<C, S>* data, ParserObserverOutputHandler* sink);
    /// "]" only when the bracket is closed, the tail and ">" only when the tag is.
    static void GetConditionalTagOutput(const ConditionalTagData<C, S>* data, ParserObserverOutputHandler* sink);
    /// "-->" only when it is closed.
    static void GetCommentTagOutput(const CommentTagData<C, S>* data, ParserObserverOutputHandler* sink);
    /// The items with their prefixes and quotes, and always the ">".
    static void GetEntityTagOutput(const EntityTagData<C, S>* data, ParserObserverOutputHandler* sink);
    /// The raw text, or an XML declaration with its attributes.
    static void GetExternTagOutput(const ExternTagData<C, S>* data, ParserObserverOutputHandler* sink);
    /// The bytes as they are.
    static void GetJunkDataOutput(const JunkData<C, S>* data, ParserObserverOutputHandler* sink);

    void OnStartParsing() override;                                  ///< writes nothing
    void OnEndParsing() override;                                    ///< writes nothing
    void OnBOM(const void* bytes, std::uint64_t size) override;      ///< writes the mark
    void OnCharset(StringNS::CharSet::Code code) override;           ///< writes nothing
    void OnText(TextData<C, S>* data) override;                      ///< writes as `GetTextOutput`
    void OnCComment(CCommentData<C, S>* data) override;              ///< writes as `GetCCommentOutput`
    void OnCPPComment(CPPCommentData<C, S>* data) override;          ///< writes as `GetCPPCommentOutput`
    void OnSQuoteString(SQuoteStringData<C, S>* data) override;      ///< writes as `GetSQuoteStringOutput`
    void OnDQuoteString(DQuoteStringData<C, S>* data) override;      ///< writes as `GetDQuoteStringOutput`
    void OnStartTag(StartTagData<C, S>* data) override;              ///< writes as `GetStartTagOutput`
    void OnShortTag(ShortTagData<C, S>* data) override;              ///< writes as `GetShortTagOutput`
    void OnEndTag(EndTagData<C, S>* data) override;                  ///< writes as `GetEndTagOutput`
    void OnCDATATag(CDATATagData<C, S>* data) override;              ///< writes as `GetCDATATagOutput`
    void OnConditionalTag(ConditionalTagData<C, S>* data) override;  ///< writes as `GetConditionalTagOutput`
    void OnCommentTag(CommentTagData<C, S>* data) override;          ///< writes as `GetCommentTagOutput`
    void OnEntityTag(EntityTagData<C, S>* data) override;            ///< writes as `GetEntityTagOutput`
    void OnExternTag(ExternTagData<C, S>* data) override;            ///< writes as `GetExternTagOutput`
    void OnJSTagStart() override;                                    ///< writes nothing
    void OnJSTagEnd() override;                                      ///< writes nothing
    void OnCSSTagStart() override;                                   ///< writes nothing
    void OnCSSTagEnd() override;                                     ///< writes nothing
    void OnJunkData(JunkData<C, S>* data) override;                  ///< writes as `GetJunkDataOutput`

    /// Receives the next piece of output, as in `ParserObserverOutputHandler::Write`.
    virtual void OnOutput(const void* data, std::uint64_t byteCount, bool isMarkup) = 0;

private:
    /// Forwards to its owner, or writes nothing without one. Exported by itself: not every compiler
    /// exports a nested class with its template.
    class KESTRA_HTML_API MyParserObserverOutputHandler final : public ParserObserverOutputHandler {
    public:
        explicit MyParserObserverOutputHandler(ParserObserverOutput* owningOutput);

        void Bind(ParserObserverOutput* newOwner);
        void Write(const void* data, std::uint64_t byteCount, bool isMarkup) override;

    private:
        ParserObserverOutput* owner;
    };

    MyParserObserverOutputHandler handler;  // bound to this object in every constructor, never copied
};

/// The serializer of hosts that observe every document as UTF-16.
class KESTRA_HTML_API GenericParserObserverOutput : public ParserObserverOutput<WideChar, WideString> {
public:
    GenericParserObserverOutput();
    /// As of `ParserObserverOutput`.
    GenericParserObserverOutput(const GenericParserObserverOutput& other);
    /// Copies nothing.
    GenericParserObserverOutput& operator=(const GenericParserObserverOutput& other);
};

}  // namespace Kestra::HTML
