#include "tests/reference/EditedDocument.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "html/rewrite/RewriteResults.h"

namespace Kestra::Test {

namespace {

using HTML::CONTENT_MARKUP;
using HTML::CONTENT_TEXT;
using HTML::RewriterElement;
using HTML::RewriterToken;

constexpr std::string_view TEXTS[] = {
    "text", "a b", " ", "\xE4\xF6", "x & y", "1 > 0\n", "&amp;", "(longer than a few characters)", "this &", "&am",
};
constexpr std::string_view COMMENTS[] = {"text", "a b", "", "x & y > z", "<b>", "\xE4\xF6"};
constexpr std::string_view NAMES[] = {"a", "p", "x-y", "B", "b", "td", "h1", "svg", "br", "Img"};
constexpr std::string_view RAW_NAMES[] = {"style", "Script", "xmp"};
constexpr std::string_view WORDS[] = {"href", "Class", "id", "data-x", "hidden", "q"};
constexpr std::string_view VALUES[] = {"v", "/path?x=1", "\xE9", "2"};
constexpr std::string_view QUOTED_VALUES[] = {"v", "", "two words", "a>b", "/x/", "&lt;=", "\xE9\xE8"};
constexpr std::string_view SPACES[] = {" ", "  ", "\n", "\t "};
constexpr std::string_view MARKUP[] = {"<i>", "", "<!--new-->", "x</i>y", "&copy;", "am", "&"};
constexpr std::string_view PLAIN[] = {"new", "a<b & c>", "p;", "#9", "  ", "", "&", "\xC3\xA4\xC3\xB6"};  // in UTF-8
constexpr std::string_view NEW_COMMENTS[] = {"new", "", "x & y > z", "<b>", "\xC3\xA4\xC3\xB6"};          // likewise

/// UTF-8 of characters up to U+00FF in the charset of the document.
std::string Encoded(std::string_view utf8) {
    std::string encoded;
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const auto byte = static_cast<unsigned char>(utf8[i]);
        encoded += byte < 0x80 ? utf8[i]
                               : static_cast<char>((byte & 3U) << 6 | (static_cast<unsigned char>(utf8[++i]) & 0x3FU));
    }
    return encoded;
}

/// What is written as a text.
std::string Escaped(std::string_view text) {
    std::string escaped;
    for (const char character : Encoded(text)) {
        if (character == '&')
            escaped += "&amp;";
        else if (character == '<')
            escaped += "&lt;";
        else if (character == '>')
            escaped += "&gt;";
        else
            escaped += character;
    }
    return escaped;
}

/// What is written as a value in some quotes.
std::string Escaped(std::string_view value, char quote) {
    std::string escaped;
    for (const char character : value) {
        if (character == '&')
            escaped += "&amp;";
        else if (character == quote)
            escaped += quote == '"' ? "&quot;" : "&#39;";
        else
            escaped += character;
    }
    return escaped;
}

std::string ToLower(std::string_view name) {
    std::string lower;
    for (const char character : name)
        lower += character >= 'A' && character <= 'Z' ? static_cast<char>(character + 32) : character;
    return lower;
}

/// Something that a host writes, and what it must be in the document.
struct Piece {
    std::string given;
    HTML::RewriteContent kind = CONTENT_TEXT;
    std::string written;
    bool isText = false;
};

using Pieces = std::vector<Piece>;

/// Writes a document token by token, and beside it what the edits do, in the order of the places.
class Maker {
public:
    Maker(std::uint64_t seed, EditsSeen* counters) : dice(seed), seen(counters) {}

    EditedDocument Make() {
        const std::size_t tokens = dice.Between(1, 16);
        bool wasText = false;
        for (std::size_t i = 0; i < tokens; ++i) {
            const std::size_t kind = dice.Below(wasText ? 7 : 9);
            wasText = kind >= 7;
            if (kind <= 2) {
                AddTag(dice.Pick(NAMES));
            } else if (kind <= 4) {
                AddEndTag();
            } else if (kind == 5) {
                AddComment();
            } else if (kind == 6) {
                AddRawElement();
            } else {
                const std::size_t begin = Size();
                document.bytes += dice.Pick(TEXTS);
                EditText(begin);
            }
        }
        while (!open.empty())
            End();
        return std::move(document);
    }

private:
    /// An attribute that stands in the document.
    struct Written {
        std::string name;
        std::size_t begin;
        std::size_t nameBegin;
        std::size_t nameEnd;
        std::size_t valueBegin;
        std::size_t end;
        char quote;  // 0 for none
        bool hasValue;
    };

