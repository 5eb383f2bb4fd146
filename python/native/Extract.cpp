#include "python/native/Extract.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <numeric>
#include <optional>
#include <utility>

#include "html/output/AttributesNormalizer.h"
#include "html/references/CharacterReferences.h"
#include "platform/CharSetConverter.h"
#include "python/native/TokenTable.h"

namespace Kestra::Python {

namespace {

using HTML::GenericParser;
using StringNS::CharSet;

constexpr char ESC = 27;

void SetWide(const WideString& value, ExtractedText* link) {
    link->isWide = true;
    if (!HTML::CharacterReferences<WideChar, WideString>::DecodeAttributeValue(value, &link->wide))
        link->wide = value;
}

/// Finds links in the tags of one flavour.
template <typename C, typename S>
class LinkObserver final : public HTML::ParserObserver<C, S> {
public:
    LinkObserver(const GenericParser* pageParser, Links* targetLinks) : parser(pageParser), links(targetLinks) {}

    void OnStartTag(HTML::StartTagData<C, S>* tag) override {
        Read(*tag);
    }
    void OnShortTag(HTML::ShortTagData<C, S>* tag) override {
        Read(*tag);
    }
    void OnJSTagStart() override {
        contentBegin = parser->GetTokenPlace().end;
    }
    void OnCSSTagStart() override {
        contentBegin = parser->GetTokenPlace().end;
    }
    void OnText(HTML::TextData<C, S>*) override {
        contentBegin.reset();
    }
    void OnEndTag(HTML::EndTagData<C, S>* tag) override {
        contentBegin.reset();
        NoteLength(*tag->attributes);
    }
    void OnEntityTag(HTML::EntityTagData<C, S>* tag) override {
        NoteLength(*tag->tokens);
    }

    void Restart() {
        links->links.clear();
        undecoded.clear();
        hasOtherThanAscii = false;
    }

    /// Whether the links depend on the charset, as long as that keeps ASCII.
    bool HasOtherThanAscii() const {
        return hasOtherThanAscii;
    }

    /// Decodes the links by the charset of the document: it may have been declared after them.
    void DecodeLinks() {
        const CharSet::Code charset = parser->GetCharset();
        StringNS::CharSetConverter converter;
        if (sizeof(C) == 1 && !converter.KeepsAscii(charset)) {
            undecoded.resize(links->links.size());
            std::iota(undecoded.begin(), undecoded.end(), std::size_t{0});
        }
        for (const std::size_t index : undecoded) {
            ExtractedText& link = links->links[index];
            SetWide(Decode(std::exchange(link.ascii, {}), charset, &converter), &link);
        }
        undecoded.clear();
    }

    /// Where the content of a script or style sheet begins, as an offset in what was fed, when the
    /// last token is its start tag. Asked again it is none.
    std::optional<std::uint64_t> TakeContentBegin() {
        return std::exchange(contentBegin, std::nullopt);
    }

    /// The most attributes of a tag, or items of a declaration.
    std::uint64_t GetLongestList() const {
        return longestList;
    }

private:
    template <typename List>
    void NoteLength(const List& list) {
        longestList = std::max(longestList, list.size());
    }

    template <typename Tag>
    void Read(const Tag& tag) {
        NoteLength(*tag.attributes);
        const S& name = *tag.name;
        if (!(name.size() == 1 && FoldAscii(name[0]) == 'a') && !EqualsKeyword(name, "area"))
            return;
        for (const HTML::Attribute<C, S>& attribute : *tag.attributes) {
            if (ReadAttribute(attribute))
                return;  // the first one of a tag counts
        }
    }

    bool ReadAttribute(const HTML::Attribute<C, S>& attribute) {
        if (attribute.quote != HTML::QUOTE_NONE || !attribute.hasValue)
            return AddWhenLink(attribute);
        // It may have taken up bare words.
        const bool isCharset2022 = sizeof(C) == 1 && CharSet::IsIso2022(parser->GetCharset());
        HTML::AttributesNormalizer<C, S>::Split(attribute, isCharset2022 ? HTML::SPLIT_ESCAPE_RUNS : HTML::SPLIT_PLAIN,
                                                &parts);
        return std::any_of(parts.begin(), parts.end(), [this](const auto& part) { return AddWhenLink(part); });
    }

