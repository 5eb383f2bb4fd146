#pragma once

#include <span>
#include <string_view>

#include "platform/CharSet.h"
#include "platform/Characters.h"

/// @file
/// The table of charset names after `CharSet`. Not exported.
///
/// Sources of the names and of the codes that they lead to:
/// - the IANA registry of character sets (RFC 2978): every name and alias, spelled as registered,
///   of a charset that has a Windows code page; the preferred name is the registry's MIME name
///   where it gives one;
/// - Microsoft's list of code-page identifiers and the web names of these code pages;
/// - the converter aliases of ICU 72 tagged WINDOWS and IANA;
/// - the labels of the WHATWG Encoding Standard, as spellings that documents use.
///
/// Where these disagree, a name leads to the code page that documents with that name really use:
/// "gb2312" to 936, "euc-kr" to 949, "tis-620" to 874, "iso-2022-jp" to 50221, whose half-width
/// katakana are a superset. "iso-8859-1" stays 28591 and "us-ascii" 20127.

namespace Kestra::StringNS {

/// One code page and its names.
struct CharSetRow {
    CharSet::Code code;
    std::string_view names;  ///< ASCII, separated by single spaces, the preferred one first
};

/// The code pages that names lead to, by ascending code. No name is listed twice, ASCII case
/// ignored.
std::span<const CharSetRow> GetCharSetRows();

/// Code pages that are called by a name that leads to another one ("EUC-JP" is 51932, and 20932 is
/// called so too), by ascending code. They take precedence over the first name in `GetCharSetRows`.
std::span<const CharSetRow> GetSharedCharSetNames();

/// The code that a name leads to: ASCII case ignored, compared over the full length, 0 for an
/// unknown name. Never allocates.
CharSet::Code FindCharSetCode(WideStringView name);

/// The preferred name, empty for a code without one.
std::string_view FindCharSetName(CharSet::Code code);

}  // namespace Kestra::StringNS
