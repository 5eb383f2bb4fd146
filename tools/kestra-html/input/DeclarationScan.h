#pragma once

#include <cstdint>
#include <string_view>

namespace Kestra::Tool {

/// Finds out, without a parser, up to where a page can declare its charset: a declaration is a tag
/// "meta" with "charset" in it, so nothing after the last of either word is one.
///
/// Both are looked for in any case, and `meta` where neither a letter nor a digit is next to it.
class DeclarationScan {
public:
    /// Takes the next bytes.
    void Take(std::string_view bytes);

    /// The offset, from the first byte taken, where the last word that counts begins; -1 when
    /// there cannot be a declaration.
    std::int64_t GetLast() const;

private:
    void Look(std::string_view text, std::uint64_t begin);

    static constexpr std::uint64_t TAIL_SIZE = 8;  ///< a word, or one without its last letter and the byte before it

    char tail[TAIL_SIZE]{};  ///< the last bytes taken, for a word that the next ones continue
    std::uint64_t tailSize = 0;
    std::uint64_t taken = 0;
    std::int64_t lastMeta = -1;
    std::int64_t lastCharset = -1;
};

}  // namespace Kestra::Tool
