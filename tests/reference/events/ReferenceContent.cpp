#include "tests/reference/events/ReferenceContent.h"

#include <set>

namespace Kestra::Test {

namespace {

bool IsLetter(char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
}

bool EndsName(char byte) {
    return byte == '\t' || byte == '\n' || byte == '\f' || byte == '\r' || byte == ' ' || byte == '/' || byte == '>';
}

char Lower(char byte) {
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
}

std::string Lower(std::string text) {
    for (char& byte : text)
        byte = Lower(byte);
    return text;
}

}  // namespace

bool ReferenceContent::IsContentOf(const std::string& name) {
    static const std::set<std::string> NAMES = {"script", "style",   "textarea", "title",    "xmp",
                                                "iframe", "noembed", "noframes", "plaintext"};
    return NAMES.count(Lower(name)) != 0;
}

ReferenceContent::ReferenceContent(const std::string& elementName) : element(Lower(elementName)) {}

bool ReferenceContent::Take(char byte) {
    ++open;
    if (element != "plaintext") {
        while (!Step(byte)) {
        }
    }
    if (state == State::OVER)
        return true;
    bytes += byte;
    return false;
}

const std::string& ReferenceContent::GetBytes() const {
    return bytes;
}

std::size_t ReferenceContent::CountOpen() const {
    switch (state) {
        case State::DATA:
        case State::ESCAPED:
        case State::ESCAPED_DASH:
        case State::ESCAPED_DASH_DASH:
        case State::DOUBLE_ESCAPED:
        case State::DOUBLE_ESCAPED_DASH:
        case State::DOUBLE_ESCAPED_DASH_DASH:
            return 0;
        case State::END_NAME:
        case State::ESCAPED_END_NAME:
        case State::DOUBLE_ESCAPE_START:
        case State::DOUBLE_ESCAPE_END:
            return element.compare(0, name.size(), name) == 0 ? open : 0;
        case State::LESS_THAN:
        case State::END_OPEN:
        case State::ESCAPE_START:
        case State::ESCAPE_START_DASH:
        case State::ESCAPED_LESS_THAN:
        case State::ESCAPED_END_OPEN:
        case State::DOUBLE_ESCAPED_LESS_THAN:
        case State::OVER:
            break;
    }
    return open;
}

/// The byte is taken.
bool ReferenceContent::GoTo(State next) {
    state = next;
    return true;
}

/// It is not yet.
bool ReferenceContent::LookAgain(State next) {
    state = next;
    return false;
}

/// In the name of an end tag.
bool ReferenceContent::StepName(char byte, State otherwise) {
    if (IsLetter(byte)) {
        name += Lower(byte);
        return true;
    }
    return EndsName(byte) && name == element ? GoTo(State::OVER) : LookAgain(otherwise);
}

/// In a name that begins or ends the double escaped state.
bool ReferenceContent::StepDoubleName(char byte, State whenScript, State otherwise) {
    if (IsLetter(byte)) {
        name += Lower(byte);
        return true;
    }
    if (EndsName(byte))
        return GoTo(name == "script" ? whenScript : otherwise);
    return LookAgain(otherwise);
}

/// After so many dashes of an escaped part.
bool ReferenceContent::StepDash(char byte, bool isDouble, int dashes) {
    if (byte == '<') {
        open = 1;
        return GoTo(isDouble ? State::DOUBLE_ESCAPED_LESS_THAN : State::ESCAPED_LESS_THAN);
    }
    if (byte == '>' && dashes == 2)
        return GoTo(State::DATA);
    if (byte != '-')
        return GoTo(isDouble ? State::DOUBLE_ESCAPED : State::ESCAPED);
    if (dashes == 0)
        return GoTo(isDouble ? State::DOUBLE_ESCAPED_DASH : State::ESCAPED_DASH);
    return GoTo(isDouble ? State::DOUBLE_ESCAPED_DASH_DASH : State::ESCAPED_DASH_DASH);
}

/// @return false when the byte is to be looked at again in the new state
bool ReferenceContent::Step(char byte) {
    switch (state) {
        case State::DATA:
            open = 1;
            return GoTo(byte == '<' ? State::LESS_THAN : State::DATA);
        case State::LESS_THAN:
            if (byte == '/')
                return GoTo(State::END_OPEN);
            if (byte == '!' && element == "script")
                return GoTo(State::ESCAPE_START);
            return LookAgain(State::DATA);
        case State::END_OPEN:
            name.clear();
            return LookAgain(IsLetter(byte) ? State::END_NAME : State::DATA);
        case State::END_NAME:
            return StepName(byte, State::DATA);
        case State::ESCAPE_START:
            return byte == '-' ? GoTo(State::ESCAPE_START_DASH) : LookAgain(State::DATA);
        case State::ESCAPE_START_DASH:
            return byte == '-' ? GoTo(State::ESCAPED_DASH_DASH) : LookAgain(State::DATA);
        case State::ESCAPED:
            return StepDash(byte, false, 0);
        case State::ESCAPED_DASH:
            return StepDash(byte, false, 1);
        case State::ESCAPED_DASH_DASH:
            return StepDash(byte, false, 2);
        case State::ESCAPED_LESS_THAN:
            name.clear();
            if (byte == '/')
                return GoTo(State::ESCAPED_END_OPEN);
            return LookAgain(IsLetter(byte) ? State::DOUBLE_ESCAPE_START : State::ESCAPED);
        case State::ESCAPED_END_OPEN:
            return LookAgain(IsLetter(byte) ? State::ESCAPED_END_NAME : State::ESCAPED);
        case State::ESCAPED_END_NAME:
            return StepName(byte, State::ESCAPED);
        case State::DOUBLE_ESCAPE_START:
            return StepDoubleName(byte, State::DOUBLE_ESCAPED, State::ESCAPED);
        case State::DOUBLE_ESCAPED:
            return StepDash(byte, true, 0);
        case State::DOUBLE_ESCAPED_DASH:
            return StepDash(byte, true, 1);
        case State::DOUBLE_ESCAPED_DASH_DASH:
            return StepDash(byte, true, 2);
        case State::DOUBLE_ESCAPED_LESS_THAN:
            name.clear();
            return byte == '/' ? GoTo(State::DOUBLE_ESCAPE_END) : LookAgain(State::DOUBLE_ESCAPED);
        case State::DOUBLE_ESCAPE_END:
            return StepDoubleName(byte, State::ESCAPED, State::DOUBLE_ESCAPED);
        case State::OVER:
            break;
    }
    return true;
}

}  // namespace Kestra::Test
