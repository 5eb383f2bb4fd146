#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "html/framework/QuoteKind.h"
#include "html/framework/RecordFields.h"
#include "platform/Vector.h"
#include "tools/trace/RecordNotation.h"

/// @file
/// Records of tokens from lines of the trace language, the inverse of the trace.
///
/// A character of a string that would end the string is written as an escape: `\x7C` for "|",
/// `\x7D` for "}" in an attribute, `\x22` for a quotation mark at the start of a bare value. `\xE9`
/// is a byte, or in the wide flavour the unit of this code; other units are `\u3042`.

namespace Kestra::Test {

/// Reads a line of the trace language from its start to its end. Throws `std::invalid_argument`
/// when the line has another form.
class NotationReader {
public:
    explicit NotationReader(std::string_view notedLine) : line(notedLine), rest(notedLine) {}

    bool IsAtEnd() const {
        return rest.empty();
    }

    bool Skip(std::string_view text) {
        if (!rest.starts_with(text))
            return false;
        rest.remove_prefix(text.size());
        return true;
    }

    /// Skips a text at the end.
    bool SkipLast(std::string_view text) {
        if (!rest.ends_with(text))
            return false;
        rest.remove_suffix(text.size());
        return true;
    }

    void Expect(std::string_view text) {
        if (!Skip(text))
            Fail("\"" + std::string(text) + "\" is missing");
    }

    void ExpectLast(std::string_view text) {
        if (!SkipLast(text))
            Fail("\"" + std::string(text) + "\" is missing at the end");
    }

    /// What lies before the first of some characters, or before the end; escapes as written.
    std::string_view TakeUntil(std::string_view stops) {
        std::size_t length = 0;
        while (length < rest.size() && stops.find(rest[length]) == stops.npos)
            length += rest[length] == '\\' ? 2 : 1;
        const std::string_view taken = rest.substr(0, length);
        rest.remove_prefix(taken.size());
        return taken;
    }

    /// The characters that escapes stand for.
    template <typename S>
    S Unescape(std::string_view escaped) const {
        S text;
        for (std::size_t i = 0; i < escaped.size(); ++i) {
            if (escaped[i] != '\\') {
                text.push_back(static_cast<typename S::value_type>(escaped[i]));
                continue;
            }
            const char letter = ++i < escaped.size() ? escaped[i] : '\0';
            const std::size_t digits = letter == 'x' ? 2 : letter == 'u' ? 4 : 0;
            text.push_back(static_cast<typename S::value_type>(digits == 0 ? GetShortEscape(letter)
                                                                           : GetCode(escaped, i + 1, digits)));
            i += digits;
        }
        return text;
    }

    [[noreturn]] void Fail(const std::string& what) const {
        throw std::invalid_argument(std::string(line) + ": " + what);
    }

private:
    unsigned GetShortEscape(char letter) const {
        switch (letter) {
            case '\\':
                return '\\';
            case 'n':
                return '\n';
            case 'r':
                return '\r';
            case 't':
                return '\t';
        }
        Fail("an unknown escape");
    }

    unsigned GetCode(std::string_view escaped, std::size_t begin, std::size_t digits) const {
        unsigned code = 0;
        for (std::size_t i = begin; i < begin + digits; ++i) {
            const std::size_t value =
                i < escaped.size() ? std::string_view("0123456789ABCDEF").find(escaped[i]) : std::string_view::npos;
            if (value == std::string_view::npos)
                Fail("an escape without its digits");
            code = code << 4 | static_cast<unsigned>(value);
        }
        return code;
    }

