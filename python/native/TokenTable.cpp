#include "python/native/TokenTable.h"

#include <utility>

#include "html/framework/TokenObserver.h"
#include "html/output/AttributesNormalizer.h"
#include "html/references/CharacterReferences.h"
#include "html/rewrite/Rewriter.h"
#include "platform/CharSetConverter.h"

namespace Kestra::Python {

namespace {

using HTML::GenericParser;
using StringNS::CharSet;

/// Notes the kind and the place of each token.
template <typename C, typename S>
class TableObserver final : public HTML::TokenObserver<TableObserver<C, S>, C, S> {
public:
    TableObserver(const GenericParser* tokenParser, TokenTable* targetTable)
        : parser(tokenParser), table(targetTable) {}

    template <template <typename, typename> class Record>
    void OnToken(const Record<C, S>*) {
        Note(HTML::RecordKind<Record>::KIND_OF_TOKEN);
    }

private:
    void Note(HTML::TokenKind kind) {
        const HTML::TokenPlace place = parser->GetTokenPlace();
        table->kinds.push_back(static_cast<std::uint8_t>(kind));
        table->begins.push_back(place.begin);
        table->ends.push_back(place.end);
        table->lines.push_back(place.line);
        table->columns.push_back(place.column);
    }

    const GenericParser* parser;
    TokenTable* table;
};

/// The tokens that a piece completes, and their bytes.
struct PieceTokens {
    TokenTable table;
    std::string bytes;
};

/// Notes the kind, the place and the bytes of each token of a document in pieces.
template <typename C, typename S>
class PieceObserver final : public HTML::TokenObserver<PieceObserver<C, S>, C, S> {
public:
    PieceObserver(HTML::Rewriter* tokenRewriter, PieceTokens* targetTokens)
        : rewriter(tokenRewriter), tokens(targetTokens) {}

    template <template <typename, typename> class Record>
    void OnToken(const Record<C, S>*) {
        Note(HTML::RecordKind<Record>::KIND_OF_TOKEN);
    }

private:
    void Note(HTML::TokenKind kind) {
        const HTML::TokenPlace place = rewriter->GetParser().GetTokenPlace();
        TokenTable& table = tokens->table;
        table.kinds.push_back(static_cast<std::uint8_t>(kind));
        table.begins.push_back(place.begin);
        table.ends.push_back(place.end);
        table.lines.push_back(place.line);
        table.columns.push_back(place.column);
        table.rawBegins.push_back(tokens->bytes.size());
        tokens->bytes.append(rewriter->GetToken().GetBytes());
    }

    HTML::Rewriter* rewriter;
    PieceTokens* tokens;
};

/// Copies what the first token says.
class TextObserver final : public HTML::TokenObserver<TextObserver, WideChar, WideString> {
public:
    TextObserver(GenericParser* tokenParser, std::uint64_t beginOfToken, TokenText* targetText)
        : parser(tokenParser), begin(beginOfToken), text(targetText) {}

    template <typename Record>
    void OnToken(const Record* record) {
        Copy(*record);
    }

    bool hasToken = false;

private:
    template <typename Record>
    void Copy(const Record& record) {
        if (hasToken)
            return;
        hasToken = true;
        if constexpr (requires { record.name; })
            text->name = *record.name;
        if constexpr (requires { record.keyword; })
            text->name = *record.keyword;
        if constexpr (requires { record.condition; })
            text->text = *record.condition;
        else if constexpr (requires { WideString(*record.text); })
            text->text = *record.text;
        if constexpr (requires { record.attributes; })
            CopyAttributes(*record.attributes);
        if constexpr (requires { record.tokens; }) {
            for (const auto& item : *record.tokens)
                text->attributes.push_back({{}, item.value, true, item.quote, {}});
        }
        parser->Stop();
    }

    void CopyAttributes(const Vector<HTML::Attribute<WideChar, WideString>>& attributes) {
        const std::uint32_t options = parser->IsWParser() ? HTML::SPLIT_PLAIN : HTML::SPLIT_NARROW_SPACES;
        std::vector<HTML::AttributePlace> places;
        for (std::uint64_t i = 0; i < attributes.size(); ++i) {
            HTML::AttributesNormalizer<WideChar, WideString>::Split(attributes[i], options, &parts);
            parser->GetAttributeParts(i, &places);
            for (std::size_t k = 0; k < parts.size(); ++k)
                Add(parts[k], k < places.size() ? places[k] : HTML::AttributePlace());
        }
    }

    void Add(const HTML::Attribute<WideChar, WideString>& attribute, HTML::AttributePlace place) {
        for (std::uint64_t* const offset :
             {&place.begin, &place.end, &place.nameBegin, &place.nameEnd, &place.valueBegin, &place.valueEnd})
            *offset += begin;
        AttributeText copy{attribute.name, {}, attribute.hasValue, attribute.quote, place};
        if (attribute.hasValue &&
            !HTML::CharacterReferences<WideChar, WideString>::DecodeAttributeValue(attribute.value, &copy.value))
            copy.value = attribute.value;
        text->attributes.push_back(std::move(copy));
    }