    /// What was asked for an element, and what of it lies ahead.
    struct Element {
        std::string name;
        std::size_t contentBegin = 0;
        Pieces end;    // right before the end tag
        Pieces after;  // after the element
        bool hasNoContent = false;
        bool hasNoEndTag = false;
        bool isRemoved = false;
    };

    std::size_t Size() const {
        return document.bytes.size();
    }

    // ---------------------------------------------------------------------------------------------
    // splices

    /// In content that is left out nothing is written.
    void AddSplice(std::size_t begin, std::size_t end, std::string_view text, bool isText = false) {
        if (removals == 0)
            document.splices.push_back({begin, end, std::string(text), isText});
        else
            ++seen->inRemovedContent;
    }

    void Insert(std::size_t place, const Pieces& pieces) {
        for (const Piece& piece : pieces)
            AddSplice(place, place, piece.written, piece.isText);
    }

    void AddEdit(std::size_t begin, std::function<bool(RewriterToken)> edit) {
        document.edits.push_back({begin, std::move(edit), nullptr});
    }

    Piece MakePiece(bool isRaw) {
        Piece piece;
        piece.kind = dice.OneIn(2) ? CONTENT_MARKUP : CONTENT_TEXT;
        piece.given = piece.kind == CONTENT_MARKUP ? dice.Pick(MARKUP) : dice.Pick(PLAIN);
        if (isRaw && piece.given.find('!') != std::string::npos)
            piece.given = "x < y";  // no comment in a script
        piece.isText = piece.kind == CONTENT_TEXT && !isRaw;
        piece.written = piece.isText ? Escaped(piece.given) : Encoded(piece.given);
        return piece;
    }

    // ---------------------------------------------------------------------------------------------
    // elements

    bool IsInSvg() const {
        return std::any_of(open.begin(), open.end(), [](const Element& element) { return element.name == "svg"; });
    }

    void Begin(Element element) {
        removals += element.hasNoContent ? 1 : 0;
        element.contentBegin = Size();
        open.push_back(std::move(element));
    }

    /// Ends the innermost element here. What comes after it is written unless an end tag of its own
    /// comes first.
    Element End(bool hasEndTag = false) {
        Element element = std::move(open.back());
        open.pop_back();
        if (element.hasNoContent) {
            --removals;
            AddSplice(element.contentBegin, Size(), "");
        }
        Insert(Size(), element.end);
        if (!hasEndTag)
            Insert(Size(), element.after);
        return element;
    }

    /// All that is open inside the element ends before its end tag.
    void AddEndTag(std::string_view name, bool isEdited) {
        const std::string lower = ToLower(name);
        const std::size_t begin = Size();
        const bool isOpen =
            std::any_of(open.begin(), open.end(), [&](const Element& element) { return element.name == lower; });
        while (isOpen && open.back().name != lower)
            End();
        Element own;
        if (isOpen)
            own = End(true);
        document.bytes += "</" + std::string(name) + (dice.OneIn(4) ? " >" : ">");
        const std::size_t end = Size();
        const Piece piece = MakePiece(false);
        const std::size_t edit = isEdited ? dice.Below(8) : 7;
        if (edit == 0) {
            AddEdit(begin, [piece](RewriterToken token) { return token.InsertBefore(piece.given, piece.kind) == 0; });
            if (!own.isRemoved)
                Insert(begin, {piece});
        }
        if (own.hasNoEndTag)
            AddSplice(begin, end, "");
        else if (edit == 1)
            AddSplice(begin, end, piece.written, piece.isText);
        if (edit == 1)
            AddEdit(begin, [piece](RewriterToken token) { return token.Replace(piece.given, piece.kind) == 0; });
        Insert(end, own.after);
        if (edit == 2) {
            AddEdit(begin, [piece](RewriterToken token) { return token.InsertAfter(piece.given, piece.kind) == 0; });
            Insert(end, {piece});
        }
        if (edit <= 2)
            ++seen->ofTokens;
    }

    /// Mostly one of an open element.
    void AddEndTag() {
        if (open.empty() || dice.OneIn(4)) {
            AddEndTag(dice.Pick(NAMES), true);
            return;
        }
        const std::string name = open[dice.Below(open.size())].name;
        AddEndTag(dice.OneIn(4) ? std::string(1, static_cast<char>(name[0] - 32)) + name.substr(1) : name, true);
    }

