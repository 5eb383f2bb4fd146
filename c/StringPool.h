#pragma once

#include <cstddef>
#include <deque>
#include <string>

namespace Kestra::C {

/// Strings that last until the next token, and keep their memory for it.
template <typename String>
class StringPool {
public:
    /// An empty string, for as long as the token lasts.
    String* Next() {
        if (used == strings.size())
            strings.emplace_back();
        String& string = strings[used++];
        string.clear();
        return &string;
    }

    /// The token is over.
    void Reset() {
        while (used > 0) {
            String& string = strings[--used];
            if (string.capacity() > MOST_RETAINED)
                String().swap(string);
        }
    }

private:
    static constexpr std::size_t MOST_RETAINED = 65536;  // characters of a string

    std::deque<String> strings;  // which do not move
    std::size_t used = 0;
};

}  // namespace Kestra::C
