#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

#include "platform/Characters.h"

namespace Kestra::Tool {

/// One JSON value as it grows, in pure ASCII. The memory is retained.
///
/// Most of the output is punctuation, names of members and short strings. A writer that knows that
/// makes `tokens --format json` more than twice as fast as a general one.
///
/// A comma is written after every value, and taken back where an object or an array ends.
class JsonText {
public:
    void Clear() {
        used = 0;
    }

    /// Valid until the next change.
    std::string_view Get() const {
        return {bytes.data(), EndsInComma() ? used - 1 : used};
    }

    void OpenObject() {
        Append("{");
    }
    void CloseObject() {
        Close("},");
    }
    void OpenArray() {
        Append("[");
    }
    void CloseArray() {
        Close("],");
    }

    /// The name of a member; its value comes next.
    /// @param name  printable ASCII without quotation marks and backslashes
    [[gnu::always_inline]] void Name(std::string_view name) {
        Quoted(name, ':');
    }

    /// A string without anything to escape.
    [[gnu::always_inline]] void PlainString(std::string_view string) {
        Quoted(string, ',');
    }

    /// Control characters and everything from U+007F up are escaped. Each byte is one code point,
    /// U+0000 to U+00FF.
    [[gnu::always_inline]] void String(std::string_view string) {
        Escape(string);
    }
    /// The same for UTF-16; a surrogate, paired or alone, is written as its own escape.
    [[gnu::always_inline]] void String(WideStringView string) {
        Escape(string);
    }
    [[gnu::always_inline]] void Number(std::uint64_t number) {
        if (number > 9)
            return LongNumber(number);
        char* const out = Reserve(2);
        out[0] = static_cast<char>('0' + number);
        out[1] = ',';
        used += 2;
    }
    [[gnu::always_inline]] void Bool(bool value) {
        Append(value ? std::string_view("true,") : std::string_view("false,"));
    }
    void Null() {
        Append("null,");
    }

private:
    /// True after a value: the last character of a string is its quotation mark.
    bool EndsInComma() const {
        return used > 0 && bytes[used - 1] == ',';
    }

    void Close(std::string_view bracket) {
        if (EndsInComma())
            --used;
        Append(bracket);
    }

    [[gnu::always_inline]] void Append(std::string_view piece) {
        std::memcpy(Reserve(piece.size()), piece.data(), piece.size());
        used += piece.size();
    }

    [[gnu::always_inline]] void Quoted(std::string_view string, char next) {
        char* const out = Reserve(string.size() + 3);
        out[0] = '"';
        string.copy(out + 1, string.size());
        out[string.size() + 1] = '"';
        out[string.size() + 2] = next;
        used += string.size() + 3;
    }

    /// Makes room. @return where the next character goes
    [[gnu::always_inline]] char* Reserve(std::size_t size) {
        if (bytes.size() - used < size)
            Grow(size);
        return bytes.data() + used;
    }

    /// Most strings are empty.
    template <typename Unit>
    [[gnu::always_inline]] void Escape(std::basic_string_view<Unit> string) {
        if (string.empty())
            Append("\"\",");
        else
            EscapeUnits(string);
    }

    void Grow(std::size_t size);
    void LongNumber(std::uint64_t number);
    template <typename Unit>
    void EscapeUnits(std::basic_string_view<Unit> string);

    std::vector<char> bytes;
    std::size_t used = 0;
};

}  // namespace Kestra::Tool