    /// Asks for up to four things, and does them to the record of the element.
    /// @param hasContent  false when it has a start tag alone
    /// @param before      receives what comes before the start tag
    /// @param inside      receives what comes after the start tag, in the element
    /// @param instead     receives what takes the place of the start tag, if anything does
    /// @return what the host does
    std::function<bool(RewriterElement)> EditElement(bool hasContent, bool isRaw, Element* element, Pieces* before,
                                                     Pieces* inside, std::optional<Piece>* instead) {
        using Call = std::function<bool(RewriterElement)>;
        std::vector<Call> calls;
        for (std::size_t i = dice.Between(1, 4); i > 0; --i) {
            const std::size_t kind = dice.Below(8);
            const bool isInside = kind >= 2 && kind <= 4;
            Piece piece = MakePiece(isRaw && isInside);
            std::uint32_t answer = 0;
            if (isInside && !hasContent) {
                answer = HTML::REWRITE_NO_CONTENT;
            } else if (isInside && isRaw && dice.OneIn(4)) {
                piece.given = "a</" + element->name + " b";
                answer = HTML::REWRITE_ENDS_EARLY;
            }
            ++seen->ofElements[kind];
            seen->refused += answer != 0 ? 1 : 0;
            const bool isLost = answer != 0 || (isInside && element->isRemoved);
            const auto write = [&](auto method) {
                calls.push_back(
                    [=](RewriterElement edited) { return (edited.*method)(piece.given, piece.kind) == answer; });
            };
            using Method = std::uint32_t (RewriterElement::*)(std::string_view, HTML::RewriteContent);
            switch (kind) {
                case 0:
                    write(static_cast<Method>(&RewriterElement::InsertBefore));
                    before->push_back(piece);
                    break;
                case 1:
                    write(static_cast<Method>(&RewriterElement::InsertAfter));
                    element->after.push_back(piece);
                    break;
                case 2:
                    write(static_cast<Method>(&RewriterElement::Prepend));
                    if (!isLost)
                        inside->push_back(piece);
                    break;
                case 3:
                    write(static_cast<Method>(&RewriterElement::Append));
                    if (!isLost)
                        element->end.push_back(piece);
                    break;
                case 4:
                    write(static_cast<Method>(&RewriterElement::SetContent));
                    if (isLost)
                        break;
                    *inside = {piece};
                    element->end.clear();
                    element->hasNoContent = true;
                    break;
                case 5:
                case 6:
                    if (kind == 5) {
                        write(static_cast<Method>(&RewriterElement::Replace));
                        *instead = piece;
                    } else {
                        calls.push_back([](RewriterElement edited) { return edited.Remove() == 0; });
                        *instead = Piece();
                    }
                    inside->clear();
                    element->end.clear();
                    element->hasNoContent = element->hasNoEndTag = element->isRemoved = true;
                    break;
                default:
                    calls.push_back([](RewriterElement edited) { return edited.Unwrap() == 0; });
                    if (element->isRemoved)
                        break;
                    *instead = Piece();
                    element->hasNoEndTag = true;
                    break;
            }
        }
        return [calls](RewriterElement edited) {
            return std::all_of(calls.begin(), calls.end(), [&](const Call& call) { return call(edited); });
        };
    }

    // ---------------------------------------------------------------------------------------------
    // tokens

    void AddTag(std::string_view tagName, bool isRaw = false) {
        std::string& bytes = document.bytes;
        const std::size_t begin = bytes.size();
        bytes += "<" + std::string(tagName);
        std::vector<Written> attributes;
        for (std::size_t i = dice.Below(5); i > 0; --i)
            attributes.push_back(AddAttribute(i));
        const std::size_t listEnd = bytes.size();
        Element element;
        element.name = ToLower(tagName);
        // An empty svg, and a short tag of a script, are another matter.
        constexpr std::string_view ENDS[] = {">", ">", " >", " />"};
        const std::string_view tagEnd = isRaw || element.name == "svg" ? ENDS[0] : dice.Pick(ENDS);
        bytes += tagEnd;
        const bool isVoid = element.name == "br" || element.name == "img";
        const bool hasContent = !isVoid && !(tagEnd == " />" && IsInSvg());

        Pieces before;
        Pieces inside;
        std::optional<Piece> instead;
        std::vector<Splice> changes;
        const std::size_t kind = dice.Below(isRaw ? 2 : 4);
        if (kind == 0) {
            document.edits.push_back(
                {begin, nullptr, EditElement(hasContent, isRaw, &element, &before, &inside, &instead)});
        } else if (kind == 1 && !attributes.empty()) {
            EditAttribute(begin, listEnd, attributes[dice.Below(attributes.size())], &changes);
        } else if (kind == 2) {
            EditToken(begin, &before, &inside, &instead);
        }
        Insert(begin, before);
        if (instead)
            AddSplice(begin, Size(), instead->written, instead->isText);
        for (const Splice& change : changes)
            AddSplice(change.begin, change.end, change.text);
        Insert(Size(), inside);
        if (hasContent)
            Begin(std::move(element));
        else
            Insert(Size(), element.after);
    }

