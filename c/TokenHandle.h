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
/// It is a `TokenHandle` of one of the flavours; `Kestra::C::Ask` finds out which.
struct kestra_html_token {
    kestra_html_token(const Kestra::HTML::GenericParser* tokenParser, std::uint32_t hostFlags, bool hasWideStrings)
        : parser(tokenParser), flags(hostFlags), isWide(hasWideStrings) {}
    kestra_html_token(const kestra_html_token&) = delete;
    kestra_html_token& operator=(const kestra_html_token&) = delete;

    const Kestra::HTML::GenericParser* parser;
    std::uint32_t flags;     ///< of the options
    std::uint32_t kind = 0;  ///< a `kestra_html_kind`
    bool isWide;

protected:
    ~kestra_html_token() = default;
};

namespace Kestra::C {

/// What a record without a part has instead.
template <typename C, typename S>
struct AbsentParts {
    const S* string = nullptr;
    const Vector<HTML::Attribute<C, S>>* attributes = nullptr;
    const Vector<HTML::EntityToken<C, S>>* items = nullptr;
};

using AbsentNarrowParts = AbsentParts<char, std::string>;
using AbsentWideParts = AbsentParts<WideChar, WideString>;

/// Where a record of one kind has what a host may ask for, and `AbsentParts` what it has not. All
/// kinds are looked up in the same way, without a branch: a branch on the kind of a token, so long
/// after the parser has found it out, is predicted badly.
struct RecordLayout {
    static constexpr std::size_t PARTS = 6;
    static constexpr std::uint16_t ABSENT = 1;  ///< plus the offset in `AbsentParts`
    static constexpr std::uint16_t NO_STRING = ABSENT + offsetof(AbsentNarrowParts, string);

    /// Offsets of pointers in the record, in bytes.
    std::uint16_t strings[PARTS] = {NO_STRING, NO_STRING, NO_STRING, NO_STRING, NO_STRING, NO_STRING};
    std::uint16_t attributes = ABSENT + offsetof(AbsentNarrowParts, attributes);
    std::uint16_t items = ABSENT + offsetof(AbsentNarrowParts, items);
    std::uint16_t bytes = ABSENT;                             ///< the text of junk and of a mark
    std::uint32_t (*getFlags)(const void* record) = nullptr;  ///< null when there are none
};

static_assert(offsetof(AbsentNarrowParts, attributes) == offsetof(AbsentWideParts, attributes) &&
              offsetof(AbsentNarrowParts, items) == offsetof(AbsentWideParts, items));

/// The flags that a record has for the host.
template <typename Record>
std::uint32_t GetRecordFlags(const void* pointer) {
    const auto& record = *static_cast<const Record*>(pointer);
    std::uint32_t flags = 0;
    const auto addFlag = [&flags](bool isSet, std::uint32_t flag) { flags |= isSet ? flag : 0; };
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
    return flags;
}

/// Finds the parts of a record by the names of its fields. Those are pointers, never null in a
/// record of the parser.
template <template <typename, typename> class Record, typename C, typename S>
constexpr RecordLayout MakeLayout() {
    using Fields = Record<C, S>;
    RecordLayout layout;

#define FIND_FIELD(PLACE, FIELD)                                   \
    if constexpr (requires(Fields fields) { fields.FIELD; }) {     \
        static_assert(std::is_pointer_v<decltype(Fields::FIELD)>); \
        PLACE = offsetof(Fields, FIELD);                           \
    }

    FIND_FIELD(layout.strings[KESTRA_HTML_PART_NAME], name)
    FIND_FIELD(layout.strings[KESTRA_HTML_PART_NAME], keyword)
    FIND_FIELD(layout.strings[KESTRA_HTML_PART_TEXT], condition)
    if constexpr (std::is_same_v<Fields, HTML::JunkData<C, S>>) {
        FIND_FIELD(layout.bytes, text)
    } else {
        FIND_FIELD(layout.strings[KESTRA_HTML_PART_TEXT], text)
    }
    FIND_FIELD(layout.strings[KESTRA_HTML_PART_PREFIX], prefix)
    FIND_FIELD(layout.strings[KESTRA_HTML_PART_AFTER_NAME], afterName)
    FIND_FIELD(layout.strings[KESTRA_HTML_PART_SUFFIX], suffix)
    FIND_FIELD(layout.strings[KESTRA_HTML_PART_TAIL], tail)
    FIND_FIELD(layout.attributes, attributes)
    FIND_FIELD(layout.items, tokens)

#undef FIND_FIELD

    layout.getFlags = &GetRecordFlags<Fields>;
    return layout;
}

template <template <typename, typename> class Record, typename C, typename S>
constexpr RecordLayout LAYOUT = MakeLayout<Record, C, S>();

/// What a mark has instead of a record.
struct MarkRecord {
    const std::string* bytes = nullptr;
};

constexpr RecordLayout MARK_LAYOUT = {.bytes = offsetof(MarkRecord, bytes)};
constexpr RecordLayout EMPTY_LAYOUT = {};

/// The token of a parser whose observer has the flavour `C`. Its strings and attributes are worked
/// out when they are asked for, and at most once.
template <typename C, typename S>
class TokenHandle final : public kestra_html_token {
public:
    TokenHandle(const HTML::GenericParser* tokenParser, const kestra_html_options& options)
        : kestra_html_token(tokenParser, options.flags, sizeof(C) > 1), encoding(options.encoding) {}

