#pragma once

#include <cstddef>
#include <string>

namespace Kestra::Test {

/// Reads the content of an element that has no markup, one byte at a time, with the states of the
/// tokenizer of the HTML standard.
class ReferenceContent {
public:
    /// Whether an element has such a content.
    /// @param name  in any case
    static bool IsContentOf(const std::string& name);

    ReferenceContent() = default;
    explicit ReferenceContent(const std::string& name);

    /// Takes the next byte, unless the element's end tag stands before it, to which it belongs.
    /// @return true when it does: the end of the bytes taken is "</" and the name
    bool Take(char byte);

    /// All that was taken.
    const std::string& GetBytes() const;

    /// How many bytes at the end of it may begin something that is more than content.
    std::size_t CountOpen() const;

private:
    enum class State {
        DATA,
        LESS_THAN,
        END_OPEN,
        END_NAME,
        ESCAPE_START,
        ESCAPE_START_DASH,
        ESCAPED,
        ESCAPED_DASH,
        ESCAPED_DASH_DASH,
        ESCAPED_LESS_THAN,
        ESCAPED_END_OPEN,
        ESCAPED_END_NAME,
        DOUBLE_ESCAPE_START,
        DOUBLE_ESCAPED,
        DOUBLE_ESCAPED_DASH,
        DOUBLE_ESCAPED_DASH_DASH,
        DOUBLE_ESCAPED_LESS_THAN,
        DOUBLE_ESCAPE_END,
        OVER,
    };

    bool GoTo(State next);
    bool LookAgain(State next);
    bool Step(char byte);
    bool StepName(char byte, State otherwise);
    bool StepDoubleName(char byte, State whenScript, State otherwise);
    bool StepDash(char byte, bool isDouble, int dashes);

    std::string element;  ///< in lower case
    std::string bytes;
    std::string name;      ///< of a tag, as far as it is read, in lower case
    std::size_t open = 0;  ///< bytes from the last "<" on
    State state = State::DATA;
};

}  // namespace Kestra::Test
