#include "python/native/Extract.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

#include "html/output/AttributesNormalizer.h"
#include "html/references/CharacterReferences.h"
#include "python/native/TokenTable.h"

namespace Kestra::Python {

namespace {

using HTML::GenericParser;
using StringNS::CharSet;

constexpr char ESC = 27;

/// Whether bytes mean themselves, whatever the charset, and have no reference.
bool IsPlain(const std::string& text) {
    return std::none_of(text.begin(), text.end(), [](char c) { return c <= 0 || c == '&' || c == ESC; });
}

void SetWide(const WideString& value, ExtractedText* link) {
    link->isWide = true;
    if (!HTML::CharacterReferences<WideChar, WideString>::DecodeAttributeValue(value, &link->wide))
        link->wide = value;
}

void SetText(const std::string& value, const GenericParser& parser, ExtractedText* link) {
    if (IsPlain(value))
        link->ascii = value;
    else
        SetWide(Decode(value, parser.GetCharset(), false), link);
}

void SetText(const WideString& value, const GenericParser&, ExtractedText* link) {
    SetWide(value, link);
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

private:
    template <typename Tag>
    void Read(const Tag& tag) {
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
            SetText(attribute.value, *parser, &links->links.back());
        return true;
    }

    const GenericParser* parser;
    Links* links;
    Vector<HTML::Attribute<C, S>> parts;
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
    links.result = ParseWhole(&parser, bytes, options, [&links] { links.links.clear(); });
    *isUtf16 = parser.IsWParser();
    return links;
}

}  // namespace

Links FindLinks(std::string_view bytes, const ParseOptions& options) {
    bool isUtf16 = false;
    Links links = FindLinksOfFlavour<char, std::string>(bytes, options, &isUtf16);
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
