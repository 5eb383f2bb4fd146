#include "html/output/ParserObserverOutput.h"

#include <cstddef>

#include "html/framework/Instantiate.h"
#include "html/output/TokenWriter.h"

namespace Kestra::HTML {

namespace {

/// Every fixed character is a separate piece.
template <typename C>
class HandlerSink {
public:
    explicit HandlerSink(ParserObserverOutputHandler* receivingHandler) : handler(receivingHandler) {}

    template <std::size_t COUNT>
    void Punctuation(const C (&characters)[COUNT]) {
        for (const C& character : characters)
            handler->Write(&character, sizeof(C), true);
    }

    void Piece(const void* data, std::size_t byteCount, bool isMarkup) {
        handler->Write(data, byteCount, isMarkup);
    }

private:
    ParserObserverOutputHandler* handler;
};

template <typename C, typename S, template <typename, typename> typename Record>
void WriteToHandler(const Record<C, S>* data, ParserObserverOutputHandler* handler) {
    HandlerSink<C> sink(handler);
    TokenWriter<C, S, HandlerSink<C>>(&sink).Write(*data);
}

}  // namespace

template <typename C, typename S>
ParserObserverOutput<C, S>::MyParserObserverOutputHandler::MyParserObserverOutputHandler(
    ParserObserverOutput* owningOutput)
    : owner(owningOutput) {}

template <typename C, typename S>
void ParserObserverOutput<C, S>::MyParserObserverOutputHandler::Bind(ParserObserverOutput* newOwner) {
    owner = newOwner;
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::MyParserObserverOutputHandler::Write(const void* data, std::uint64_t byteCount,
                                                                      bool isMarkup) {
    if (owner != nullptr)
        owner->OnOutput(data, byteCount, isMarkup);
}

template <typename C, typename S>
ParserObserverOutput<C, S>::ParserObserverOutput() : handler(this) {}

template <typename C, typename S>
ParserObserverOutput<C, S>::ParserObserverOutput(const ParserObserverOutput& other)
    : ParserObserver<C, S>(other), handler(this) {}

template <typename C, typename S>
ParserObserverOutput<C, S>& ParserObserverOutput<C, S>::operator=(const ParserObserverOutput& other) {
    ParserObserver<C, S>::operator=(other);
    return *this;
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::GetTextOutput(const TextData<C, S>* data, ParserObserverOutputHandler* sink) {
    WriteToHandler(data, sink);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::GetCCommentOutput(const CCommentData<C, S>* data, ParserObserverOutputHandler* sink) {
    WriteToHandler(data, sink);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::GetCPPCommentOutput(const CPPCommentData<C, S>* data,
                                                     ParserObserverOutputHandler* sink) {
    WriteToHandler(data, sink);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::GetSQuoteStringOutput(const SQuoteStringData<C, S>* data,
                                                       ParserObserverOutputHandler* sink) {
    WriteToHandler(data, sink);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::GetDQuoteStringOutput(const DQuoteStringData<C, S>* data,
                                                       ParserObserverOutputHandler* sink) {
    WriteToHandler(data, sink);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::GetStartTagOutput(const StartTagData<C, S>* data, ParserObserverOutputHandler* sink) {
    WriteToHandler(data, sink);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::GetShortTagOutput(const ShortTagData<C, S>* data, ParserObserverOutputHandler* sink) {
    WriteToHandler(data, sink);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::GetEndTagOutput(const EndTagData<C, S>* data, ParserObserverOutputHandler* sink) {
    WriteToHandler(data, sink);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::GetCDATATagOutput(const CDATATagData<C, S>* data, ParserObserverOutputHandler* sink) {
    WriteToHandler(data, sink);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::GetConditionalTagOutput(const ConditionalTagData<C, S>* data,
                                                         ParserObserverOutputHandler* sink) {
    WriteToHandler(data, sink);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::GetCommentTagOutput(const CommentTagData<C, S>* data,
                                                     ParserObserverOutputHandler* sink) {
    WriteToHandler(data, sink);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::GetEntityTagOutput(const EntityTagData<C, S>* data,
                                                    ParserObserverOutputHandler* sink) {
    WriteToHandler(data, sink);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::GetExternTagOutput(const ExternTagData<C, S>* data,
                                                    ParserObserverOutputHandler* sink) {
    WriteToHandler(data, sink);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::GetJunkDataOutput(const JunkData<C, S>* data, ParserObserverOutputHandler* sink) {
    WriteToHandler(data, sink);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnStartParsing() {
    handler.Bind(this);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnEndParsing() {}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnBOM(const void* bytes, std::uint64_t size) {
    handler.Write(bytes, size, false);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnCharset(StringNS::CharSet::Code) {}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnText(TextData<C, S>* data) {
    GetTextOutput(data, &handler);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnCComment(CCommentData<C, S>* data) {
    GetCCommentOutput(data, &handler);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnCPPComment(CPPCommentData<C, S>* data) {
    GetCPPCommentOutput(data, &handler);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnSQuoteString(SQuoteStringData<C, S>* data) {
    GetSQuoteStringOutput(data, &handler);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnDQuoteString(DQuoteStringData<C, S>* data) {
    GetDQuoteStringOutput(data, &handler);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnStartTag(StartTagData<C, S>* data) {
    GetStartTagOutput(data, &handler);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnShortTag(ShortTagData<C, S>* data) {
    GetShortTagOutput(data, &handler);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnEndTag(EndTagData<C, S>* data) {
    GetEndTagOutput(data, &handler);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnCDATATag(CDATATagData<C, S>* data) {
    GetCDATATagOutput(data, &handler);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnConditionalTag(ConditionalTagData<C, S>* data) {
    GetConditionalTagOutput(data, &handler);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnCommentTag(CommentTagData<C, S>* data) {
    GetCommentTagOutput(data, &handler);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnEntityTag(EntityTagData<C, S>* data) {
    GetEntityTagOutput(data, &handler);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnExternTag(ExternTagData<C, S>* data) {
    GetExternTagOutput(data, &handler);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnJSTagStart() {}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnJSTagEnd() {}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnCSSTagStart() {}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnCSSTagEnd() {}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnJunkData(JunkData<C, S>* data) {
    GetJunkDataOutput(data, &handler);
}

KESTRA_HTML_INSTANTIATE(ParserObserverOutput);

GenericParserObserverOutput::GenericParserObserverOutput() = default;

GenericParserObserverOutput::GenericParserObserverOutput(const GenericParserObserverOutput&) = default;

GenericParserObserverOutput& GenericParserObserverOutput::operator=(const GenericParserObserverOutput&) = default;

}  // namespace Kestra::HTML
