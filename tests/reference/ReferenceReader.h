#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "tests/reference/ReferenceRecords.h"

namespace Kestra::Test {

/// How far reading a construct came.
enum class ReferenceOutcome {
    COMPLETE,
    OPEN,      ///< the document ended inside it
    MALFORMED  ///< the character at the reader's position cannot stand there
};

/// What follows a "<".
enum class ReferenceMarkup { START_TAG, END_TAG, INSTRUCTION, DECLARATION, COMMENT, CDATA, CONDITIONAL };

/// A place in a document, and what can be read from there on. Nothing is ever skipped: what is
/// consumed is in some string.
///
/// A name, a run of white space or an unquoted value is over only where another character stands:
/// at the end of the document, whatever contains it is open.
class ReferenceReader {
public:
    explicit ReferenceReader(std::string_view text);

    std::size_t Position() const;
    bool AtEnd() const;
    char Peek() const;  ///< the next character; there must be one
    char Take();        ///< consumes it

    bool NextIs(char character) const;
    bool TakeIf(char character);

    std::string ReadWhile(bool (*belongs)(char));
    std::string ReadUntil(std::string_view stops);  ///< up to one of the characters, or to the end
    std::string ReadWhiteSpace();
    std::string ReadTagName();  ///< "/" belongs to it, "<", "[" and "]" do not

    /// From after the opening quote to after the closing one.
    ReferenceOutcome ReadQuoted(char quote, bool escapes, bool iso2022, std::string* text);

    /// From after an ESC. Adds everything to `text`, the ESC included. False when the document
    /// ended inside.
    bool ReadEscapeRun(std::string* text);

    /// From after the opening slash, which is added to `text`, up to the character that ends the
    /// expression.
    void ReadRegularExpression(std::string* text);

    /// White space and then a quoted string, an unquoted value, or nothing before ">". An empty
    /// unquoted value is complete as well.
    ReferenceOutcome ReadValue(bool iso2022, ReferenceItem* item);

    /// One attribute, with or without a value; its name may be empty.
    /// @param prefix  white space that has been read before; null to read it here.
    ReferenceOutcome ReadAttribute(const std::string* prefix, bool iso2022, ReferenceAttribute* attribute);

    /// From after "<" to where the construct's own reading begins.
    /// @param word  gets the word after "<![".
    ReferenceOutcome ReadMarkupOpener(ReferenceMarkup* markup, std::string* word);

    ReferenceOutcome ReadStartTag(bool iso2022, ReferenceStartTag* tag);
    ReferenceOutcome ReadEndTag(bool iso2022, ReferenceEndTag* tag);
    ReferenceOutcome ReadInstruction(bool iso2022, ReferenceInstruction* instruction);
    ReferenceOutcome ReadDeclaration(bool iso2022, ReferenceDeclaration* declaration);
    void ReadComment(ReferenceComment* comment);
    void ReadCDATA(ReferenceCDATA* section);
    void ReadConditional(ReferenceConditional* section, std::size_t* tailBegin);  ///< `tailBegin`: see ReferenceStretch
    ReferenceOutcome ReadBlockComment(std::string* text);

    /// From after "//" to the line end, or to after the opener of the section that interrupts it.
    /// @param interrupted  set when a section interrupts it, which `markup` and `word` name.
    ReferenceOutcome ReadLineComment(std::string* text, bool* interrupted, ReferenceMarkup* markup, std::string* word);

private:
    ReferenceOutcome ReadAttributeList(bool everyRestartKeepsIso2022, bool iso2022, ReferenceAttributes* attributes,
                                       std::string* suffix, bool* slash);
    ReferenceOutcome ReadXMLDeclaration(bool iso2022, ReferenceInstruction* instruction);
    ReferenceOutcome ReadFreeStyle(bool iso2022, ReferenceInstruction* instruction);

    std::string document;
    std::size_t position = 0;
};

/// ASCII letters without regard to case.
bool ReferenceSameWord(std::string_view left, std::string_view right);

}  // namespace Kestra::Test
