#include "tests/reference/events/StatelessReference.h"

#include <optional>

#include "tests/reference/events/ReferenceContent.h"
#include "tests/reference/events/StatelessReferenceEvents.h"

namespace Kestra::Test {
namespace {

enum class TagKind { START, END, ENTITY, EXTERN };

/// Where the next byte is. Between two pieces it is all that is known of the place.
enum class State {
    TEXT,
    OPENER,       ///< after "<"
    DECLARATION,  ///< after "<!"
    DASH,         ///< after "<!-"
    COMMENT,
    COMMENT_DASH,    ///< after "-" in a comment
    COMMENT_DASHES,  ///< after "--" in a comment
    BEFORE_NAME,
    NAME,
    END_TAG_CLOSE,  ///< after the name of an end tag
    BEFORE_ATTRIBUTE,
    ATTRIBUTE_NAME,
    AFTER_ATTRIBUTE_NAME,
    BAD_ATTRIBUTE,
    BEFORE_VALUE,
    UNQUOTED_VALUE,
    QUOTED_VALUE,
    CLOSED_VALUE,  ///< after the closing quote
    AFTER_TOKEN,
    TAG_CLOSE,   ///< at the mark that ends the tag
    LAST_BRACE,  ///< only ">" can follow
    SCRIPT,
    SCRIPT_BLOCK_COMMENT,
    SCRIPT_LINE_COMMENT,
    SCRIPT_STRING,
    SCRIPT_OPENER,  ///< after "<" in a script
    STYLE,
    STYLE_OPENER,  ///< after "<" in a style
    CONTENT,       ///< of an element, as text
    CONTENT_END,   ///< after the name of its end tag
};

/// What became of a byte: taken, to be looked at again in the new state, or refused with a result
/// code.
enum class Step : std::uint32_t { TAKEN = 0, AGAIN = 1, NO_NAME = 701, NO_CLOSE = 702, NO_CONSTRUCT = 703 };

struct Machine {
    State state = State::TEXT;
    TagKind kind = TagKind::START;
    bool entered = false;      ///< the last byte began a tag, a comment or a body, of which nothing has been read yet
    std::optional<char> last;  ///< the byte before the next one, in whichever piece it was
    std::uint64_t line = 1;
    std::uint64_t column = 1;
    bool afterNewline = false;
    std::uint32_t charset = 0;
    std::uint32_t flags = 1;

    std::string text;  ///< pending text, or the body of a script or style
    std::string comment;
    std::string identifier;
    std::string value;
    std::string bodyEnd;  ///< what may become "</script>" or "/style>"
    std::string tagName;
    ReferencePairs attributes;
    std::vector<std::string> tokens;
    char quote = 0;     ///< of the value or the script string
    char previous = 0;  ///< in a script comment or string
    bool selfClosing = false;

    bool scriptsAsText = false;
    bool isBrowsersName = false;  ///< nothing stands before the name, and browsers end it there too
    ReferenceContent content;
    std::size_t counted = 0;  ///< bytes of it, in line and column