    bool AddWhenLink(const HTML::Attribute<C, S>& attribute) {
        if (!EqualsKeyword(attribute.name, "href"))
            return false;
        links->links.emplace_back();
        if (attribute.hasValue)
            SetText(attribute.value);
        return true;
    }

    void SetText(const std::string& value) {
        bool isAscii = true;
        bool hasReference = false;
        for (const char c : value) {  // without a branch, so that the compiler reads blocks
            isAscii &= c >= 0;
            hasReference |= c == '&';
        }
        links->links.back().ascii = value;
        if (!isAscii || hasReference)
            undecoded.push_back(links->links.size() - 1);
        hasOtherThanAscii |= !isAscii;
    }

    void SetText(const WideString& value) {
        SetWide(value, &links->links.back());
    }

    const GenericParser* parser;
    Links* links;
    Vector<HTML::Attribute<C, S>> parts;
    std::optional<std::uint64_t> contentBegin;
    std::vector<std::size_t> undecoded;  // indexes of links
    bool hasOtherThanAscii = false;
    std::uint64_t longestList = 0;
};

/// What a tag does to the text around it.
enum class TagEffect { NONE, BLOCK, HIDDEN, LINE, KEPT_SPACE };

// Sorted.
constexpr std::string_view BLOCKS[] = {
    "address", "article", "aside", "blockquote", "body",       "caption", "dd",      "details", "dialog",
    "div",     "dl",      "dt",    "fieldset",   "figcaption", "figure",  "footer",  "form",    "h1",
    "h2",      "h3",      "h4",    "h5",         "h6",         "head",    "header",  "hr",      "html",
    "li",      "main",    "nav",   "ol",         "option",     "p",       "section", "summary", "table",
    "tbody",   "td",      "tfoot", "th",         "thead",      "title",   "tr",      "ul"};
constexpr std::string_view HIDDEN_ELEMENTS[] = {"iframe", "noembed", "noframes", "script", "style"};
constexpr std::string_view ELEMENTS_WITH_SPACE[] = {"pre", "textarea", "xmp"};
constexpr std::size_t LONGEST_NAME = 10;
static_assert(std::is_sorted(std::begin(BLOCKS), std::end(BLOCKS)));

TagEffect GetEffect(const WideString& name) {
    if (name.size() > LONGEST_NAME)
        return TagEffect::NONE;
    std::array<char, LONGEST_NAME> characters{};
    for (std::size_t i = 0; i < name.size(); ++i)
        characters[i] = name[i] < 0x80 ? static_cast<char>(FoldAscii(name[i])) : '?';
    const std::string_view folded(characters.data(), name.size());
    const auto isOneOf = [folded](const auto& names) {
        return std::binary_search(std::begin(names), std::end(names), folded);
    };
    if (folded == "br")
        return TagEffect::LINE;
    if (isOneOf(BLOCKS))
        return TagEffect::BLOCK;
    if (isOneOf(HIDDEN_ELEMENTS))
        return TagEffect::HIDDEN;
    return isOneOf(ELEMENTS_WITH_SPACE) ? TagEffect::KEPT_SPACE : TagEffect::NONE;
}

bool IsPageSpace(WideChar character) {
    return character == ' ' || (character >= '\t' && character <= '\r' && character != '\v');
}

/// Gathers the texts of a page.
class PageTextObserver final : public HTML::ParserObserver<WideChar, WideString> {
public:
    explicit PageTextObserver(WideString* targetText) : text(targetText) {}

    void Restart() {
        text->clear();
        isHidden = keepsSpace = isSpacePending = false;
    }

