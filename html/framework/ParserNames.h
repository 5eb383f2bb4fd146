#pragma once

#include "../../platform/Characters.h"

/// @file
/// The names by which one recognizer hands over to another, and which
/// `GenericParser::GetCurrentParserName` answers for the one that runs.

/// The names of the recognizers.
namespace Kestra::HTML::ParserNames {

inline constexpr WideStringView TEXT = KESTRA_WIDE("TextSimpleParser");               ///< reads text
inline constexpr WideStringView GENERIC_TAG = KESTRA_WIDE("GenericTagSimpleParser");  ///< reads what a "<" begins
inline constexpr WideStringView START_TAG = KESTRA_WIDE("StartTagSimpleParser");  ///< reads start tags and short tags
inline constexpr WideStringView END_TAG = KESTRA_WIDE("EndTagSimpleParser");      ///< reads end tags
inline constexpr WideStringView COMMENT_TAG = KESTRA_WIDE("CommentTagSimpleParser");  ///< reads markup comments
inline constexpr WideStringView CDATA_TAG = KESTRA_WIDE("CDATATagSimpleParser");      ///< reads CDATA sections
inline constexpr WideStringView CONDITIONAL_TAG =
    KESTRA_WIDE("ConditionalTagSimpleParser");  ///< reads marks of conditional sections
inline constexpr WideStringView ENTITY_TAG = KESTRA_WIDE("EntityTagSimpleParser");  ///< reads declarations
inline constexpr WideStringView EXTERN_TAG = KESTRA_WIDE("ExternTagSimpleParser");  ///< reads processing instructions
inline constexpr WideStringView C_COMMENT = KESTRA_WIDE("CCommentSimpleParser");    ///< reads block comments of scripts
inline constexpr WideStringView CPP_COMMENT =
    KESTRA_WIDE("CPPCommentSimpleParser");  ///< reads line comments of scripts
inline constexpr WideStringView JS_REG_EX =
    KESTRA_WIDE("JSRegExSimpleParser");  ///< reads regular expressions of scripts
inline constexpr WideStringView S_QUOTE_STRING = KESTRA_WIDE("SQuoteStringSimpleParser");  ///< reads strings in "'"
inline constexpr WideStringView D_QUOTE_STRING =
    KESTRA_WIDE("DQuoteStringSimpleParser");                             ///< reads strings in quotation marks
inline constexpr WideStringView JUNK = KESTRA_WIDE("JunkSimpleParser");  ///< reads what fits no construct

}  // namespace Kestra::HTML::ParserNames