    /// Shows the token of a record.
    template <template <typename, typename> class Record>
    void Show(const Record<C, S>* tokenRecord) {
        Begin(static_cast<std::uint32_t>(HTML::RecordKind<Record>::KIND_OF_TOKEN), tokenRecord, &LAYOUT<Record, C, S>);
    }

    /// Shows what has no record. @param text  of a mark, or null
    void ShowEvent(std::uint32_t kindOfEvent, const std::string* text) {
        mark.bytes = text;
        Begin(kindOfEvent, &mark, text == nullptr ? &EMPTY_LAYOUT : &MARK_LAYOUT);
    }

    std::uint32_t GetFlags() const;

    std::uint32_t GetString(std::uint32_t part, kestra_html_string* string) const {
        if (part >= RecordLayout::PARTS)
            return KESTRA_HTML_INVALID_ARGUMENT;
        if (part == KESTRA_HTML_PART_TEXT && HasBytes())
            return EncodeBytes(*Get<std::string>(layout->bytes), string);
        *string = Encode(*Get<S>(layout->strings[part]));
        return KESTRA_HTML_OK;
    }

    std::size_t CountAttributes() const {
        return HasItems() ? GetItems().size() : CountEntries();
    }

    std::uint32_t Summarize(kestra_html_summary* summary) const {
        kestra_html_string name;
        kestra_html_string text;
        std::uint32_t result = GetString(KESTRA_HTML_PART_NAME, &name);
        if (result == KESTRA_HTML_OK)
            result = GetString(KESTRA_HTML_PART_TEXT, &text);
        if (result != KESTRA_HTML_OK)
            return result;
        const std::size_t count = CountAttributes();
        if (summary->size < sizeof *summary) {
            AnswerStruct(kestra_html_summary{0, kind, 0, name, text, count}, summary);
        } else {
            // Field by field: a struct that was just put together is copied slowly.
            summary->kind = kind;
            summary->reserved = 0;
            summary->name = name;
            summary->text = text;
            summary->attribute_count = count;
        }
        return KESTRA_HTML_OK;
    }

    /// The summary of a token that is shown, for the callback that gets it with the token.
    template <template <typename, typename> class Record>
    void SummarizeRecord(kestra_html_summary* summary) const {
        // The layout is a constant here: nothing is looked up, and what is absent costs nothing.
        constexpr RecordLayout KNOWN = LAYOUT<Record, C, S>;
        summary->kind = kind;
        summary->name = EncodePart<KNOWN.strings[KESTRA_HTML_PART_NAME]>();
        if constexpr (IsAbsent(KNOWN.bytes))
            summary->text = EncodePart<KNOWN.strings[KESTRA_HTML_PART_TEXT]>();
        else
            summary->text = EncodeBytesOrNull(*Get<std::string>(KNOWN.bytes));
        if constexpr (!IsAbsent(KNOWN.items))
            summary->attribute_count = GetItems().size();
        else if constexpr (!IsAbsent(KNOWN.attributes))
            summary->attribute_count = CountEntries();
        else
            summary->attribute_count = 0;
    }

    /// The same for what has no record.
    void SummarizeEvent(kestra_html_summary* summary) const;

