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
    ParserObserverOutput(const ParserObserverOutput& other);
    ParserObserverOutput& operator=(const ParserObserverOutput& other);

    static void GetTextOutput(const TextData<C, S>* data, ParserObserverOutputHandler* sink);
    /// Always closed, also when the input ended inside the comment.
    static void GetCCommentOutput(const CCommentData<C, S>* data, ParserObserverOutputHandler* sink);
    /// Without a line end.
    static void GetCPPCommentOutput(const CPPCommentData<C, S>* data, ParserObserverOutputHandler* sink);
    static void GetSQuoteStringOutput(const SQuoteStringData<C, S>* data, ParserObserverOutputHandler* sink);
    static void GetDQuoteStringOutput(const DQuoteStringData<C, S>* data, ParserObserverOutputHandler* sink);
    /// An unclosed tag loses its suffix together with its ">".
    static void GetStartTagOutput(const StartTagData<C, S>* data, ParserObserverOutputHandler* sink);
    /// The suffix and the "/" are always written.
    static void GetShortTagOutput(const ShortTagData<C, S>* data, ParserObserverOutputHandler* sink);
    /// The suffix is written only after attributes.
    static void GetEndTagOutput(const EndTagData<C, S>* data, ParserObserverOutputHandler* sink);
    static void GetCDATATagOutput(const CDATATagData<C, S>* data, ParserObserverOutputHandler* sink);
    static void GetConditionalTagOutput(const ConditionalTagData<C, S>* data, ParserObserverOutputHandler* sink);
    static void GetCommentTagOutput(const CommentTagData<C, S>* data, ParserObserverOutputHandler* sink);
    static void GetEntityTagOutput(const EntityTagData<C, S>* data, ParserObserverOutputHandler* sink);
    static void GetExternTagOutput(const ExternTagData<C, S>* data, ParserObserverOutputHandler* sink);
    static void GetJunkDataOutput(const JunkData<C, S>* data, ParserObserverOutputHandler* sink);

    void OnStartParsing() override;
    void OnEndParsing() override;
    void OnBOM(const void* bytes, std::uint64_t size) override;
    void OnCharset(StringNS::CharSet::Code code) override;
    void OnText(TextData<C, S>* data) override;
    void OnCComment(CCommentData<C, S>* data) override;
    void OnCPPComment(CPPCommentData<C, S>* data) override;
    void OnSQuoteString(SQuoteStringData<C, S>* data) override;
    void OnDQuoteString(DQuoteStringData<C, S>* data) override;
    void OnStartTag(StartTagData<C, S>* data) override;
    void OnShortTag(ShortTagData<C, S>* data) override;
    void OnEndTag(EndTagData<C, S>* data) override;
    void OnCDATATag(CDATATagData<C, S>* data) override;
    void OnConditionalTag(ConditionalTagData<C, S>* data) override;
    void OnCommentTag(CommentTagData<C, S>* data) override;
    void OnEntityTag(EntityTagData<C, S>* data) override;
    void OnExternTag(ExternTagData<C, S>* data) override;
    void OnJSTagStart() override;
    void OnJSTagEnd() override;
    void OnCSSTagStart() override;
    void OnCSSTagEnd() override;
    void OnJunkData(JunkData<C, S>* data) override;

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
    GenericParserObserverOutput(const GenericParserObserverOutput& other);
    GenericParserObserverOutput& operator=(const GenericParserObserverOutput& other);
};

}  // namespace Kestra::HTML