    void OnText(HTML::TextData<WideChar, WideString>* data) override {
        if (isHidden)
            return;
        const bool isDecoded = HTML::CharacterReferences<WideChar, WideString>::DecodeText(*data->text, &decoded);
        const WideString& written = isDecoded ? decoded : *data->text;
        for (const WideChar character : written)
            Add(character);
    }
    void OnStartTag(HTML::StartTagData<WideChar, WideString>* tag) override {
        Begin(*tag->name);
    }
    void OnShortTag(HTML::ShortTagData<WideChar, WideString>* tag) override {
        Begin(*tag->name);
    }
    void OnEndTag(HTML::EndTagData<WideChar, WideString>* tag) override {
        const TagEffect effect = GetEffect(*tag->name);
        isHidden = isHidden && effect != TagEffect::HIDDEN;
        keepsSpace = keepsSpace && effect != TagEffect::KEPT_SPACE;
        if (effect == TagEffect::BLOCK || effect == TagEffect::KEPT_SPACE)
            EndLine();
    }

private:
    void Begin(const WideString& name) {
        const TagEffect effect = GetEffect(name);
        if (effect == TagEffect::NONE)
            return;
        isHidden = effect == TagEffect::HIDDEN;
        keepsSpace = effect == TagEffect::KEPT_SPACE;
        if (effect == TagEffect::LINE)
            text->push_back('\n');
        else if (effect != TagEffect::HIDDEN)
            EndLine();
        isSpacePending = false;
    }

    void Add(WideChar character) {
        if (!keepsSpace && IsPageSpace(character)) {
            isSpacePending = !text->empty() && text->back() != '\n';
            return;
        }
        if (std::exchange(isSpacePending, false))
            text->push_back(' ');
        text->push_back(character);
    }

    void EndLine() {
        isSpacePending = false;
        if (!text->empty() && text->back() != '\n')
            text->push_back('\n');
    }

    WideString* text;
    WideString decoded;
    bool isHidden = false;
    bool keepsSpace = false;
    bool isSpacePending = false;
};

template <typename C, typename S>
Links FindLinksOfFlavour(std::string_view bytes, const ParseOptions& options, bool* isUtf16) {
    Links links;
    GenericParser parser;
    LinkObserver<C, S> observer(&parser, &links);
    parser.SetObserver(&observer, false);
    links.result = ParseWhole(&parser, bytes, options, [&observer] { observer.Restart(); });
    observer.DecodeLinks();
    *isUtf16 = parser.IsWParser();
    return links;
}

/// The longest document, in bytes, and the longest list of attributes after which the parser of a
/// thread is kept. Its strings grow to the longest token, which is a part of the document; a list
/// can take 85 times the bytes of its tag.
constexpr std::size_t LONGEST_KEPT = 1U << 20;
constexpr std::uint64_t LONGEST_KEPT_LIST = 1024;

/// In bytes. After each piece the rest of a script may be left out: the first one is short, since
/// scripts lie at the beginning; each next one is twice as long, up to LONGEST_PIECE, since each
/// piece takes time.
constexpr std::size_t SHORTEST_PIECE = 4096;
constexpr std::size_t LONGEST_PIECE = 16384;
constexpr std::size_t LONGEST_LOOK_BACK = 512;

/// The parser of a thread, whose buffers serve the next document too: for small pages and long
/// scripts to get them anew takes longer than to parse.
class ThreadParser {
public:
    ThreadParser() : parser(std::move(kept)) {
        if (parser == nullptr)
            parser = std::make_unique<GenericParser>();
    }
    ThreadParser(const ThreadParser&) = delete;
    ThreadParser& operator=(const ThreadParser&) = delete;
    /// Frees the parser, unless it is kept.
    ~ThreadParser() = default;

    GenericParser* Get() const {
        return parser.get();
    }

    /// Keeps the parser for the next document.
    void Keep() {
        parser->SetObserver(static_cast<HTML::ParserObserver<char, std::string>*>(nullptr), false);
        kept = std::move(parser);
    }

private:
    static thread_local std::unique_ptr<GenericParser> kept;

