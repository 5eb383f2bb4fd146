#include "tests/docs/PageExamples.h"

#include <algorithm>
#include <fstream>

namespace Kestra::Test {

namespace {

Block ReadFence(std::string_view fence, std::size_t line) {
    Block block;
    block.line = line;
    std::size_t begin = 0;
    while (begin < fence.size()) {
        const std::size_t end = std::min(fence.find(' ', begin), fence.size());
        const std::string_view word = fence.substr(begin, end - begin);
        const std::size_t equals = word.find('=');
        if (begin == 0)
            block.language = word;
        else
            block.options[std::string(word.substr(0, equals))] =
                equals == std::string_view::npos ? "" : word.substr(equals + 1);
        begin = end + 1;
    }
    return block;
}

/// A callback may go on in lines that begin with two spaces.
std::string JoinContinued(std::string_view text) {
    constexpr std::string_view CONTINUED = "\n  ";
    std::string joined(text);
    for (std::size_t at = joined.find(CONTINUED); at != std::string::npos; at = joined.find(CONTINUED, at))
        joined.erase(at, CONTINUED.size());
    return joined;
}

}  // namespace

bool Block::Has(const std::string& option) const {
    return options.contains(option);
}

std::uint32_t Block::GetNumber(const std::string& option, std::uint32_t otherwise) const {
    return Has(option) ? static_cast<std::uint32_t>(std::stoul(options.at(option))) : otherwise;
}

std::vector<Block> ReadBlocks(const std::string& page) {
    std::ifstream file(KESTRA_DOCS "/" + page);
    std::vector<Block> blocks;
    bool inBlock = false;
    std::size_t number = 0;
    for (std::string line; std::getline(file, line);) {
        ++number;
        if (!inBlock && line.starts_with("```")) {
            blocks.push_back(ReadFence(std::string_view(line).substr(3), number));
            inBlock = true;
        } else if (inBlock && line == "```") {
            if (!blocks.back().text.empty())
                blocks.back().text.pop_back();
            inBlock = false;
        } else if (inBlock) {
            blocks.back().text += line + "\n";
        }
    }
    return blocks;
}

std::vector<Example> ReadExamples(const std::string& page) {
    std::vector<Example> examples;
    for (const Block& block : ReadBlocks(page)) {
        if (block.language == "html")
            examples.push_back({block, "", block.text});
        else if (block.language == "json")
            examples.back().callbacks = JoinContinued(block.text);
        else if (block.language == "text")
            examples.back().writtenBack = block.text;
    }
    return examples;
}

void AddCallbackNames(std::string_view lines, std::set<std::string>* names) {
    constexpr std::string_view OPENING = R"({"event":")";
    for (std::size_t at = lines.find(OPENING); at != std::string_view::npos; at = lines.find(OPENING, at + 1)) {
        const std::size_t name = at + OPENING.size();
        names->emplace(lines.substr(name, lines.find('"', name) - name));
    }
}

}  // namespace Kestra::Test
