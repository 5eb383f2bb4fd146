#pragma once

#include <string>

#include "../../platform/Vector.h"
#include "Attribute.h"
#include "EntityToken.h"

/// @file
/// The records in which tokens reach an observer. A record and everything that it points to is
/// borrowed for the callback; an observer copies what it keeps. Strings are in characters as
/// written, without the punctuation that the record's kind implies.
///
/// A list pointer may be null in a record that a host makes for the serializer, and then counts as
/// an empty list; so does a null string.

namespace Kestra::HTML {

/// Character data between two constructs. A script regular expression arrives as text too.
template <typename C, typename S>
struct TextData {
    const S* text;  ///< as written, character references included
};

/// A script block comment, without "/*" and "*/".
template <typename C, typename S>
struct CCommentData {
    const S* text;  ///< between the marks
};

/// A script line comment, without "//" and the line end.
template <typename C, typename S>
struct CPPCommentData {
    const S* text;  ///< from after "//" to the end of the line
};

/// A single-quoted script string, without its quotes; escapes stay as written.
template <typename C, typename S>
struct SQuoteStringData {
    const S* text;  ///< between the quotes
};

/// A double-quoted script string, without its quotes; escapes stay as written.
template <typename C, typename S>
struct DQuoteStringData {
    const S* text;  ///< between the quotes
};

/// Input that fits no construct: bytes as they are in the input, in both flavours (two per wide
/// character).
template <typename C, typename S>
struct JunkData {
    const std::string* text;  ///< bytes, whatever the flavour
};

/// "<" `prefix` `name` attributes; `suffix` ">" only when `closed`.
template <typename C, typename S>
struct StartTagData {
    const S* prefix;                            ///< white space between "<" and the name
    const S* name;                              ///< as written
    const Vector<Attribute<C, S>>* attributes;  ///< in document order, normalized (`AttributesNormalizer`)
    const S* suffix;                            ///< white space between the last attribute and ">"
    bool closed;                                ///< the ">" was there
};

/// "<" `prefix` `name` attributes `suffix` "/"; ">" only when `closed`. Unlike a start tag it keeps
/// its `suffix` when unclosed.
template <typename C, typename S>
struct ShortTagData {
    const S* prefix;                            ///< white space between "<" and the name
    const S* name;                              ///< as written
    const Vector<Attribute<C, S>>* attributes;  ///< in document order, normalized
    const S* suffix;                            ///< white space between the last attribute and "/>"
    bool closed;                                ///< the ">" was there
};

/// "</" `prefix` `name` `afterName`; attributes and `suffix` when there are attributes; "/" when
/// `slashBeforeClose`; ">" when `closed`.
template <typename C, typename S>
struct EndTagData {
    const S* prefix;                            ///< white space between "</" and the name
    const S* name;                              ///< as written
    const S* afterName;                         ///< white space after the name
    bool closed;                                ///< false when a "<" ended the tag; that "<" begins the next token
    const Vector<Attribute<C, S>>* attributes;  ///< in document order, normalized
    bool slashBeforeClose;                      ///< there was a "/" after the attributes
    const S* suffix;                            ///< white space after the last attribute
};

/// "<![" `keyword` `text`; "]]>" when `closed`.
template <typename C, typename S>
struct CDATATagData {
    const S* keyword;  ///< "CDATA" as written
    const S* text;     ///< the body, its leading "[" included
    bool closed;       ///< the "]]>" was there
};

/// "<![" `keyword` `condition`; "]" when `bracketClosed`; `tail` ">" when `tagClosed`.
template <typename C, typename S>
struct ConditionalTagData {
    const S* keyword;    ///< "if" or "endif" as written
    const S* condition;  ///< between the keyword and "]"
    const S* tail;       ///< between "]" and ">"
    bool bracketClosed;  ///< the "]" was there
    bool tagClosed;      ///< the ">" was there
};

/// "<!--" `text`; "-->" when `closed`.
template <typename C, typename S>
struct CommentTagData {
    const S* text;  ///< between "<!--" and "-->"
    bool closed;    ///< the "-->" was there
};

/// "<!" `prefix` `name`, each token as its prefix and quoted value, `suffix` ">".
template <typename C, typename S>
struct EntityTagData {
    const S* prefix;                          ///< white space between "<!" and the keyword
    const S* name;                            ///< the keyword as written, for example "DOCTYPE"
    const Vector<EntityToken<C, S>>* tokens;  ///< words and quoted strings, in document order
    const S* suffix;                          ///< white space before ">"
};

/// `text` alone when `freeStyle`; otherwise "<?" `prefix` `name` attributes `suffix`, "/" when
/// `slashBeforeClose` or else "?", ">".
template <typename C, typename S>
struct ExternTagData {
    const S* prefix;                            ///< white space between "<?" and the target
    const S* name;                              ///< the target as written
    const Vector<Attribute<C, S>>* attributes;  ///< in document order, not normalized; none when `freeStyle`
    const S* suffix;                            ///< white space after the last attribute
    bool freeStyle;         ///< read as raw text: a processing instruction other than an XML declaration
    const S* text;          ///< the whole instruction from "<?" to ">", when `freeStyle`
    bool slashBeforeClose;  ///< an XML declaration ended with "/>"
};

}  // namespace Kestra::HTML
