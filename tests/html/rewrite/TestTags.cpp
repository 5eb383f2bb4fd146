#include "tests/html/rewrite/TestTags.h"

namespace Kestra::Test {

bool TestTag::Find(std::string_view wanted, std::string* value) const {
    questions.push_back(std::string(wanted) + (value != nullptr ? "=" : ""));
    for (const auto& [attribute, written] : attributes) {
        if (attribute == wanted) {
            if (value != nullptr)
                *value = written;
            return true;
        }
    }
    return false;
}

std::vector<TestTag> ReadTags(std::string_view markup) {
    std::vector<TestTag> tags;
    std::size_t place = 0;
    const auto readWord = [&] {
        const std::size_t end = markup.find_first_of(" =/>", place);
        std::string word(markup.substr(place, end - place));
        place = end;
        return word;
    };
    while (place < markup.size()) {
        ++place;  // "<"
        TestTag tag;
        tag.isEnd = markup[place] == '/';
        place += tag.isEnd ? 1 : 0;
        tag.name = readWord();
        while (markup[place] == ' ') {
            ++place;
            std::string name = readWord();
            std::string value;
            if (markup[place] == '=') {
                const std::size_t end = markup.find('\'', place + 2);
                value = markup.substr(place + 2, end - place - 2);
                place = end + 1;
            }
            tag.attributes.emplace_back(std::move(name), std::move(value));
        }
        tag.isShort = markup[place] == '/';
        place += tag.isShort ? 2 : 1;
        tags.push_back(std::move(tag));
    }
    return tags;
}

std::vector<std::size_t> Take(const TestTag& tag, HTML::OpenElements* open) {
    std::vector<std::size_t> matches;
    if (!tag.isEnd)
        open->Open(tag.name, tag.isShort, tag.attributes.size(), tag, &matches);
    for (std::size_t count = tag.isEnd ? open->CountClosedBy(tag.name) : 0; count > 0; --count)
        open->CloseInnermost();
    return matches;
}

std::string Join(const std::vector<std::size_t>& numbers) {
    std::string joined;
    for (const std::size_t number : numbers)
        joined += (joined.empty() ? "" : " ") + std::to_string(number);
    return joined;
}

std::string JoinNames(const HTML::OpenElements& open) {
    std::string joined;
    for (std::size_t i = 0; i < open.GetDepth(); ++i)
        joined += (joined.empty() ? "" : " ") + std::string(open.GetName(i));
    return joined;
}

}  // namespace Kestra::Test
