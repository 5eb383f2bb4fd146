#pragma once

#include "../../platform/Characters.h"

/// @file
/// The names by which one recognizer hands over to another, and which
/// `GenericParser::GetCurrentParserName` answers for the one that runs.

namespace Kestra::HTML::ParserNames {

inline constexpr WideStringView TEXT = KESTRA_WIDE("TextSimpleParser");
inline constexpr WideStringView GENERIC_TAG = KESTRA_WIDE("GenericTagSimpleParser");
inline constexpr WideStringView START_TAG = KESTRA_WIDE("StartTagSimpleParser");
inline constexpr WideStringView END_TAG = KESTRA_WIDE("EndTagSimpleParser");
inline constexpr WideStringView COMMENT_TAG = KESTRA_WIDE("CommentTagSimpleParser");
inline constexpr WideStringView CDATA_TAG = KESTRA_WIDE("CDATATagSimpleParser");
inline constexpr WideStringView CONDITIONAL_TAG = KESTRA_WIDE("ConditionalTagSimpleParser");
inline constexpr WideStringView ENTITY_TAG = KESTRA_WIDE("EntityTagSimpleParser");
inline constexpr WideStringView EXTERN_TAG = KESTRA_WIDE("ExternTagSimpleParser");
inline constexpr WideStringView C_COMMENT = KESTRA_WIDE("CCommentSimpleParser");
inline constexpr WideStringView CPP_COMMENT = KESTRA_WIDE("CPPCommentSimpleParser");
inline constexpr WideStringView JS_REG_EX = KESTRA_WIDE("JSRegExSimpleParser");
inline constexpr WideStringView S_QUOTE_STRING = KESTRA_WIDE("SQuoteStringSimpleParser");
inline constexpr WideStringView D_QUOTE_STRING = KESTRA_WIDE("DQuoteStringSimpleParser");
inline constexpr WideStringView JUNK = KESTRA_WIDE("JunkSimpleParser");

}  // namespace Kestra::HTML::ParserNames
