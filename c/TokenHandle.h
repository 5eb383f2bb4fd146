#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "c/Guard.h"
#include "c/StringPool.h"
#include "c/kestra/html.h"
#include "html/framework/Attribute.h"
#include "html/framework/EntityToken.h"
#include "html/framework/RecordFields.h"
#include "html/parser/GenericParser.h"
#include "platform/Characters.h"
#include "platform/Vector.h"

/// What a host gets for a token. One lives as long as its parser and shows one token after another.
struct kestra_html_token {
    kestra_html_token(const Kestra::HTML::GenericParser* tokenParser, std::uint32_t hostFlags)
        : parser(tokenParser), flags(hostFlags) {}
    kestra_html_token(const kestra_html_token&) = delete;
    kestra_html_token& operator=(const kestra_html_token&) = delete;
    virtual ~kestra_html_token() = default;

    virtual std::uint32_t GetFlags() const = 0;
    virtual std::uint32_t GetString(std::uint32_t part, kestra_html_string* string) const = 0;
    virtual std::uint32_t GetDecodedText(kestra_html_string* string) const = 0;
    virtual std::size_t CountAttributes() const = 0;
    virtual std::uint32_t GetAttribute(std::size_t index, kestra_html_attribute* attribute) const = 0;
    virtual std::uint32_t GetDecodedValue(std::size_t index, kestra_html_string* value) const = 0;
    virtual std::uint32_t GetAttributePlace(std::size_t index, kestra_html_attribute_place* place) const = 0;
    virtual std::uint32_t FindAttribute(std::string_view name, std::size_t* index) const = 0;

    const Kestra::HTML::GenericParser* parser;
    std::uint32_t flags;     ///< of the options
    std::uint32_t kind = 0;  ///< a `kestra_html_kind`
};

namespace Kestra::C {

/// What the records of all kinds have.
template <typename C, typename S>
struct TokenParts {
    static constexpr std::size_t COUNT = 6;

    const S* strings[COUNT] = {};        ///< in the order of `kestra_html_part`; null for none
    const std::string* bytes = nullptr;  ///< the text of junk and of a mark
    const Vector<HTML::Attribute<C, S>>* attributes = nullptr;
    const Vector<HTML::EntityToken<C, S>>* items = nullptr;
    std::uint32_t flags = 0;
};

/// Finds the parts of a record by the names of its fields.
template <template <typename, typename> class Record, typename C, typename S>
void FindParts(const void* pointer, TokenParts<C, S>* parts) {
    const auto& record = *static_cast<const Record<C, S>*>(pointer);
    if constexpr (requires { record.name; })
        parts->strings[KESTRA_HTML_PART_NAME] = record.name;
    if constexpr (requires { record.keyword; })
        parts->strings[KESTRA_HTML_PART_NAME] = record.keyword;
    if constexpr (requires { record.condition; })
        parts->strings[KESTRA_HTML_PART_TEXT] = record.condition;
    if constexpr (std::is_same_v<Record<C, S>, HTML::JunkData<C, S>>)
        parts->bytes = record.text;
    else if constexpr (requires { record.text; })
        parts->strings[KESTRA_HTML_PART_TEXT] = record.text;
    if constexpr (requires { record.prefix; })
        parts->strings[KESTRA_HTML_PART_PREFIX] = record.prefix;
    if constexpr (requires { record.afterName; })
        parts->strings[KESTRA_HTML_PART_AFTER_NAME] = record.afterName;
    if constexpr (requires { record.suffix; })
        parts->strings[KESTRA_HTML_PART_SUFFIX] = record.suffix;
    if constexpr (requires { record.tail; })
        parts->strings[KESTRA_HTML_PART_TAIL] = record.tail;
    if constexpr (requires { record.attributes; })
        parts->attributes = record.attributes;
    if constexpr (requires { record.tokens; })
        parts->items = record.tokens;
    const auto addFlag = [parts](bool isSet, std::uint32_t flag) { parts->flags |= isSet ? flag : 0; };
    if constexpr (requires { record.closed; })
        addFlag(record.closed, KESTRA_HTML_CLOSED);
    if constexpr (requires { record.tagClosed; })
        addFlag(record.tagClosed, KESTRA_HTML_CLOSED);
    if constexpr (requires { record.bracketClosed; })
        addFlag(record.bracketClosed, KESTRA_HTML_BRACKET_CLOSED);
    if constexpr (requires { record.slashBeforeClose; })
        addFlag(record.slashBeforeClose, KESTRA_HTML_SLASH);
    if constexpr (requires { record.freeStyle; })
        addFlag(record.freeStyle, KESTRA_HTML_FREE_STYLE);
}

/// The token of a parser whose observer has the flavour `C`. Its strings and attributes are worked
/// out when they are asked for, and at most once.
template <typename C, typename S>
class TokenHandle final : public kestra_html_token {
public:
    TokenHandle(const HTML::GenericParser* tokenParser, const kestra_html_options& options)
        : kestra_html_token(tokenParser, options.flags), encoding(options.encoding) {}

