#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// @file
/// The edits of a token, and of the elements that it opens and closes. Not installed.

namespace Kestra::HTML {

/// What is to be written somewhere, in the bytes of the document.
struct Insertion {
    static constexpr std::size_t NO_TEXT = std::string::npos;

    std::string bytes;
    std::size_t textBegin = NO_TEXT;  ///< of what was given as text first

    void Clear() {
        bytes.clear();
        textBegin = NO_TEXT;
    }
};

/// The edits that are made when an element ends.
struct ElementEdits {
    Insertion end;                    ///< of the content
    Insertion after;                  ///< the element
    std::uint32_t raw = 0;            ///< the `RawElement`s that `end` is written into
    std::uint64_t removalSeries = 0;  ///< the one in which the content began to be left out
    bool hasNoContent = false;        ///< its content is left out, unless its series is over
    bool hasNoEndTag = false;
    bool isRemoved = false;  ///< the whole element

    void Clear() {
        end.Clear();
        after.Clear();
        raw = 0;
        removalSeries = 0;
        hasNoContent = hasNoEndTag = isRemoved = false;
    }
    bool IsEmpty() const {
        return end.bytes.empty() && after.bytes.empty() && !hasNoContent && !hasNoEndTag && !isRemoved;
    }
};

struct TokenEdits {
    Insertion before;
    bool hasBody = false;
    Insertion body;  ///< in place of the token
    Insertion after;
    ElementEdits element;               ///< of the one that the token opens
    std::vector<ElementEdits> closing;  ///< of those closed elements that have edits, innermost first
    bool closesEdited = false;          ///< the last of them is the element of the end tag
    bool isEdited = false;              ///< there are edits

    void Clear() {
        before.Clear();
        body.Clear();
        after.Clear();
        hasBody = false;
        element.Clear();
        closing.clear();
        closesEdited = false;
        isEdited = false;
    }
};

}  // namespace Kestra::HTML
