#include "tools/kestra-html/view/ViewObserver.h"

#include <algorithm>
#include <type_traits>
#include <utility>

#include "platform/CharSet.h"
#include "platform/Results.h"
#include "platform/StringHelper.h"

namespace Kestra::Tool {

namespace {

using StringNS::CharSet;

constexpr std::size_t BLOCK_SIZE = std::size_t{64} * 1024;

constexpr std::size_t KIND_OF_MARK = HTML::POSITION_OF_JunkData;
constexpr std::size_t KIND_OF_LOST = KIND_OF_MARK + 1;

/// The characters before the name of a token, or before the white space that precedes it.
template <template <typename, typename> class Record>
constexpr std::size_t GetOpenerLength() {
    using Example = Record<WideChar, WideString>;
    if constexpr (std::is_same_v<Example, HTML::StartTagData<WideChar, WideString>> ||
                  std::is_same_v<Example, HTML::ShortTagData<WideChar, WideString>>)
        return 1;
    if constexpr (std::is_same_v<Example, HTML::CDATATagData<WideChar, WideString>> ||
                  std::is_same_v<Example, HTML::ConditionalTagData<WideChar, WideString>>)
        return 3;
    return 2;
}

/// Reads the fields that the page shows.
struct FieldReader {
    ViewToken* token;
    std::size_t attributeCount = 0;

    void Read(std::string_view name, bool value) {
        const bool says = name == "closed" || name == "bracketClosed" || name == "tagClosed";
        if (says && !value)
            token->marks |= VIEW_MARK_OPEN;
    }
    void Read(std::string_view name, const WideString* text) {
        if (text == nullptr)
            return;
        if (name == "prefix")
            token->nameBegin += text->size();
        if (name == "name" || name == "keyword")
            token->nameLength = text->size();
    }
    void Read(std::string_view, const Vector<HTML::Attribute<WideChar, WideString>>* attributes) {
        attributeCount = attributes == nullptr ? 0 : static_cast<std::size_t>(attributes->size());
    }
    template <typename Other>
    void Read(std::string_view, const Other&) {}
};

}  // namespace

ViewObserver::ViewObserver(const HTML::GenericParser* observedParser, ShownSource* shownSource, WritePage writePage)
    : parser(observedParser), source(shownSource), tokens(std::move(writePage)) {}

/// A mark is of its own charset, whatever is in force.
void ViewObserver::OnBOM(const void*, std::uint64_t size) {
    Begin(KIND_OF_MARK);
    token.charset =
        size == sizeof(StringNS::BOM_UTF8) ? CharSet::Code{CharSet::UTF8} : CharSet::Code{CharSet::UTF16_LE};
    AddToken();
}

void ViewObserver::OnEvent(HTML::ObserverEvent) {}

template <template <typename, typename> class Record>
void ViewObserver::OnToken(Record<WideChar, WideString>* record) {
    Begin(static_cast<std::size_t>(HTML::RecordKind<Record>::KIND_OF_TOKEN) - 1);
    token.nameBegin = GetOpenerLength<Record>();
    FieldReader reader{&token};
    HTML::ForEachField(*record, [&reader](const char* name, const auto& value) { reader.Read(name, value); });
    AddAttributes(reader.attributeCount);
    if (CharSet::IsIso2022(token.charset) && token.bytes.find('\x1B') != std::string_view::npos)
        token.marks |= VIEW_MARK_ESCAPES;
    AddToken();
}

void ViewObserver::Finish() {
    std::vector<char> block(BLOCK_SIZE);
    std::uint64_t count = 0;
    source->Seek(source->GetReadEnd());
    while (source->Read(block.data(), block.size(), &count) == RESULT_OK) {
        const std::uint64_t end = source->GetReadEnd();
        if (end - done >= BLOCK_SIZE)
            AddLost(done + FindCutForView(GetCharset(), source->GetBytes(done, end)));
    }
    AddLost(source->GetReadEnd());
    tokens.Flush();
}

std::vector<std::string> ViewObserver::GetKinds() {
    return {
#define WORD_OF_KIND(NAME, RECORD, WORD) WORD,
        KESTRA_HTML_FOR_EACH_KIND(WORD_OF_KIND)
#undef WORD_OF_KIND
            "mark",
        "lost",
    };
}

void ViewObserver::Begin(std::size_t kind) {
    const HTML::TokenPlace place = parser->GetTokenPlace();
    AddLost(place.begin);
    token.kind = kind;
    token.place = place;
    token.place.begin = std::max(place.begin, done);
    token.bytes = source->GetBytes(token.place.begin, place.end);
    token.charset = GetCharset();
    token.marks = 0;
    token.nameLength = 0;
    token.attributes.clear();
    done = token.place.begin + token.bytes.size();
}

/// The parser knows no line and no column for them: 0.
void ViewObserver::AddLost(std::uint64_t end) {
    if (end <= done)
        return;
    ViewToken lost;
    lost.kind = KIND_OF_LOST;
    lost.place = {done, end, 0, 0};
    lost.bytes = source->GetBytes(done, end);
    lost.charset = GetCharset();
    tokens.Add(lost);
    done = end;
    source->Release(done);
}

void ViewObserver::AddToken() {
    tokens.Add(token);
    source->Release(done);
}

/// Each as it was written: bare words that were folded into a value are attributes of the page.
void ViewObserver::AddAttributes(std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        if (parser->GetAttributeParts(i, &places) != 0)
            return;
        bool isFolded = false;
        for (const HTML::AttributePlace& place : places) {
            const bool hasValue = place.valueBegin != place.nameEnd;
            token.attributes.push_back(
                {{place.nameBegin, place.nameEnd}, {place.valueBegin, place.valueEnd}, hasValue, isFolded});
            isFolded = true;
        }
        if (places.size() > 1)
            token.marks |= VIEW_MARK_FOLDED;
    }
}

CharSet::Code ViewObserver::GetCharset() const {
    return parser->IsWParser() ? CharSet::Code{CharSet::UTF16_LE} : parser->GetCharset();
}

#define INSTANTIATE(NAME, RECORD, WORD) template void ViewObserver::OnToken(HTML::RECORD<WideChar, WideString>*);
KESTRA_HTML_FOR_EACH_KIND(INSTANTIATE)
#undef INSTANTIATE

}  // namespace Kestra::Tool