    std::string_view line;
    std::string_view rest;
};

/// A value in its quotes.
template <typename Part>
void ReadQuoted(NotationReader* reader, std::string_view noted, Part* part) {
    part->quote = HTML::QUOTE_NONE;
    for (std::uint32_t quote = 1; quote <= Trace::QUOTE_MARKS.size(); ++quote) {
        const std::string_view mark =
            quote < Trace::QUOTE_MARKS.size() ? Trace::QUOTE_MARKS[quote] : Trace::UNKNOWN_QUOTE_MARK;
        if (part->quote == HTML::QUOTE_NONE && noted.size() >= 2 && noted.starts_with(mark) && noted.ends_with(mark)) {
            part->quote = quote;
            noted = noted.substr(1, noted.size() - 2);
        }
    }
    part->value = reader->Unescape<decltype(part->value)>(noted);
}

/// From after its "{" to its "}".
template <typename C, typename S>
void ReadPart(NotationReader* reader, HTML::Attribute<C, S>* attribute) {
    attribute->prefix = reader->Unescape<S>(reader->TakeUntil("|"));
    reader->Expect("|");
    attribute->name = reader->Unescape<S>(reader->TakeUntil("|}"));
    attribute->hasValue = reader->Skip("|");
    if (attribute->hasValue) {
        attribute->beforeEquals = reader->Unescape<S>(reader->TakeUntil("="));
        reader->Expect("=");
        attribute->afterEquals = reader->Unescape<S>(reader->TakeUntil("|"));
        reader->Expect("|");
        ReadQuoted(reader, reader->TakeUntil("}"), attribute);
    }
    reader->Expect("}");
}

template <typename C, typename S>
void ReadPart(NotationReader* reader, HTML::EntityToken<C, S>* token) {
    token->prefix = reader->Unescape<S>(reader->TakeUntil("|"));
    reader->Expect("|");
    ReadQuoted(reader, reader->TakeUntil("}"), token);
    reader->Expect("}");
}

template <template <typename, typename> class Record>
inline constexpr bool IS_INSTRUCTION =
    std::is_same_v<Record<char, std::string>, HTML::ExternTagData<char, std::string>>;

/// A record of a token, and all that it shows.
template <template <typename, typename> class Record, typename C, typename S>
class NotedRecord {
public:
    /// @param line  in the trace language; it must be one of this kind
    explicit NotedRecord(std::string_view line) {
        NotationReader reader(line);
        bool isRawInstruction = false;
        if constexpr (IS_INSTRUCTION<Record>)
            isRawInstruction = record.freeStyle = reader.Skip(std::string(Trace::RAW_INSTRUCTION) + "(");
        if (!isRawInstruction)
            reader.Expect(std::string(HTML::RecordKind<Record>::WORD) + "(");
        reader.ExpectLast(")");
        ReadFlags(&reader, isRawInstruction);
        bool isFirst = true;
        HTML::ForEachField(&record, [&](std::string_view name, auto* field) {
            if constexpr (std::is_pointer_v<std::remove_pointer_t<decltype(field)>>) {
                const bool isOfOther =
                    IS_INSTRUCTION<Record> && Trace::IsFieldOfRawInstruction(name) != isRawInstruction;
                if (!isOfOther && !isFirst)
                    reader.Expect("|");
                isFirst = isFirst && isOfOther;
                NotationReader nothing("");
                ReadField(isOfOther ? &nothing : &reader, field);
            }
        });
        if (!reader.IsAtEnd())
            reader.Fail("more parameters than fields");
    }

    NotedRecord(const NotedRecord&) = delete;
    NotedRecord& operator=(const NotedRecord&) = delete;
    ~NotedRecord() = default;

    Record<C, S> record{};

private:
    /// From the last to the first: the words follow the parameters.
    void ReadFlags(NotationReader* reader, bool isRawInstruction) {
        HTML::ForEachField(&record, [&](std::string_view name, auto* field) {
            if constexpr (std::is_same_v<decltype(field), bool*>) {
                if (!Trace::HasFlagNotation(name) && !(IS_INSTRUCTION<Record> && Trace::IsFieldOfRawInstruction(name)))
                    *field = reader->SkipLast(", " + std::string(name));
            }
        });
        for (std::size_t i = Trace::FLAG_NOTATIONS.size(); i > 0; --i) {
            const Trace::FlagNotation& notation = Trace::FLAG_NOTATIONS[i - 1];
            HTML::ForEachField(&record, [&](std::string_view name, auto* field) {
                if constexpr (std::is_same_v<decltype(field), bool*>) {
                    if (name == notation.field)
                        *field = (!isRawInstruction && reader->SkipLast(", " + std::string(notation.word))) ==
                                 notation.value;
                }
            });
        }
    }

    template <typename Character>
    void ReadField(NotationReader* reader, const std::basic_string<Character>** field) {
        const std::string_view noted = reader->TakeUntil("|");
        if (noted == Trace::NULL_WORD)
            return;
        auto& kept = GetStrings<Character>();
        kept.push_back(
            std::make_unique<std::basic_string<Character>>(reader->Unescape<std::basic_string<Character>>(noted)));
        *field = kept.back().get();
    }