    std::uint32_t GetDecodedText(kestra_html_string* string) const;
    std::uint32_t GetAttribute(std::size_t index, kestra_html_attribute* attribute) const;
    std::uint32_t GetDecodedValue(std::size_t index, kestra_html_string* value) const;
    std::uint32_t GetAttributePlace(std::size_t index, kestra_html_attribute_place* place) const;
    std::uint32_t FindAttribute(std::string_view name, std::size_t* index) const;

private:
    /// An attribute as the host sees it.
    struct Entry {
        const HTML::Attribute<C, S>* attribute;
        std::uint64_t index;  // in the record
        std::size_t part;     // of that attribute: 0, or a bare word that its value has taken up
    };

    /// Whether the host sees other attributes than the record has.
    enum class Splitting { UNKNOWN, NEEDLESS, DONE };

    /// What is worked out. The memory is retained from token to token.
    struct Work {
        bool isUsed = false;
        Splitting splitting = Splitting::UNKNOWN;
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

    void Begin(std::uint32_t tokenKind, const void* tokenRecord, const RecordLayout* tokenLayout) {
        kind = tokenKind;
        bases[0] = static_cast<const char*>(tokenRecord);
        layout = tokenLayout;
        if (work.isUsed)
            Forget();
    }

    /// What the pointer at an offset points to.
    template <typename Field>
    const Field* Get(std::uint16_t offset) const {
        const char* const field = bases[offset & RecordLayout::ABSENT] + offset;
        return *reinterpret_cast<const Field* const*>(field);
    }

    const Vector<HTML::Attribute<C, S>>& GetAttributes() const {
        return *Get<Vector<HTML::Attribute<C, S>>>(layout->attributes);
    }

    const Vector<HTML::EntityToken<C, S>>& GetItems() const {
        return *Get<Vector<HTML::EntityToken<C, S>>>(layout->items);
    }

    static constexpr bool IsAbsent(std::uint16_t offset) {
        return (offset & RecordLayout::ABSENT) != 0;
    }

    bool HasItems() const {
        return !IsAbsent(layout->items);
    }

    bool HasBytes() const {
        return !IsAbsent(layout->bytes);
    }

    Work& UseWork() const {
        work.isUsed = true;
        return work;
    }

    void Forget();

    std::size_t CountEntries() const {
        const auto& attributes = GetAttributes();
        if ((flags & KESTRA_HTML_WORDS_IN_VALUES) == 0 && work.splitting == Splitting::UNKNOWN)
            SplitAttributes(attributes);
        return work.splitting == Splitting::DONE ? work.entries.size() : attributes.size();
    }

    Entry GetEntry(std::size_t index) const;
    void SplitAttributes(const Vector<HTML::Attribute<C, S>>& attributes) const;
    void AddEntries(const HTML::Attribute<C, S>& attribute, std::uint64_t index) const;
    bool MustSplit(const HTML::Attribute<C, S>& attribute) const;
    std::uint32_t GetSplitOptions() const;

    kestra_html_string Encode(const S& string) const {
        if constexpr (sizeof(C) > 1) {
            if (encoding == KESTRA_HTML_UTF8 && !string.empty())
                return EncodeUtf8(string);
        }
        return MakeString(string.data(), string.size() * sizeof(C));
    }

    /// The string at a known offset.
    template <std::uint16_t OFFSET>
    kestra_html_string EncodePart() const {
        if constexpr (IsAbsent(OFFSET))
            return MakeString("", 0);
        else
            return Encode(*Get<S>(OFFSET));
    }

    kestra_html_string EncodeUtf8(WideStringView string) const;
    kestra_html_string EncodeBytesOrNull(const std::string& text) const;
    std::uint32_t EncodeBytes(const std::string& text, kestra_html_string* string) const;

    // Not static: the DLL has no objects that are made when it is loaded.
    const S noString;
    const Vector<HTML::Attribute<C, S>> noAttributes;
    const Vector<HTML::EntityToken<C, S>> noItems;
    const AbsentParts<C, S> absent = {&noString, &noAttributes, &noItems};
    std::uint32_t encoding;
    /// The record, and `absent` less `ABSENT`, which the offsets into it include.
    const char* bases[2] = {nullptr, reinterpret_cast<const char*>(&absent) - RecordLayout::ABSENT};
    const RecordLayout* layout = &EMPTY_LAYOUT;
    MarkRecord mark;
    mutable Work work;
};

/// Asks a token in the flavour that it has.
template <typename Question>
auto Ask(const kestra_html_token& token, Question question) {
    return token.isWide ? question(static_cast<const TokenHandle<WideChar, WideString>&>(token))
                        : question(static_cast<const TokenHandle<char, std::string>&>(token));
}

}  // namespace Kestra::C
