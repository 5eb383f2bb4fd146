#include <kestra/html/framework/Attribute.h>
#include <kestra/html/framework/EntityToken.h>
#include <kestra/html/framework/TokenRecords.h>
#include <kestra/html/output/AttributesNormalizer.h>
#include <kestra/html/output/ParserObserverOutput.h>
#include <kestra/html/output/ParserObserverOutputHandler.h>
#include <kestra/html/output/ParserSelfCheck.h>
#include <kestra/html/output/StringOutputStreamParserObserverOutputHandler.h>
#include <kestra/html/references/CharacterReferences.h>
#include <kestra/platform/InputStream.h>
#include <kestra/platform/Results.h>

#include "Check.h"

using namespace Kestra::HTML;
using Kestra::Vector;

namespace {

template <typename C, typename S>
Attribute<C, S> MakeAttribute(const std::string& name, const std::string& value, std::uint32_t quote) {
    Attribute<C, S> attribute;
    attribute.prefix = Text<S>(" ");
    attribute.name = Text<S>(name);
    attribute.value = Text<S>(value);
    attribute.quote = quote;
    attribute.hasValue = true;
    return attribute;
}

/// What one of the static writers makes of a record.
template <typename S, typename Record>
S Written(void (*writer)(const Record*, ParserObserverOutputHandler*), const Record& record) {
    StringOutputStreamParserObserverOutputHandler<CharacterOf<S>, S> handler;
    writer(&record, &handler);
    return handler.GetString();
}

template <typename C, typename S>
void UseWriters() {
    using Output = ParserObserverOutput<C, S>;
    const S empty;
    const S blank = Text<S>(" ");
    const S body = Text<S>("body");
    const S name = Text<S>("name");
    Vector<Attribute<C, S>> attributes;
    attributes.push_back(MakeAttribute<C, S>("a", "1", QUOTE_NONE));
    attributes.push_back(MakeAttribute<C, S>("b", "2", QUOTE_SINGLE));
    attributes.push_back(MakeAttribute<C, S>("c", "3", QUOTE_DOUBLE));
    Vector<EntityToken<C, S>> tokens(1);
    tokens[0].prefix = blank;
    tokens[0].value = Text<S>("html");

    CHECK(Written<S>(Output::GetTextOutput, TextData<C, S>{&body}) == body);
    CHECK(Written<S>(Output::GetCCommentOutput, CCommentData<C, S>{&body}) == Text<S>("/*body*/"));
    CHECK(Written<S>(Output::GetCPPCommentOutput, CPPCommentData<C, S>{&body}) == Text<S>("//body"));
    CHECK(Written<S>(Output::GetSQuoteStringOutput, SQuoteStringData<C, S>{&body}) == Text<S>("'body'"));
    CHECK(Written<S>(Output::GetDQuoteStringOutput, DQuoteStringData<C, S>{&body}) == Text<S>("\"body\""));
    CHECK(Written<S>(Output::GetStartTagOutput, StartTagData<C, S>{&empty, &name, &attributes, &blank, true}) ==
          Text<S>("<name a=1 b='2' c=\"3\" >"));
    CHECK(Written<S>(Output::GetShortTagOutput, ShortTagData<C, S>{&empty, &name, nullptr, &blank, true}) ==
          Text<S>("<name />"));
    CHECK(Written<S>(Output::GetEndTagOutput, EndTagData<C, S>{&blank, &name, &empty, false, nullptr, false, &blank}) ==
          Text<S>("</ name"));
    CHECK(Written<S>(Output::GetConditionalTagOutput, ConditionalTagData<C, S>{&name, &empty, &empty, true, true}) ==
          Text<S>("<![name]>"));
    CHECK(Written<S>(Output::GetEntityTagOutput, EntityTagData<C, S>{&empty, &name, &tokens, &blank}) ==
          Text<S>("<!name html >"));
    CHECK(Written<S>(Output::GetExternTagOutput, ExternTagData<C, S>{&empty, &name, &attributes, &empty, false, nullptr,
                                                                     false}) == Text<S>("<?name a=1 b='2' c=\"3\"?>"));

    // The bodies of sections: bytes as many as characters, so of a wide one the first half.
    const S section = sizeof(C) == 1 ? body : body.substr(0, 2);
    CHECK(Written<S>(Output::GetCommentTagOutput, CommentTagData<C, S>{&body, true}) ==
          Text<S>("<!--") + section + Text<S>("-->"));
    CHECK(Written<S>(Output::GetCDATATagOutput, CDATATagData<C, S>{&name, &body, true}) ==
          Text<S>("<![name") + section + Text<S>("]]>"));

    // Junk is bytes in both flavours.
    const std::string junk(reinterpret_cast<const char*>(body.data()), body.size() * sizeof(C));
    CHECK(Written<S>(Output::GetJunkDataOutput, JunkData<C, S>{&junk}) == body);
}

template <typename C, typename S>
void UseNormalizer() {
    Vector<Attribute<C, S>> attributes;
    attributes.push_back(MakeAttribute<C, S>("title", "hello", QUOTE_SINGLE));
    Attribute<C, S> word;
    word.prefix = Text<S>(" ");
    word.name = Text<S>("world");
    attributes.push_back(word);
    AttributesNormalizer<C, S>::Normalize(&attributes);
    CHECK(attributes.size() == 1 && attributes[0].value == Text<S>("'hello' world") &&
          attributes[0].quote == QUOTE_NONE);
}

template <typename C, typename S>
void UseReferences() {
    using References = CharacterReferences<C, S>;
    const S plain = Text<S>("<\"tea\" & 'milk'>");
    S written;
    CHECK(References::EncodeText(plain, &written) && written == Text<S>("&lt;\"tea\" &amp; 'milk'&gt;"));
    CHECK(References::DecodeText(written, &written) && written == plain);
    CHECK(!References::DecodeText(plain, &written));
    CHECK(References::EncodeAttributeValue(plain, QUOTE_DOUBLE, &written) &&
          written == Text<S>("<&quot;tea&quot; &amp; 'milk'>"));
    CHECK(References::DecodeAttributeValue(written, &written) && written == plain);
    CHECK(References::DecodeText(Text<S>("&eacute;&zwj;"), &written, Kestra::StringNS::CharSet::WINDOWS_1252) &&
          written != plain);
}

/// A sink of the host's own.
class Counter final : public ParserObserverOutputHandler {
public:
    void Write(const void*, std::uint64_t byteCount, bool isMarkup) override {
        (isMarkup ? markupBytes : otherBytes) += byteCount;
    }