    void ReadField(NotationReader* reader, const Vector<HTML::Attribute<C, S>>** field) {
        ReadList(reader, &attributes, field);
    }

    void ReadField(NotationReader* reader, const Vector<HTML::EntityToken<C, S>>** field) {
        ReadList(reader, &tokens, field);
    }

    template <typename Part>
    void ReadList(NotationReader* reader, Vector<Part>* list, const Vector<Part>** field) {
        if (reader->Skip(Trace::NULL_WORD))
            return;
        while (reader->Skip("{"))
            ReadPart(reader, &list->emplace_back());
        *field = list;
    }

    template <typename Character>
    auto& GetStrings() {
        if constexpr (std::is_same_v<Character, char>)
            return narrowStrings;
        else
            return wideStrings;
    }

    std::vector<std::unique_ptr<std::string>> narrowStrings;
    std::vector<std::unique_ptr<WideString>> wideStrings;
    Vector<HTML::Attribute<C, S>> attributes;
    Vector<HTML::EntityToken<C, S>> tokens;
};

/// Calls `use(record)` with a pointer to the record that a line of the trace language tells.
template <typename C, typename S, typename Use>
void UseNotedRecord(std::string_view line, Use use) {
    std::string_view word = line.substr(0, line.find('('));
    if (word == Trace::RAW_INSTRUCTION)
        word = HTML::RecordKind<HTML::ExternTagData>::WORD;
    bool isKnown = false;
    HTML::ForEachKind([&]<template <typename, typename> class Record>() {
        if (word == HTML::RecordKind<Record>::WORD) {
            isKnown = true;
            NotedRecord<Record, C, S> noted(line);
            use(&noted.record);
        }
    });
    if (!isKnown)
        throw std::invalid_argument(std::string(line) + ": no kind of tokens has this word");
}

/// The words that flags of a record can have in a line, each of another flag.
template <template <typename, typename> class Record>
std::vector<std::string> GetFlagWords() {
    std::vector<std::string> words;
    HTML::ForEachField<Record>([&words]<typename Tag, typename Getter>(const HTML::RecordField<Tag, Getter>& field) {
        if constexpr (std::is_same_v<Tag, HTML::FlagField>) {
            for (const Trace::FlagNotation& notation : Trace::FLAG_NOTATIONS) {
                if (notation.field == field.name)
                    words.emplace_back(notation.word);
            }
            if (!Trace::HasFlagNotation(field.name) &&
                !(IS_INSTRUCTION<Record> && Trace::IsFieldOfRawInstruction(field.name)))
                words.emplace_back(field.name);
        }
    });
    return words;
}

/// Lines of the trace language, made from the list of fields: for each kind one without flags, and
/// one for each of its flags.
inline std::vector<std::string> MakeLinesOfEveryKind() {
    std::vector<std::string> lines;
    HTML::ForEachKind([&lines]<template <typename, typename> class Record>() {
        std::string line = HTML::RecordKind<Record>::WORD;
        char separator = '(';
        char letter = 'a';
        HTML::ForEachField<Record>([&]<typename Tag, typename Getter>(const HTML::RecordField<Tag, Getter>& field) {
            const bool isOfRawInstruction = IS_INSTRUCTION<Record> && Trace::IsFieldOfRawInstruction(field.name);
            if (std::is_same_v<Tag, HTML::FlagField> || isOfRawInstruction)
                return;
            line += separator;
            separator = '|';
            if constexpr (std::is_same_v<Tag, HTML::AttributesField>)
                line += "{ |n|\\t=\\n|v}{\\r|o|=|'w'}{|p|=|\"x\"}{ |q}";
            else if constexpr (std::is_same_v<Tag, HTML::TokensField>)
                line += "{ |v}{\\n|'w'}{|\"x\"}";
            else
                line += letter++;
        });
        lines.push_back(line + ")");
        for (const std::string& word : GetFlagWords<Record>())
            lines.push_back(line + ", " + word + ")");
    });
    lines.push_back(std::string(Trace::RAW_INSTRUCTION) + "(a)");
    return lines;
}

/// Calls an observer as for the token of a line.
template <typename C, typename S>
void CallNoted(HTML::ParserObserver<C, S>* observer, std::string_view line) {
    UseNotedRecord<C, S>(line, [observer](auto* record) { HTML::CallObserver(observer, record); });
}

}  // namespace Kestra::Test