    std::vector<std::string> trace;
};

bool IsWhiteSpace(char byte) {
    return byte == ' ' || byte == '\t' || byte == '\n' || byte == '\v' || byte == '\f' || byte == '\r';
}

bool StartsName(char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || byte == '_';
}

bool ContinuesName(char byte) {
    return StartsName(byte) || (byte >= '0' && byte <= '9') || byte == ':' || byte == '-';
}

// Three ways to take a byte: a mark counts one column, white space also counts lines, and content
// counts like white space and then one column more.

Step TakeMark(Machine* machine) {
    machine->column += 1;
    return Step::TAKEN;
}

Step TakeMark(Machine* machine, State next) {
    machine->state = next;
    return TakeMark(machine);
}

Step TakeSpace(Machine* machine, char byte) {
    if (byte != '\r' && byte != '\n') {
        machine->column += 1;
        machine->afterNewline = false;
    } else if (machine->afterNewline) {
        machine->afterNewline = false;  // the second break of a pair, whichever two they are
    } else {
        machine->line += 1;
        machine->column = 1;
        machine->afterNewline = true;
    }
    return Step::TAKEN;
}

Step TakeContent(Machine* machine, char byte) {
    TakeSpace(machine, byte);
    machine->column += 1;
    return Step::TAKEN;
}

Step Again(Machine* machine, State next) {
    machine->state = next;
    return Step::AGAIN;
}

bool EndsBrowsersName(char byte) {
    return byte == '/' || byte == '>' || (byte != '\v' && IsWhiteSpace(byte));
}

bool IsScriptOrStyle(const std::string& name) {
    return EqualsFolded(name, "script") || EqualsFolded(name, "style");
}

Step BeginTag(Machine* machine, TagKind kind) {
    machine->isBrowsersName = false;
    machine->kind = kind;
    machine->identifier.clear();
    machine->entered = true;
    return TakeMark(machine, State::BEFORE_NAME);
}

/// The byte is the first one of the name.
Step BeginTagHere(Machine* machine, TagKind kind) {
    machine->isBrowsersName = true;
    machine->kind = kind;
    machine->identifier.clear();
    return Again(machine, State::BEFORE_NAME);
}

void FinishStartTag(Machine* machine) {
    const bool hasContent =
        machine->scriptsAsText && machine->isBrowsersName && ReferenceContent::IsContentOf(machine->tagName);
    if (hasContent) {
        machine->content = ReferenceContent(machine->tagName);
        machine->counted = 0;
        machine->entered = true;
    }
    if (hasContent && IsScriptOrStyle(machine->tagName)) {
        machine->state = State::CONTENT;
        return;
    }
    if (!machine->scriptsAsText && EqualsFolded(machine->tagName, "script")) {
        machine->state = State::SCRIPT;
        machine->entered = true;
        return;
    }
    if (!machine->scriptsAsText && EqualsFolded(machine->tagName, "style")) {
        machine->state = State::STYLE;
        machine->entered = true;
        return;
    }
    machine->charset = CharsetAfterStartTag(machine->tagName, machine->attributes, machine->charset, machine->flags);
    machine->trace.push_back(StartLine(machine->tagName, machine->attributes, machine->charset));
    if (machine->selfClosing && !hasContent)
        machine->trace.push_back(EndLine(machine->tagName));
    machine->state = hasContent ? State::CONTENT : State::TEXT;
}

void FinishTag(Machine* machine) {
    switch (machine->kind) {
        case TagKind::START:
            FinishStartTag(machine);
            return;
        case TagKind::END:
            machine->trace.push_back(EndLine(machine->tagName));
            break;
        case TagKind::ENTITY:
            machine->trace.push_back(EntityLine(machine->tagName, machine->tokens, machine->charset));
            break;
        case TagKind::EXTERN:
            machine->charset =
                CharsetAfterExternTag(machine->tagName, machine->attributes, machine->charset, machine->flags);
            machine->trace.push_back(ExternLine(machine->tagName, machine->attributes, machine->charset));
            break;
    }
    machine->state = State::TEXT;
}

void FinishComment(Machine* machine) {
    machine->trace.push_back(CommentLine(machine->comment, machine->charset));
    machine->state = State::TEXT;
}

Step StepText(Machine* machine, char byte) {
    if (byte != '<') {
        machine->text += byte;
        return TakeContent(machine, byte);
    }
    if (!machine->text.empty())
        machine->trace.push_back(TextLine(machine->text, machine->charset));
    machine->text.clear();
    return TakeMark(machine, State::OPENER);
}

Step StepOpener(Machine* machine, char byte) {
    if (byte == '?')
        return BeginTag(machine, TagKind::EXTERN);
    if (byte == '/')
        return BeginTag(machine, TagKind::END);
    if (byte == '!')
        return TakeMark(machine, State::DECLARATION);
    if (IsWhiteSpace(byte))
        return BeginTag(machine, TagKind::START);  // a line break here is no new line
    if (StartsName(byte))
        return BeginTagHere(machine, TagKind::START);
    return Step::NO_CONSTRUCT;
}

Step StepDeclaration(Machine* machine, char byte) {
    if (byte == '-')
        return TakeMark(machine, State::DASH);
    if (IsWhiteSpace(byte))
        return BeginTag(machine, TagKind::ENTITY);
    if (StartsName(byte))
        return BeginTagHere(machine, TagKind::ENTITY);
    return Step::NO_CONSTRUCT;
}

Step StepDash(Machine* machine, char byte) {
    if (byte != '-')
        return Step::NO_CONSTRUCT;
    machine->comment.clear();
    machine->entered = true;
    return TakeMark(machine, State::COMMENT);
}

Step StepComment(Machine* machine, char byte) {
    if (byte == '-')
        return TakeMark(machine, State::COMMENT_DASH);
    machine->comment += byte;
    return TakeMark(machine);
}

Step StepCommentDash(Machine* machine, char byte) {
    if (byte == '-')
        return TakeMark(machine, State::COMMENT_DASHES);
    machine->comment += byte;  // a single "-" is lost
    machine->state = State::COMMENT;
    return TakeContent(machine, byte);
}

Step StepCommentDashes(Machine* machine, char byte) {
    if (byte == '>') {
        FinishComment(machine);
        return TakeMark(machine);
    }
    machine->comment += "--";
    machine->comment += byte;
    machine->state = State::COMMENT;
    return TakeContent(machine, byte);
}

Step StepBeforeName(Machine* machine, char byte) {
    if (IsWhiteSpace(byte))
        return TakeSpace(machine, byte);
    if (!StartsName(byte))
        return Step::NO_NAME;
    return Again(machine, State::NAME);
}

Step StepName(Machine* machine, char byte) {
    if (ContinuesName(byte)) {
        machine->identifier += byte;
        return TakeMark(machine);
    }
    machine->tagName = machine->identifier;
    machine->isBrowsersName = machine->isBrowsersName && EndsBrowsersName(byte);
    machine->identifier.clear();
    machine->value.clear();
    switch (machine->kind) {
        case TagKind::END:
            return Again(machine, State::END_TAG_CLOSE);
        case TagKind::ENTITY:
            machine->tokens.clear();
            return Again(machine, State::BEFORE_VALUE);
        case TagKind::START:
        case TagKind::EXTERN:
            machine->attributes.clear();
            break;
    }
    return Again(machine, State::BEFORE_ATTRIBUTE);
}

Step StepEndTagClose(Machine* machine, char byte) {
    if (byte != '>')
        return Step::NO_CLOSE;
    FinishTag(machine);
    return TakeMark(machine);
}

Step StepBeforeAttribute(Machine* machine, char byte) {
    if (IsWhiteSpace(byte))
        return TakeSpace(machine, byte);
    if (StartsName(byte))
        return Again(machine, State::ATTRIBUTE_NAME);
    if (byte == '/' || byte == '>' || byte == '?')
        return Again(machine, State::TAG_CLOSE);
    return Again(machine, State::BAD_ATTRIBUTE);
}

Step StepBadAttribute(Machine* machine, char byte) {
    if (byte == '>')
        return Again(machine, State::TAG_CLOSE);
    return TakeMark(machine);
}

/// The attribute is complete; the byte belongs to what follows.
Step KeepAttribute(Machine* machine) {
    machine->attributes.push_back({machine->identifier, machine->value});
    machine->identifier.clear();
    machine->value.clear();
    return Again(machine, State::BEFORE_ATTRIBUTE);
}

Step StepAttributeName(Machine* machine, char byte) {
    if (!ContinuesName(byte))
        return Again(machine, State::AFTER_ATTRIBUTE_NAME);
    machine->identifier += byte;
    return TakeMark(machine);
}

Step StepAfterAttributeName(Machine* machine, char byte) {
    if (IsWhiteSpace(byte))
        return TakeSpace(machine, byte);
    if (byte != '=')
        return KeepAttribute(machine);
    return TakeMark(machine, State::BEFORE_VALUE);
}

Step StepBeforeValue(Machine* machine, char byte) {
    if (IsWhiteSpace(byte))
        return TakeSpace(machine, byte);
    if (byte != '\'' && byte != '"')
        return Again(machine, State::UNQUOTED_VALUE);
    machine->quote = byte;
    return TakeMark(machine, State::QUOTED_VALUE);
}

/// The value is complete; the byte belongs to what follows.
Step KeepValue(Machine* machine) {
    if (machine->kind != TagKind::ENTITY)
        return KeepAttribute(machine);
    machine->tokens.push_back(machine->value);
    machine->value.clear();
    return Again(machine, State::AFTER_TOKEN);
}

Step StepUnquotedValue(Machine* machine, char byte) {
    if (byte == '>' || IsWhiteSpace(byte))
        return KeepValue(machine);
    machine->value += byte;
    return TakeMark(machine);
}

Step StepQuotedValue(Machine* machine, char byte) {
    if (byte == machine->quote)
        return TakeMark(machine, State::CLOSED_VALUE);
    machine->value += byte;  // line breaks inside quotes are not counted
    return TakeMark(machine);
}

Step StepAfterToken(Machine* machine, char byte) {
    if (IsWhiteSpace(byte))
        return TakeSpace(machine, byte);
    if (byte == '/' || byte == '>')
        return Again(machine, State::TAG_CLOSE);
    return Again(machine, State::BEFORE_VALUE);
}

Step StepTagClose(Machine* machine, char byte) {
    if (machine->kind == TagKind::EXTERN) {
        if (byte == '?')
            return TakeMark(machine, State::LAST_BRACE);
        // An unquoted value, or the rest of a bad attribute, has taken the "?" with it.
        return machine->last == '?' ? Again(machine, State::LAST_BRACE) : Step::NO_CLOSE;
    }
    if (byte == '/') {
        machine->selfClosing = true;
        return TakeMark(machine, State::LAST_BRACE);
    }
    if (byte != '>')
        return Step::NO_CLOSE;
    machine->selfClosing = false;
    FinishTag(machine);
    return TakeMark(machine);
}

Step StepLastBrace(Machine* machine, char byte) {
    if (byte != '>')
        return Step::NO_CLOSE;
    FinishTag(machine);
    return TakeMark(machine);
}

Step OpenScriptString(Machine* machine, char byte) {
    machine->text += byte;
    machine->quote = byte;
    machine->previous = ' ';
    return TakeMark(machine, State::SCRIPT_STRING);
}

Step StepScript(Machine* machine, char byte) {
    const bool behindSlash = !machine->text.empty() && machine->text.back() == '/';
    if (byte == '<') {
        machine->bodyEnd.assign(1, '<');
        return TakeMark(machine, State::SCRIPT_OPENER);
    }
    if (byte == '/' && behindSlash) {
        machine->text.pop_back();
        return TakeMark(machine, State::SCRIPT_LINE_COMMENT);
    }
    if (byte == '*' && behindSlash) {
        machine->text.pop_back();
        machine->previous = ' ';
        return TakeMark(machine, State::SCRIPT_BLOCK_COMMENT);
    }
    if (byte == '\'' || byte == '"')
        return OpenScriptString(machine, byte);
    machine->text += byte;
    return TakeContent(machine, byte);
}

Step StepScriptBlockComment(Machine* machine, char byte) {
    if (byte == '/' && machine->previous == '*')
        return TakeMark(machine, State::SCRIPT);
    machine->previous = byte;
    return TakeMark(machine);
}

Step StepScriptLineComment(Machine* machine, char byte) {
    if (byte == '\r' || byte == '\n')
        return TakeMark(machine, State::SCRIPT);  // not a new line
    return TakeMark(machine);
}

Step StepScriptString(Machine* machine, char byte) {
    machine->text += byte;
    if (byte == machine->quote && machine->previous != '\\')
        return TakeMark(machine, State::SCRIPT);
    machine->previous = byte;
    return TakeMark(machine);
}

/// Takes one more byte of what may be the end of a script or style body.
Step StepBodyEnd(Machine* machine, char byte, const std::string& wanted, State body) {
    machine->bodyEnd += byte;
    if (!EqualsFolded(machine->bodyEnd, wanted.substr(0, machine->bodyEnd.size()))) {
        machine->text += machine->bodyEnd;
        machine->state = body;
    } else if (machine->bodyEnd.size() == wanted.size()) {
        machine->trace.push_back(body == State::SCRIPT
                                     ? ScriptLine(machine->attributes, machine->text, machine->charset)
                                     : StyleLine(machine->attributes, machine->text, machine->charset));
        machine->text.clear();
        machine->state = State::TEXT;
    }
    return TakeContent(machine, byte);
}

Step StepStyle(Machine* machine, char byte) {
    if (byte == '<') {
        machine->bodyEnd.clear();  // this "<" is stored nowhere
        return TakeMark(machine, State::STYLE_OPENER);
    }
    machine->text += byte;
    return TakeContent(machine, byte);
}

Step StepContent(Machine* machine, char byte) {
    const bool isOver = machine->content.Take(byte);
    const std::string& bytes = machine->content.GetBytes();
    const std::size_t endSize = machine->tagName.size() + 2;
    const std::size_t certain = bytes.size() - (isOver ? endSize : machine->content.CountOpen());
    for (; machine->counted < certain; ++machine->counted)
        TakeContent(machine, bytes[machine->counted]);
    if (!isOver)
        return Step::TAKEN;
    machine->text = bytes.substr(0, certain);
    machine->column += endSize;
    if (!IsScriptOrStyle(machine->tagName)) {
        if (certain > 0)
            machine->trace.push_back(TextLine(machine->text, machine->charset));
        machine->tagName = bytes.substr(certain + 2);
    }
    return Again(machine, State::CONTENT_END);
}

/// Whatever stands there is dropped.
Step StepContentEnd(Machine* machine, char byte) {
    if (byte != '>')
        return TakeSpace(machine, byte);
    if (EqualsFolded(machine->tagName, "script"))
        machine->trace.push_back(ScriptLine(machine->attributes, machine->text, machine->charset));
    else if (EqualsFolded(machine->tagName, "style"))
        machine->trace.push_back(StyleLine(machine->attributes, machine->text, machine->charset));
    else
        machine->trace.push_back(EndLine(machine->tagName));
    machine->text.clear();
    return TakeMark(machine, State::TEXT);
}

Step StepByte(Machine* machine, char byte) {
    switch (machine->state) {
        case State::TEXT:
            return StepText(machine, byte);
        case State::OPENER:
            return StepOpener(machine, byte);
        case State::DECLARATION:
            return StepDeclaration(machine, byte);
        case State::DASH:
            return StepDash(machine, byte);
        case State::COMMENT:
            return StepComment(machine, byte);
        case State::COMMENT_DASH:
            return StepCommentDash(machine, byte);
        case State::COMMENT_DASHES:
            return StepCommentDashes(machine, byte);
        case State::BEFORE_NAME:
            return StepBeforeName(machine, byte);
        case State::NAME:
            return StepName(machine, byte);
        case State::END_TAG_CLOSE:
            return StepEndTagClose(machine, byte);
        case State::BEFORE_ATTRIBUTE:
            return StepBeforeAttribute(machine, byte);
        case State::ATTRIBUTE_NAME:
            return StepAttributeName(machine, byte);
        case State::AFTER_ATTRIBUTE_NAME:
            return StepAfterAttributeName(machine, byte);
        case State::BAD_ATTRIBUTE:
            return StepBadAttribute(machine, byte);
        case State::BEFORE_VALUE:
            return StepBeforeValue(machine, byte);
        case State::UNQUOTED_VALUE:
            return StepUnquotedValue(machine, byte);
        case State::QUOTED_VALUE:
            return StepQuotedValue(machine, byte);
        case State::CLOSED_VALUE:
            return KeepValue(machine);
        case State::AFTER_TOKEN:
            return StepAfterToken(machine, byte);
        case State::TAG_CLOSE:
            return StepTagClose(machine, byte);
        case State::LAST_BRACE:
            return StepLastBrace(machine, byte);
        case State::SCRIPT:
            return StepScript(machine, byte);
        case State::SCRIPT_BLOCK_COMMENT:
            return StepScriptBlockComment(machine, byte);
        case State::SCRIPT_LINE_COMMENT:
            return StepScriptLineComment(machine, byte);
        case State::SCRIPT_STRING:
            return StepScriptString(machine, byte);
        case State::SCRIPT_OPENER:
            return StepBodyEnd(machine, byte, "</script>", State::SCRIPT);
        case State::STYLE:
            return StepStyle(machine, byte);
        case State::STYLE_OPENER:
            return StepBodyEnd(machine, byte, "/style>", State::STYLE);
        case State::CONTENT:
            return StepContent(machine, byte);
        case State::CONTENT_END:
            return StepContentEnd(machine, byte);
    }
    return Step::NO_CONSTRUCT;
}

/// What the end of a piece does, which is not nothing in five places.
/// @return 0 or 16, the result for the piece.
std::uint32_t EndPiece(Machine* machine) {
    if (machine->entered)
        return 0;
    switch (machine->state) {
        case State::TEXT:
        case State::OPENER:
        case State::DECLARATION:
        case State::DASH:
            return 0;
        case State::CONTENT:
            return IsScriptOrStyle(machine->tagName) ? 16 : 0;
        case State::COMMENT:
        case State::COMMENT_DASH:
        case State::COMMENT_DASHES:
            FinishComment(machine);  // pending dashes are lost
            return 0;
        case State::LAST_BRACE:
            FinishTag(machine);  // the ">" that follows is text, or part of a body
            return 0;
        case State::CLOSED_VALUE:
            machine->state = State::QUOTED_VALUE;  // the value runs on to the next quote of its kind
            return 16;
        case State::BAD_ATTRIBUTE:
            machine->state = State::BEFORE_ATTRIBUTE;
            return 16;
        case State::AFTER_TOKEN:
            machine->state = State::BEFORE_VALUE;  // a ">" that follows makes an empty token
            return 16;
        case State::BEFORE_NAME:
        case State::NAME:
        case State::END_TAG_CLOSE:
        case State::BEFORE_ATTRIBUTE:
        case State::ATTRIBUTE_NAME:
        case State::AFTER_ATTRIBUTE_NAME:
        case State::BEFORE_VALUE:
        case State::UNQUOTED_VALUE:
        case State::QUOTED_VALUE:
        case State::TAG_CLOSE:
        case State::SCRIPT:
        case State::SCRIPT_BLOCK_COMMENT:
        case State::SCRIPT_LINE_COMMENT:
        case State::SCRIPT_STRING:
        case State::SCRIPT_OPENER:
        case State::STYLE:
        case State::STYLE_OPENER:
        case State::CONTENT_END:
            break;
    }
    return 16;
}

std::uint32_t ParsePiece(Machine* machine, const std::string& piece) {
    if (piece.empty())
        return 0;
    for (const char byte : piece) {
        machine->entered = false;
        Step step = Step::AGAIN;
        while (step == Step::AGAIN)
            step = StepByte(machine, byte);
        if (step != Step::TAKEN)
            return static_cast<std::uint32_t>(step);
        machine->last = byte;
    }
    return EndPiece(machine);
}

}  // namespace

StatelessReferenceRun ParseStatelessByReference(const std::vector<std::string>& pieces, std::uint32_t charset,
                                                std::uint32_t flags, bool scriptsAsText) {
    Machine machine;
    machine.scriptsAsText = scriptsAsText;
    machine.charset = charset;
    machine.flags = flags;
    machine.trace.push_back("start-parsing");
    StatelessReferenceRun run;
    for (const std::string& piece : pieces) {
        run.parseResults.push_back(ParsePiece(&machine, piece));
        if (run.parseResults.back() != 0 && run.parseResults.back() != 16)
            break;
    }
    run.line = machine.line;
    run.column = machine.column;
    run.charset = machine.charset;
    run.trace = machine.trace;
    run.trace.push_back("stop-parsing");
    return run;
}

}  // namespace Kestra::Test
