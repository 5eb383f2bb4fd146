#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "html/rewrite/OpenElements.h"
#include "html/rewrite/Selectors.h"

namespace Kestra::Test {

/// A tag as the tests write it, and what it answers to selectors.
struct TestTag final : HTML::TagAttributes {
    bool Find(std::string_view wanted, std::string* value) const override;

    std::string name;
    bool isEnd = false;
    bool isShort = false;
    std::vector<std::pair<std::string, std::string>> attributes;
    mutable std::vector<std::string> questions;  ///< what was asked: a name, with "=" where the value was
};

/// Reads tags one after another: "<a id='x' class='y z' hidden>", "<b/>", "</a>". Values always
/// have apostrophes.
std::vector<TestTag> ReadTags(std::string_view markup);

/// Opens or closes elements.
/// @return the matches of a start tag
std::vector<std::size_t> Take(const TestTag& tag, HTML::OpenElements* open);

/// Numbers with blanks between them.
std::string Join(const std::vector<std::size_t>& numbers);

/// Names of the open elements, outermost first, with blanks between them.
std::string JoinNames(const HTML::OpenElements& open);

}  // namespace Kestra::Test