    /// Shows the token of a record.
    template <template <typename, typename> class Record>
    void Show(const Record<C, S>* tokenRecord) {
        Begin(static_cast<std::uint32_t>(HTML::RecordKind<Record>::KIND_OF_TOKEN), tokenRecord,
              &FindParts<Record, C, S>);
    }

    /// Shows what has no record. @param text  of a mark, or null
    void ShowEvent(std::uint32_t kindOfEvent, const std::string* text) {
        Begin(kindOfEvent, text, &FindMark);
    }

    std::uint32_t GetFlags() const override;
    std::uint32_t GetString(std::uint32_t part, kestra_html_string* string) const override;
    std::uint32_t GetDecodedText(kestra_html_string* string) const override;
    std::size_t CountAttributes() const override;
    std::uint32_t GetAttribute(std::size_t index, kestra_html_attribute* attribute) const override;
    std::uint32_t GetDecodedValue(std::size_t index, kestra_html_string* value) const override;
    std::uint32_t GetAttributePlace(std::size_t index, kestra_html_attribute_place* place) const override;
    std::uint32_t FindAttribute(std::string_view name, std::size_t* index) const override;

private:
    using FindPartsFunction = void (*)(const void* record, TokenParts<C, S>* parts);

    /// An attribute as the host sees it.
    struct Entry {
        const HTML::Attribute<C, S>* attribute;
        std::uint64_t index;  // in the record
        std::size_t part;     // of that attribute: 0, or a bare word that its value has taken up
    };

    /// What is worked out. The memory is retained from token to token.
    struct Work {
        bool hasParts = false;
        bool hasEntries = false;
        TokenParts<C, S> parts;
        std::vector<Entry> entries;
        std::deque<Vector<HTML::Attribute<C, S>>> split;
        std::size_t splitUsed = 0;
        StringPool<std::string> bytes;
        StringPool<S> strings;
        StringPool<WideString> wide;
        std::vector<HTML::AttributePlace> places;
        std::uint64_t placesOf = NO_ATTRIBUTE;  // the attribute of the record
    };

    static constexpr std::uint64_t NO_ATTRIBUTE = ~std::uint64_t{0};

    static void FindMark(const void* text, TokenParts<C, S>* parts) {
        parts->bytes = static_cast<const std::string*>(text);
    }

    void Begin(std::uint32_t tokenKind, const void* tokenRecord, FindPartsFunction findParts) {
        kind = tokenKind;
        record = tokenRecord;
        find = findParts;
        if (work.hasParts)
            Forget();
    }

    void Forget();
    const TokenParts<C, S>& GetParts() const;
    const std::vector<Entry>& GetEntries() const;
    void AddEntries(std::uint64_t index) const;
    bool MustSplit(const HTML::Attribute<C, S>& attribute) const;
    std::uint32_t GetSplitOptions() const;
    kestra_html_string Encode(const S& string) const;
    std::uint32_t EncodeBytes(const std::string& text, kestra_html_string* string) const;

    std::uint32_t encoding;
    const void* record = nullptr;
    FindPartsFunction find = nullptr;
    mutable Work work;
};

}  // namespace Kestra::C
