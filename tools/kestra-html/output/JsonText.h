#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/Characters.h"

namespace Kestra::Tool {

/// One JSON value as it grows, in pure ASCII. The memory is retained.
///
/// A writer of its own, because most of the output is punctuation, names of members and short
/// strings: with the one of a library, `tokens --format json` took a fifth longer when the strings
/// were escaped here, and more than twice as long otherwise.
class JsonText {
public:
    void Clear() {
        used = 0;
    }

    /// Valid until the next change.
    std::string_view Get() const {
        return {bytes.data(), used};
    }

    void OpenObject() {
        Separate();
        Put('{');
    }
    void CloseObject() {
        Put('}');
    }
    void OpenArray() {
        Separate();
        Put('[');
    }
    void CloseArray() {
        Put(']');
    }

    /// The name of a member; its value comes next.
    /// @param name  printable ASCII without quotation marks and backslashes
    [[gnu::always_inline]] void Name(std::string_view name) {
        PlainString(name);
        Put(':');
    }

    /// A string without anything to escape.
    [[gnu::always_inline]] void PlainString(std::string_view string) {
        Separate();
        char* const out = Reserve(string.size() + 2);
        out[0] = '"';
        string.copy(out + 1, string.size());
        out[string.size() + 1] = '"';
        used += string.size() + 2;
    }

    /// Control characters and everything from U+007F up are escaped. Each byte is one code point,
    /// U+0000 to U+00FF.
    void String(std::string_view string);
    /// The same for UTF-16; a surrogate, paired or alone, is written as its own escape.
    void String(WideStringView string);
    void Number(std::uint64_t number);
    /// "null", "true" or "false".
    void Word(std::string_view word);

private:
    /// Puts a comma between two members or items. After the end of a string the last character is
    /// its quotation mark, so that no character of a string is taken for an opening bracket.
    void Separate() {
        if (used == 0)
            return;
        const char last = bytes[used - 1];
        if (last != '{' && last != '[' && last != ':')
            Put(',');
    }

    [[gnu::always_inline]] void Put(char character) {
        *Reserve(1) = character;
        ++used;
    }

    /// Makes room. @return where the next character goes
    [[gnu::always_inline]] char* Reserve(std::size_t size) {
        if (bytes.size() - used < size)
            Grow(size);
        return bytes.data() + used;
    }

    void Grow(std::size_t size);
    template <typename Unit>
    void Escape(std::basic_string_view<Unit> string);

    std::vector<char> bytes;
    std::size_t used = 0;
};

}  // namespace Kestra::Tool