    /// With a number, which makes it the only one of its name.
    Written AddAttribute(std::size_t number) {
        std::string& bytes = document.bytes;
        Written attribute{};
        attribute.begin = bytes.size();
        bytes += dice.Pick(SPACES);
        attribute.nameBegin = bytes.size();
        attribute.name = std::string(dice.Pick(WORDS)) + std::to_string(number);
        bytes += attribute.name;
        attribute.nameEnd = attribute.valueBegin = attribute.end = bytes.size();
        attribute.hasValue = !dice.OneIn(4);
        if (attribute.hasValue) {
            constexpr std::string_view EQUALS[] = {"=", "=", "=", " = ", "\n="};
            constexpr char QUOTES[] = {'\0', '\'', '"', '"'};
            bytes += dice.Pick(EQUALS);
            attribute.quote = QUOTES[dice.Below(4)];
            const std::string quote(attribute.quote == '\0' ? 0 : 1, attribute.quote);
            attribute.valueBegin = bytes.size() + quote.size();
            bytes += quote + std::string(quote.empty() ? dice.Pick(VALUES) : dice.Pick(QUOTED_VALUES)) + quote;
            attribute.end = bytes.size();
        }
        return attribute;
    }

    /// What the parser cuts into no other tokens than a text.
    void AddRawElement() {
        const std::string name(dice.Pick(RAW_NAMES));
        AddTag(name, true);
        document.bytes += "b{c:d} e & f";
        AddEndTag(name, false);
    }

    void AddComment() {
        const std::size_t begin = Size();
        document.bytes += "<!--" + std::string(dice.Pick(COMMENTS)) + "-->";
        if (dice.OneIn(2)) {
            EditPlainToken(begin);
            return;
        }
        ++seen->ofTexts;
        if (dice.OneIn(4)) {
            ++seen->refused;
            AddEdit(begin, [](RewriterToken token) { return token.SetText("a-->b") == HTML::REWRITE_ENDS_EARLY; });
            return;
        }
        const std::string text(dice.Pick(NEW_COMMENTS));
        AddSplice(begin, Size(), "<!--" + Encoded(text) + "-->");
        AddEdit(begin, [text](RewriterToken token) { return token.SetText(text) == 0; });
    }

    void EditText(std::size_t begin) {
        if (dice.OneIn(2)) {
            EditPlainToken(begin);
            return;
        }
        ++seen->ofTexts;
        const std::string text(dice.Pick(PLAIN));
        AddSplice(begin, Size(), Escaped(text), true);
        AddEdit(begin, [text](RewriterToken token) { return token.SetText(text) == 0; });
    }

    /// Edits a token that opens nothing.
    void EditPlainToken(std::size_t begin) {
        Pieces before;
        Pieces after;
        std::optional<Piece> instead;
        EditToken(begin, &before, &after, &instead);
        Insert(begin, before);
        if (instead)
            AddSplice(begin, Size(), instead->written, instead->isText);
        Insert(Size(), after);
    }

