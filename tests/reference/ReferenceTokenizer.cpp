#include "tests/reference/ReferenceTokenizer.h"

#include <algorithm>

#include "platform/CharSet.h"
#include "platform/Characters.h"
#include "tests/reference/ReferenceReader.h"

namespace Kestra::Test {
namespace {

using Kind = ReferenceStretch::Kind;

constexpr std::uint32_t MALFORMED = 11;
constexpr std::uint32_t UNTERMINATED = 16;

constexpr char ESC = 27;

/// The elements whose content is text. Nothing ends the last one.
constexpr std::string_view CONTENT_ELEMENTS[] = {"script", "style",   "textarea", "title",    "xmp",
                                                 "iframe", "noembed", "noframes", "plaintext"};

bool IsBlankOfBrowsers(char character) {
    return character == ' ' || character == '\t' || character == '\n' || character == '\f' || character == '\r';
}

std::string UpToSlash(const std::string& name) {
    return name.substr(0, name.find('/'));
}

/// The element whose content follows a tag, in lower case, or nothing.
std::string ContentElement(const ReferenceStartTag& tag) {
    if (!tag.prefix.empty())
        return {};
    if (tag.name.find('/') == std::string::npos) {
        const std::string& after = tag.attributes.empty() ? tag.suffix : tag.attributes.front().prefix;
        if (after.empty() ? !tag.attributes.empty() : !IsBlankOfBrowsers(after.front()))
            return {};
    }
    for (const std::string_view element : CONTENT_ELEMENTS) {
        if (ReferenceSameWord(UpToSlash(tag.name), element))
            return std::string(element);
    }
    return {};
}

std::vector<std::string> Split(const std::string& text, char separator) {
    std::vector<std::string> parts(1);
    for (const char character : text) {
        if (character == separator)
            parts.emplace_back();
        else
            parts.back() += character;
    }
    return parts;
}

std::string WithoutBlanksAround(std::string text) {
    while (!text.empty() && text.front() == ' ')
        text.erase(text.begin());
    while (!text.empty() && text.back() == ' ')
        text.pop_back();
    return text;
}

/// The charset that the `content` of a `meta` tag names; empty when it names none.
std::string CharsetNameInContent(const std::string& content) {
    for (const std::string& piece : Split(content, ';')) {
        const std::vector<std::string> parts = Split(WithoutBlanksAround(piece), '=');
        if (parts.size() == 2 && ReferenceSameWord(WithoutBlanksAround(parts[0]), "charset"))
            return WithoutBlanksAround(parts[1]);
    }
    return {};
}

std::uint32_t CharsetOfMeta(const ReferenceAttributes& attributes) {
    std::string charsetValue;
    std::string contentValue;
    for (const ReferenceAttribute& attribute : attributes) {
        if (ReferenceSameWord(attribute.name, "charset"))
            charsetValue = attribute.value;
        if (ReferenceSameWord(attribute.name, "content"))
            contentValue = attribute.value;
    }
    const std::string name = charsetValue.empty() ? CharsetNameInContent(contentValue) : charsetValue;
    WideString wideName;
    for (const char character : name)
        wideName += static_cast<WideChar>(static_cast<unsigned char>(character));
    return StringNS::CharSet::GetCharSetCode(wideName);
}

/// One pass over one document.
class ReferenceTokenizer {
public:
    ReferenceTokenizer(std::string_view text, const ReferenceSettings& settings);

    ReferenceRun Run();

private:
    bool IsIso2022() const;
    void DeliverText();
    void AddStretch(Kind kind, std::size_t begin, const std::string& copy);

    void ReadText();
    void ReadContent();
    bool NameStandsAt(std::size_t offset, std::string_view name) const;
    void ReadScriptComment(std::size_t begin, bool lineComment);
    void ReadString(std::size_t begin, char quote);
    void ReadMarkup(std::size_t begin);
    void ReadSection(std::size_t begin, ReferenceMarkup markup, const std::string& word);
    void ReadJunk();

    void AcceptStartTag(std::size_t begin);
    void AcceptEndTag(std::size_t begin);
    void AcceptInstruction(std::size_t begin);
    void AcceptDeclaration(std::size_t begin);
    void DiscoverCharset(const ReferenceStartTag& tag);