    GenericParser* parser;
    std::uint64_t begin;
    TokenText* text;
    Vector<HTML::Attribute<WideChar, WideString>> parts;
};

/// How many characters a token of a script has before and after its text.
struct Marks {
    std::size_t before;
    std::size_t after;
};

bool GetMarks(HTML::TokenKind kind, Marks* marks) {
    switch (kind) {
        case HTML::TOKEN_TEXT:
        case HTML::TOKEN_JUNK:
            *marks = {0, 0};
            return true;
        case HTML::TOKEN_C_COMMENT:
            *marks = {2, 2};
            return true;
        case HTML::TOKEN_CPP_COMMENT:
            *marks = {2, 0};
            return true;
        case HTML::TOKEN_S_QUOTE_STRING:
        case HTML::TOKEN_D_QUOTE_STRING:
            *marks = {1, 1};
            return true;
        default:
            return false;
    }
}

bool IsTag(HTML::TokenKind kind) {
    return kind == HTML::TOKEN_START_TAG || kind == HTML::TOKEN_SHORT_TAG || kind == HTML::TOKEN_END_TAG;
}

}  // namespace

TokenTable ReadTokens(std::string_view bytes, const ParseOptions& options) {
    TokenTable table;
    GenericParser parser;
    // Line comments of scripts reach wide observers alone.
    TableObserver<char, std::string> narrow(&parser, &table);
    TableObserver<WideChar, WideString> wide(&parser, &table);
    if (options.scriptMode == GenericParser::SCRIPT_AS_TEXT)
        parser.SetObserver(&narrow, false);
    else
        parser.SetObserver(&wide, false);
    table.result = ParseWhole(&parser, bytes, options, [&table] { table = TokenTable(); });
    table.charset = parser.GetCharset();
    table.isUtf16 = parser.IsWParser();
    return table;
}

/// A rewriter without output: it reads broken constructs again from the bytes that it keeps.
class PieceReader::Impl {
public:
    HTML::Rewriter rewriter{nullptr};
    PieceTokens tokens;
    // Nothing is decoded for a narrow observer, so that a charset never comes too late for it. Line
    // comments of scripts reach wide observers alone.
    PieceObserver<char, std::string> narrow{&rewriter, &tokens};
    PieceObserver<WideChar, WideString> wide{&rewriter, &tokens};
};

PieceReader::PieceReader(const ParseOptions& options) : impl(std::make_unique<Impl>()) {
    if (options.scriptMode == GenericParser::SCRIPT_AS_TEXT)
        impl->rewriter.SetObserver(&impl->narrow);
    else
        impl->rewriter.SetObserver(&impl->wide);
    impl->rewriter.SetScriptMode(options.scriptMode);
    impl->rewriter.SetMaxTokenSize(options.maxTokenSize);
    impl->rewriter.SetMaxAttributes(options.maxAttributes);
    impl->rewriter.StartParse(options.charset, options.type);
}

PieceReader::~PieceReader() = default;

TokenTable PieceReader::Feed(std::string_view piece, std::string* bytes) {
    return Take(impl->rewriter.ParseBuffer(piece.data(), piece.size()), bytes);
}

TokenTable PieceReader::End(std::string* bytes) {
    return Take(impl->rewriter.EndParse(), bytes);
}

TokenTable PieceReader::Take(std::uint32_t result, std::string* bytes) {
    TokenTable table = std::exchange(impl->tokens.table, TokenTable());
    *bytes = std::exchange(impl->tokens.bytes, std::string());
    table.result = result;
    table.charset = impl->rewriter.GetParser().GetCharset();
    table.isUtf16 = impl->rewriter.GetParser().IsWParser();
    return table;
}

TokenText ReadToken(std::string_view bytes, HTML::TokenKind kind, std::uint64_t begin, CharSet::Code charset,
                    bool isUtf16) {
    TokenText text;
    Marks marks{};
    if (GetMarks(kind, &marks)) {
        const std::size_t unit = isUtf16 ? sizeof(WideChar) : 1;
        text.text = Decode(bytes.substr(marks.before * unit, bytes.size() - (marks.before + marks.after) * unit),
                           charset, isUtf16);
        return text;
    }
    GenericParser parser;
    TextObserver observer(&parser, begin, &text);
    parser.SetObserver(&observer, false);
    parser.StartParse(charset, isUtf16 ? GenericParser::DATA_STREAM_UTF16 : GenericParser::DATA_STREAM_8BIT);
    parser.ParseBuffer(bytes.data(), bytes.size());
    // A tag without its ">" was ended by the "<" after it; everything else by the end.
    if (!observer.hasToken && IsTag(kind))
        parser.ParseBuffer("<\0", isUtf16 ? sizeof(WideChar) : 1);
    if (!observer.hasToken)
        parser.EndParse();
    return text;
}

WideString Decode(std::string_view bytes, CharSet::Code charset, bool isUtf16) {
    if (isUtf16) {
        WideString text;
        for (std::size_t i = 0; i + 1 < bytes.size(); i += sizeof(WideChar)) {
            const auto low = static_cast<unsigned char>(bytes[i]);
            const auto high = static_cast<unsigned char>(bytes[i + 1]);
            text.push_back(static_cast<WideChar>(high << 8 | low));
        }
        return text;
    }
    StringNS::CharSetConverter converter;
    return Decode(bytes, charset, &converter);
}

WideString Decode(std::string_view bytes, CharSet::Code charset, StringNS::CharSetConverter* converter) {
    WideString text;
    // The parser reads UTF-7, which hides markup, as 1252 as well.
    const bool isRead = charset != CharSet::UNKNOWN && charset != CharSet::UTF7;
    converter->ToWide(isRead ? charset : CharSet::WINDOWS_1252, bytes.data(), bytes.size(), &text);
    return text;
}

}  // namespace Kestra::Python