    /// Asks for an edit of a whole token, or for two.
    void EditToken(std::size_t begin, Pieces* before, Pieces* after, std::optional<Piece>* instead) {
        const Piece piece = MakePiece(false);
        const Piece other = MakePiece(false);
        const std::size_t kind = dice.Below(7);
        seen->ofTokens += kind <= 5 ? 1 : 0;
        switch (kind) {
            case 0:
                *instead = piece;
                AddEdit(begin, [piece](RewriterToken token) { return token.Replace(piece.given, piece.kind) == 0; });
                break;
            case 1:
                *instead = Piece();
                AddEdit(begin, [](RewriterToken token) { return token.Remove() == 0; });
                break;
            case 2:
                *before = {piece, other};
                AddEdit(begin, [piece, other](RewriterToken token) {
                    return token.InsertBefore(piece.given, piece.kind) + token.InsertBefore(other.given, other.kind) ==
                           0;
                });
                break;
            case 3:
                *after = {piece, other};
                AddEdit(begin, [piece, other](RewriterToken token) {
                    return token.InsertAfter(piece.given, piece.kind) + token.InsertAfter(other.given, other.kind) == 0;
                });
                break;
            case 4:
                *before = {other};
                *instead = piece;
                AddEdit(begin, [piece, other](RewriterToken token) {
                    return token.Replace(piece.given, piece.kind) + token.InsertBefore(other.given, other.kind) == 0;
                });
                break;
            case 5: {
                // Neither a text nor a comment.
                if (document.bytes[begin] != '<' || document.bytes[begin + 1] == '!')
                    break;
                ++seen->refused;
                AddEdit(begin, [](RewriterToken token) { return token.SetText("x") == HTML::REWRITE_WRONG_KIND; });
                break;
            }
            default:
                break;
        }
    }

    void EditAttribute(std::size_t begin, std::size_t listEnd, const Written& attribute, std::vector<Splice>* changes) {
        constexpr std::string_view NEW_VALUES[] = {"new", "two words", "\"&'", "", "a/b"};
        const std::string value(dice.Pick(NEW_VALUES));
        const std::string name = attribute.name;
        ++seen->ofAttributes;
        switch (dice.Below(4)) {
            case 0: {
                const bool staysBare = attribute.quote == '\0' && (value == "new" || value == "a/b");
                const char quote = attribute.quote != '\0' ? attribute.quote : '"';
                if (!attribute.hasValue)
                    changes->push_back({attribute.nameEnd, attribute.nameEnd, "=\"" + Escaped(value, '"') + "\""});
                else if (attribute.quote != '\0')
                    changes->push_back({attribute.valueBegin, attribute.end - 1, Escaped(value, quote)});
                else
                    changes->push_back(
                        {attribute.valueBegin, attribute.end, staysBare ? value : '"' + Escaped(value, '"') + '"'});
                AddEdit(begin, [name, value](RewriterToken token) { return token.SetAttribute(name, value) == 0; });
                break;
            }
            case 1:
                changes->push_back({attribute.nameBegin, attribute.nameEnd, "renamed"});
                AddEdit(begin, [name](RewriterToken token) { return token.RenameAttribute(name, "renamed") == 0; });
                break;
            case 2:
                changes->push_back({attribute.begin, attribute.end, ""});
                AddEdit(begin, [name](RewriterToken token) { return token.RemoveAttribute(name) == 0; });
                break;
            default:
                changes->push_back({listEnd, listEnd, " added=\"" + Escaped(value, '"') + "\""});
                AddEdit(begin, [value](RewriterToken token) { return token.AddAttribute("added", value) == 0; });
                break;
        }
    }

    Dice dice;
    EditsSeen* seen;
    EditedDocument document;
    std::vector<Element> open;
    std::size_t removals = 0;  // open elements whose content is left out
};

/// Whether a character would go on with the reference that the last ones of some text begin.
bool GoesOnWithReference(std::string_view before, char character) {
    const auto isOfWord = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '#';
    };
    if (!isOfWord(character) && character != ';')
        return false;
    std::size_t end = before.size();
    while (end > 0 && isOfWord(before[end - 1]))
        --end;
    return end > 0 && before[end - 1] == '&';
}

}  // namespace

EditedDocument MakeEditedDocument(std::uint64_t seed, EditsSeen* seen) {
    return Maker(seed, seen).Make();
}

std::string ApplySplices(std::string_view bytes, const std::vector<Splice>& splices) {
    std::string result;
    std::size_t place = 0;
    for (const Splice& splice : splices) {
        result.append(bytes.substr(place, splice.begin - place));
        place = splice.end;
        if (splice.isText && !splice.text.empty() && GoesOnWithReference(result, splice.text[0]))
            result.append("&#" + std::to_string(static_cast<unsigned>(splice.text[0])) + ";")
                .append(splice.text.substr(1));
        else
            result.append(splice.text);
    }
    return result.append(bytes.substr(place));
}

}  // namespace Kestra::Test