    bool IsAccepted(ReferenceOutcome outcome, std::size_t begin, bool scriptComment);
    void CountLines();

    std::string document;
    ReferenceReader reader;
    ReferenceRun run;
    std::uint32_t charset;
    bool discoverCharset;
    bool canReadBack;
    bool scriptsAsText;
    std::string contentElement;  ///< the element in whose content the reader is
    bool tellsLineComments;
    bool inScript = false;
    bool inStyle = false;
    bool inJunk = false;   ///< after a construct that failed, up to the next "<"
    bool stopped = false;  ///< a construct failed or stayed open, and could not be read again
    std::string pendingText;
    std::size_t textBegin = 0;
};

ReferenceTokenizer::ReferenceTokenizer(std::string_view text, const ReferenceSettings& settings)
    : document(text),
      reader(text),
      charset(settings.charset == StringNS::CharSet::UTF7 ? StringNS::CharSet::WINDOWS_1252 : settings.charset),
      discoverCharset(settings.charset == 0),
      canReadBack(settings.canReadBack),
      scriptsAsText(settings.scriptsAsText),
      tellsLineComments(settings.tellsLineComments) {}

ReferenceRun ReferenceTokenizer::Run() {
    run.trace.push_back("start-parsing");
    run.trace.push_back("charset(" + std::to_string(charset) + ")");
    while (!stopped && !reader.AtEnd()) {
        if (inJunk)
            ReadJunk();
        else if (!contentElement.empty())
            ReadContent();
        else
            ReadText();
    }
    CountLines();
    if (!stopped) {
        DeliverText();
        run.trace.push_back("end-parsing");
    }
    for (const ReferenceStretch& stretch : run.stretches)
        run.copy += stretch.copy;
    return run;
}

bool ReferenceTokenizer::IsIso2022() const {
    return charset == 50221 || charset == 50222 || charset == 50225;
}

void ReferenceTokenizer::AddStretch(Kind kind, std::size_t begin, const std::string& copy) {
    ReferenceStretch stretch;
    stretch.kind = kind;
    stretch.begin = begin;
    stretch.end = reader.Position();
    stretch.tailBegin = stretch.end;
    stretch.copy = copy;
    run.stretches.push_back(stretch);
}

/// A text token of what has been pending. It stands for as many characters of the input.
void ReferenceTokenizer::DeliverText() {
    if (pendingText.empty())
        return;
    run.trace.push_back(ReferenceTrace("text", pendingText));
    AddStretch(Kind::TEXT, textBegin, pendingText);
    run.stretches.back().end = textBegin + pendingText.size();
    run.stretches.back().tailBegin = run.stretches.back().end;
    pendingText.clear();
}

/// False when the construct that began at `begin` failed or stayed open. It has become junk then,
/// or the parse has stopped.
bool ReferenceTokenizer::IsAccepted(ReferenceOutcome outcome, std::size_t begin, bool scriptComment) {
    if (outcome == ReferenceOutcome::COMPLETE)
        return true;
    if (canReadBack) {
        const std::string junk = document.substr(begin, reader.Position() - begin);
        run.trace.push_back(ReferenceTrace("junk", junk));
        AddStretch(Kind::JUNK, begin, junk);
        run.stretches.back().failedScriptComment = scriptComment;
        inJunk = true;
    } else {
        stopped = true;
        run.parseResult = outcome == ReferenceOutcome::MALFORMED ? MALFORMED : 0;
        run.endResult = UNTERMINATED;  // the end finds the same construct still open
    }
    return false;
}

/// Text up to a construct, and that construct.
void ReferenceTokenizer::ReadText() {
    if (pendingText.empty())
        textBegin = reader.Position();
    const bool inCode = inScript || inStyle;
    while (!reader.AtEnd()) {
        const std::size_t begin = reader.Position();
        const char character = reader.Peek();
        if (character == '<') {
            DeliverText();
            reader.Take();
            ReadMarkup(begin);
            return;
        }
        if (inCode && (character == '\'' || character == '"')) {
            DeliverText();
            reader.Take();
            ReadString(begin, character);
            return;
        }
        if (inCode && character == '/') {
            reader.Take();
            const bool blockComment = reader.NextIs('*');
            const bool lineComment = inScript && reader.NextIs('/');
            if (blockComment || lineComment) {
                DeliverText();
                reader.Take();
                ReadScriptComment(begin, lineComment);
                return;
            }
            if (inScript && !reader.AtEnd()) {
                DeliverText();
                std::string expression;
                reader.ReadRegularExpression(&expression);
                run.trace.push_back(ReferenceTrace("text", expression));
                AddStretch(Kind::REGULAR_EXPRESSION, begin, expression);
                return;
            }
            pendingText += character;
            continue;
        }
        reader.Take();
        if (character == ESC && IsIso2022())
            reader.ReadEscapeRun(&pendingText);
        else
            pendingText += character;
    }
}

/// Whether a name stands there, and what may follow one.
bool ReferenceTokenizer::NameStandsAt(std::size_t offset, std::string_view name) const {
    if (offset + name.size() >= document.size() ||
        !ReferenceSameWord(std::string_view(document).substr(offset, name.size()), name))
        return false;
    const char next = document[offset + name.size()];
    return next == '>' || next == '/' || IsBlankOfBrowsers(next);
}

/// The content of an element up to its end tag, by the states that a browser goes through.
void ReferenceTokenizer::ReadContent() {
    enum { DATA, ESCAPED, TWICE_ESCAPED } depth = DATA;
    const bool isScript = contentElement == "script";
    unsigned dashes = 0;  // right before the next character, in an escaped part
    textBegin = reader.Position();
    while (!reader.AtEnd()) {
        const std::size_t at = reader.Position();
        const char character = reader.Peek();
        if (character == ESC && IsIso2022()) {
            reader.Take();
            reader.ReadEscapeRun(&pendingText);
            dashes = 0;
            continue;
        }
        if (character == '<' && contentElement != "plaintext") {
            const bool isEndTag =
                at + 1 < document.size() && document[at + 1] == '/' && NameStandsAt(at + 2, contentElement);
            if (isEndTag && depth != TWICE_ESCAPED) {
                contentElement.clear();
                DeliverText();
                reader.Take();
                ReadMarkup(at);
                return;
            }
            if (isEndTag)
                depth = ESCAPED;
            else if (isScript && depth == ESCAPED && NameStandsAt(at + 1, "script"))
                depth = TWICE_ESCAPED;
        }
        if (isScript && depth == DATA && std::string_view(document).substr(at, 4) == "<!--") {
            depth = ESCAPED;
            dashes = 2;
            for (int i = 0; i < 4; ++i)
                pendingText += reader.Take();
            continue;
        }
        if (character == '>' && dashes >= 2)
            depth = DATA;
        dashes = character == '-' && depth != DATA ? dashes + 1 : 0;
        pendingText += reader.Take();
    }
}

void ReferenceTokenizer::ReadString(std::size_t begin, char quote) {
    std::string text;
    if (!IsAccepted(reader.ReadQuoted(quote, true, IsIso2022(), &text), begin, false))
        return;
    run.trace.push_back(ReferenceTrace(quote == '"' ? "d-string" : "s-string", text));
    AddStretch(Kind::STRING, begin, quote + text + quote);
}

void ReferenceTokenizer::ReadScriptComment(std::size_t begin, bool lineComment) {
    std::string text;
    if (!lineComment) {
        if (!IsAccepted(reader.ReadBlockComment(&text), begin, true))
            return;
        run.trace.push_back(ReferenceTrace("c-comment", text));
        AddStretch(Kind::SCRIPT_COMMENT, begin, "/*" + text + "*/");
        return;
    }
    bool interrupted = false;
    ReferenceMarkup markup = ReferenceMarkup::COMMENT;
    std::string word;
    if (!IsAccepted(reader.ReadLineComment(&text, &interrupted, &markup, &word), begin, true))
        return;
    if (tellsLineComments)
        run.trace.push_back(ReferenceTrace("cpp-comment", text));
    AddStretch(Kind::SCRIPT_COMMENT, begin, "//" + text);
    const std::size_t end = begin + 2 + text.size();
    run.stretches.back().end = end;
    run.stretches.back().tailBegin = end;
    if (interrupted)
        ReadSection(end, markup, word);
}

/// From after the "<" at `begin`.
void ReferenceTokenizer::ReadMarkup(std::size_t begin) {
    ReferenceMarkup markup = ReferenceMarkup::START_TAG;
    std::string word;
    if (!IsAccepted(reader.ReadMarkupOpener(&markup, &word), begin, false))
        return;
    const bool inCode = inScript || inStyle;
    const bool isTextInCode = markup == ReferenceMarkup::START_TAG || markup == ReferenceMarkup::DECLARATION ||
                              markup == ReferenceMarkup::INSTRUCTION;
    if (inCode && isTextInCode) {
        textBegin = begin;
        pendingText = document.substr(begin, reader.Position() - begin);
        return;
    }
    switch (markup) {
        case ReferenceMarkup::START_TAG:
            AcceptStartTag(begin);
            break;
        case ReferenceMarkup::END_TAG:
            AcceptEndTag(begin);
            break;
        case ReferenceMarkup::INSTRUCTION:
            AcceptInstruction(begin);
            break;
        case ReferenceMarkup::DECLARATION:
            AcceptDeclaration(begin);
            break;
        case ReferenceMarkup::COMMENT:
        case ReferenceMarkup::CDATA:
        case ReferenceMarkup::CONDITIONAL:
            ReadSection(begin, markup, word);
            break;
    }
}

/// The constructs that never fail, from after the opener that began at `begin`.
void ReferenceTokenizer::ReadSection(std::size_t begin, ReferenceMarkup markup, const std::string& word) {
    if (markup == ReferenceMarkup::COMMENT) {
        ReferenceComment comment;
        reader.ReadComment(&comment);
        run.trace.push_back(ReferenceTrace(comment));
        AddStretch(Kind::COMMENT, begin, ReferenceCopy(comment));
    } else if (markup == ReferenceMarkup::CDATA) {
        ReferenceCDATA section;
        section.keyword = word;
        reader.ReadCDATA(&section);
        run.trace.push_back(ReferenceTrace(section));
        AddStretch(Kind::CDATA, begin, ReferenceCopy(section));
    } else {
        ReferenceConditional section;
        section.keyword = word;
        std::size_t tailBegin = 0;
        reader.ReadConditional(&section, &tailBegin);
        run.trace.push_back(ReferenceTrace(section));
        AddStretch(Kind::CONDITIONAL, begin, ReferenceCopy(section));
        run.stretches.back().tailBegin = tailBegin;
        run.stretches.back().closed = section.tagClosed;
    }
}

/// After a failed construct: everything up to the next "<", and the markup there.
void ReferenceTokenizer::ReadJunk() {
    const std::size_t begin = reader.Position();
    const std::string junk = reader.ReadUntil("<");
    if (!junk.empty()) {
        run.trace.push_back(ReferenceTrace("junk", junk));
        AddStretch(Kind::JUNK, begin, junk);
    }
    if (reader.AtEnd())
        return;
    inJunk = false;
    const std::size_t markupBegin = reader.Position();
    reader.Take();
    ReadMarkup(markupBegin);
}

void ReferenceTokenizer::AcceptStartTag(std::size_t begin) {
    ReferenceStartTag tag;
    if (!IsAccepted(reader.ReadStartTag(IsIso2022(), &tag), begin, false))
        return;
    run.trace.push_back(ReferenceTrace(tag));
    AddStretch(Kind::TAG, begin, ReferenceCopy(tag));
    DiscoverCharset(tag);
    if (scriptsAsText) {
        contentElement = ContentElement(tag);
        if (contentElement == "script")
            run.trace.push_back("js-start");
        if (contentElement == "style")
            run.trace.push_back("css-start");
        return;
    }
    if (tag.isShort)
        return;
    if (ReferenceSameWord(tag.name, "script")) {
        run.trace.push_back("js-start");
        inScript = true;
    }
    if (ReferenceSameWord(tag.name, "style")) {
        run.trace.push_back("css-start");
        inStyle = true;
    }
}

void ReferenceTokenizer::AcceptEndTag(std::size_t begin) {
    ReferenceEndTag tag;
    if (!IsAccepted(reader.ReadEndTag(IsIso2022(), &tag), begin, false))
        return;
    const std::string name = scriptsAsText ? UpToSlash(tag.name) : tag.name;
    const bool isScript = ReferenceSameWord(name, "script");
    const bool isStyle = ReferenceSameWord(name, "style");
    if ((inScript && !isScript) || (inStyle && !isStyle)) {
        textBegin = begin;
        pendingText = ReferenceCopy(tag);
        return;
    }
    run.trace.push_back(ReferenceTrace(tag));
    AddStretch(Kind::TAG, begin, ReferenceCopy(tag));
    if (isScript) {
        run.trace.push_back("js-end");
        inScript = false;
    }
    if (isStyle) {
        run.trace.push_back("css-end");
        inStyle = false;
    }
}

void ReferenceTokenizer::AcceptInstruction(std::size_t begin) {
    ReferenceInstruction instruction;
    if (!IsAccepted(reader.ReadInstruction(IsIso2022(), &instruction), begin, false))
        return;
    run.trace.push_back(ReferenceTrace(instruction));
    AddStretch(Kind::INSTRUCTION, begin, ReferenceCopy(instruction));
    run.stretches.back().swapsSlashAndSpace = instruction.swapsSlashAndSpace;
}

void ReferenceTokenizer::AcceptDeclaration(std::size_t begin) {
    ReferenceDeclaration declaration;
    if (!IsAccepted(reader.ReadDeclaration(IsIso2022(), &declaration), begin, false))
        return;
    run.trace.push_back(ReferenceTrace(declaration));
    AddStretch(Kind::DECLARATION, begin, ReferenceCopy(declaration));
}

/// The first `meta` tag that names a known charset decides, when the document came without one.
void ReferenceTokenizer::DiscoverCharset(const ReferenceStartTag& tag) {
    if (!discoverCharset || !ReferenceSameWord(tag.name, "meta"))
        return;
    const std::uint32_t code = CharsetOfMeta(tag.attributes);
    if (code == StringNS::CharSet::UNKNOWN || code == StringNS::CharSet::UTF16_LE)
        return;
    charset = code;
    discoverCharset = false;
    run.trace.push_back("charset(" + std::to_string(code) + ")");
}

void ReferenceTokenizer::CountLines() {
    run.line = 1;
    run.column = 1;
    for (const char character : document.substr(0, reader.Position())) {
        run.column++;
        if (character == '\n') {
            run.line++;
            run.column = 1;
        }
    }
}

/// Where the piece that holds the byte at `offset` begins.
std::size_t PieceBegin(const std::vector<std::size_t>& cuts, std::size_t offset) {
    std::size_t begin = 0;
    for (const std::size_t cut : cuts) {
        if (cut <= offset)
            begin = std::max(begin, cut);
    }
    return begin;
}

}  // namespace

ReferenceRun ParseByReference(std::string_view document, const ReferenceSettings& settings) {
    return ReferenceTokenizer(document, settings).Run();
}

std::string CopyByReference(const ReferenceRun& run, std::string_view document, const std::vector<std::size_t>& cuts) {
    std::string copy;
    for (const ReferenceStretch& stretch : run.stretches) {
        if (stretch.kind == Kind::CONDITIONAL && stretch.closed) {
            const std::size_t close = stretch.end - 1;
            const std::size_t kept = std::max(stretch.tailBegin, PieceBegin(cuts, close));
            copy += document.substr(stretch.begin, stretch.tailBegin - stretch.begin);
            copy += document.substr(kept, stretch.end - kept);
        } else if (stretch.failedScriptComment && PieceBegin(cuts, stretch.begin + 1) == stretch.begin + 1) {
            copy += stretch.copy.substr(1);
        } else {
            copy += stretch.copy;
        }
    }
    return copy;
}

}  // namespace Kestra::Test