    std::uint64_t markupBytes = 0;
    std::uint64_t otherBytes = 0;
};

template <typename C, typename S>
void UseHandlers() {
    const S text = Text<S>("abcd");
    const CommentTagData<C, S> comment{&text, true};
    Counter counter;
    ParserObserverOutput<C, S>::GetCommentTagOutput(&comment, &counter);
    CHECK(counter.markupBytes == 7 * sizeof(C) && counter.otherBytes == 4);

    StringOutputStreamParserObserverOutputHandler<C, S> handler;
    ParserObserverOutputHandler& base = handler;
    base.Write(text.data(), 2 * sizeof(C), true);
    handler.GetStream().put('!');
    CHECK(handler.GetString() == Text<S>("ab!"));
}

template <typename C, typename S>
void UseSelfCheck() {
    const S digits = Text<S>("123456789");
    TextData<C, S> text{&digits};
    ParserSelfCheck<C, S> check;
    ParserObserver<C, S>& observer = check;
    check.Reset(true);
    observer.OnText(&text);
    // The check value of ISO 3309's CRC-32, and that of the same digits in 16 bits.
    CHECK(check.GetOutputCrc() == (sizeof(C) == 1 ? 0xCBF43926 : 0xA290E877));
    const ParserSelfCheck<C, S> copy(check);

    Kestra::VFS::InputStream* const stream = check.GetSelfCheckStream();
    CHECK(stream != nullptr && check.GetSelfCheckStream() == stream);
    char bytes[64] = {};
    std::uint64_t size = 0;
    CHECK(stream != nullptr && stream->Read(bytes, sizeof(bytes), &size) == Kestra::RESULT_OK);
    CHECK(std::string(bytes, static_cast<std::size_t>(size)) ==
          std::string(reinterpret_cast<const char*>(digits.data()), digits.size() * sizeof(C)));

    check.Reset(false);
    CHECK(check.GetOutputCrc() == 0 && check.GetSelfCheckStream() == nullptr);
    check = copy;
    CHECK(check.GetOutputCrc() == (sizeof(C) == 1 ? 0xCBF43926 : 0xA290E877) && check.GetSelfCheckStream() == nullptr);
}

template <typename S>
void UseFlavour() {
    using C = CharacterOf<S>;
    UseWriters<C, S>();
    UseNormalizer<C, S>();
    UseReferences<C, S>();
    UseHandlers<C, S>();
    UseSelfCheck<C, S>();
}

}  // namespace

void UseRecords() {
    UseFlavour<std::string>();
    UseFlavour<Kestra::WideString>();
}
