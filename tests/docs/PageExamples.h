#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace Kestra::Test {

/// A block of code of a page: what follows its opening fence, and its lines.
struct Block {
    std::size_t line = 0;  ///< of the opening fence
    std::string language;
    std::map<std::string, std::string> options;  ///< "name=value", or only a name
    std::string text;                            ///< without the last line feed

    bool Has(const std::string& option) const;
    /// The value of an option that is a number.
    /// @param otherwise  when the block has no such option
    std::uint32_t GetNumber(const std::string& option, std::uint32_t otherwise = 0) const;
};

/// The blocks of a page of docs/, in their order.
/// @param page  its file name
std::vector<Block> ReadBlocks(const std::string& page);

/// An input of a page, and what stands below it.
struct Example {
    Block input;
    std::string callbacks;    ///< the lines of its block of JSON
    std::string writtenBack;  ///< its block of text; the input when there is none
};

/// The examples of a page; blocks in other languages are passed over.
std::vector<Example> ReadExamples(const std::string& page);

/// Adds the names of the callbacks in the lines of JSON.
void AddCallbackNames(std::string_view lines, std::set<std::string>* names);

}  // namespace Kestra::Test