    std::unique_ptr<GenericParser> parser;
};

thread_local std::unique_ptr<GenericParser> ThreadParser::kept;

/// The first place from `begin` on that may end the content of a script or style sheet, or begin a
/// part of it that has scripts: "</script", "</style" or "<!--". Also where the bytes end before
/// that is known.
std::size_t FindContentStop(std::string_view bytes, std::size_t begin) {
    for (;; ++begin) {
        begin = bytes.find('<', begin);
        if (begin == bytes.npos)
            return bytes.size();
        const auto mayBe = [after = bytes.substr(begin + 1)](std::string_view stop) {
            const auto same = [](char c, char lower) { return FoldAscii(c) == lower; };
            const std::size_t length = std::min(after.size(), stop.size());
            return std::equal(after.begin(), after.begin() + length, stop.begin(), same);
        };
        if (mayBe("/script") || mayBe("/style") || mayBe("!--"))
            return begin;
    }
}

/// The next piece: up to after a ">", so that it seldom cuts a tag, when there is one near its end.
std::string_view CutPiece(std::string_view bytes, std::size_t size) {
    if (bytes.size() <= size)
        return bytes;
    const std::string_view end = bytes.substr(size - LONGEST_LOOK_BACK, LONGEST_LOOK_BACK);
    const std::size_t last = end.rfind('>');
    return bytes.substr(0, last == end.npos ? size : size - LONGEST_LOOK_BACK + last + 1);
}

/// Feeds the bytes where they are, and not all of long scripts and style sheets: up to a stop their
/// content is text, and to look for that alone is several times as fast.
/// @return the first result that is a failure, or 0
std::uint32_t FeedForLinks(std::string_view bytes, GenericParser* parser, LinkObserver<char, std::string>* observer) {
    std::size_t skipped = 0;  // bytes that the places of tokens do not count
    std::size_t size = SHORTEST_PIECE;
    for (std::size_t next = 0; next < bytes.size();) {
        const std::string_view piece = CutPiece(bytes.substr(next), size);
        const std::uint32_t result = parser->ParseBuffer(piece.data(), piece.size());
        if (result != HTML::PARSER_OK)
            return result;
        next += piece.size();
        size = std::min(2 * size, LONGEST_PIECE);
        const std::optional<std::uint64_t> content = observer->TakeContentBegin();
        if (!content || parser->IsWParser() || CharSet::IsIso2022(parser->GetCharset()))
            continue;
        if (FindContentStop(bytes.substr(0, next), static_cast<std::size_t>(*content) + skipped) != next)
            continue;
        const std::size_t stop = FindContentStop(bytes, next);
        skipped += stop - next;
        next = stop;
    }
    return HTML::PARSER_OK;
}

/// The same links in one pass: without a stream, which would copy the bytes, and without the
/// detector.
/// @return false when a stream is needed: a broken construct must be read again, UTF-16 has
///         other names, or the charset matters and must be detected
bool FindLinksInPlace(std::string_view bytes, const ParseOptions& options, Links* links) {
    ThreadParser threadParser;
    GenericParser* const parser = threadParser.Get();
    LinkObserver<char, std::string> observer(parser, links);
    parser->SetObserver(&observer, false);
    SetUp(parser, options);
    const bool isParsed = parser->StartParse(options.charset, options.type) == HTML::PARSER_OK &&
                          FeedForLinks(bytes, parser, &observer) == HTML::PARSER_OK &&
                          parser->EndParse() == HTML::PARSER_OK && !parser->IsWParser();
    // ASCII means itself in every charset that a detector finds, except where there are escapes.
    const bool isCharsetKnown =
        parser->GetCharset() != CharSet::UNKNOWN || (!observer.HasOtherThanAscii() && bytes.find(ESC) == bytes.npos);
    if (isParsed && isCharsetKnown)
        observer.DecodeLinks();
    // What ended the parse may be a list that no observer saw.
    if (isParsed && bytes.size() <= LONGEST_KEPT && observer.GetLongestList() <= LONGEST_KEPT_LIST)
        threadParser.Keep();
    return isParsed && isCharsetKnown;
}

}  // namespace

Links FindLinks(std::string_view bytes, const ParseOptions& options) {
    Links links;
    if (FindLinksInPlace(bytes, options, &links))
        return links;
    bool isUtf16 = false;
    links = FindLinksOfFlavour<char, std::string>(bytes, options, &isUtf16);
    // As bytes UTF-16 has other names.
    return isUtf16 ? FindLinksOfFlavour<WideChar, WideString>(bytes, options, &isUtf16) : links;
}

PageText ExtractText(std::string_view bytes, const ParseOptions& options) {
    PageText page;
    GenericParser parser;
    PageTextObserver observer(&page.text);
    parser.SetObserver(&observer, false);
    page.result = ParseWhole(&parser, bytes, options, [&observer] { observer.Restart(); });
    while (!page.text.empty() && (page.text.back() == '\n' || page.text.back() == ' '))
        page.text.pop_back();
    return page;
}

}  // namespace Kestra::Python
