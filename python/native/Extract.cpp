#include "python/native/Extract.h"

#include <algorithm>
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

TagEffect GetEffect(const WideString& name) {
    struct Row {
        std::string_view name;
        TagEffect effect;
    };
    constexpr Row ROWS[] = {{"address", TagEffect::BLOCK},    {"article", TagEffect::BLOCK},
                            {"aside", TagEffect::BLOCK},      {"blockquote", TagEffect::BLOCK},
                            {"body", TagEffect::BLOCK},       {"br", TagEffect::LINE},
                            {"caption", TagEffect::BLOCK},    {"dd", TagEffect::BLOCK},
                            {"details", TagEffect::BLOCK},    {"dialog", TagEffect::BLOCK},
                            {"div", TagEffect::BLOCK},        {"dl", TagEffect::BLOCK},
                            {"dt", TagEffect::BLOCK},         {"fieldset", TagEffect::BLOCK},
                            {"figcaption", TagEffect::BLOCK}, {"figure", TagEffect::BLOCK},
                            {"footer", TagEffect::BLOCK},     {"form", TagEffect::BLOCK},
                            {"h1", TagEffect::BLOCK},         {"h2", TagEffect::BLOCK},
                            {"h3", TagEffect::BLOCK},         {"h4", TagEffect::BLOCK},
                            {"h5", TagEffect::BLOCK},         {"h6", TagEffect::BLOCK},
                            {"head", TagEffect::BLOCK},       {"header", TagEffect::BLOCK},
                            {"hr", TagEffect::BLOCK},         {"html", TagEffect::BLOCK},
                            {"iframe", TagEffect::HIDDEN},    {"li", TagEffect::BLOCK},
                            {"main", TagEffect::BLOCK},       {"nav", TagEffect::BLOCK},
                            {"noembed", TagEffect::HIDDEN},   {"noframes", TagEffect::HIDDEN},
                            {"ol", TagEffect::BLOCK},         {"option", TagEffect::BLOCK},
                            {"p", TagEffect::BLOCK},          {"pre", TagEffect::KEPT_SPACE},
                            {"script", TagEffect::HIDDEN},    {"section", TagEffect::BLOCK},
                            {"style", TagEffect::HIDDEN},     {"summary", TagEffect::BLOCK},
                            {"table", TagEffect::BLOCK},      {"tbody", TagEffect::BLOCK},
                            {"td", TagEffect::BLOCK},         {"textarea", TagEffect::KEPT_SPACE},
                            {"tfoot", TagEffect::BLOCK},      {"th", TagEffect::BLOCK},
                            {"thead", TagEffect::BLOCK},      {"title", TagEffect::BLOCK},
                            {"tr", TagEffect::BLOCK},         {"ul", TagEffect::BLOCK},
                            {"xmp", TagEffect::KEPT_SPACE}};
    for (const Row& row : ROWS) {
        if (EqualsKeyword(name, row.name))
            return row.effect;
    }
    return TagEffect::NONE;
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
