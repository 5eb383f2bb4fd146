#pragma once

#include <string>

#include "html/framework/Attribute.h"
#include "platform/CharSet.h"
#include "platform/Characters.h"
#include "platform/Vector.h"

namespace Kestra::HTML {

/// The charset that the attributes of a `meta` tag declare: `charset`, or else the first parameter of that name in `content`, whatever
/// `http-equiv` says. Not installed.
///
/// @return 0 when they declare none, an unknown one, or UTF-16, which cannot be the charset of markup that was read as 8-bit text
StringNS::CharSet::Code FindDeclaredCharset(const Vector<Attribute<char, std::string>>& attributes);

/// A document in UTF-16 has its charset already. @return 0
StringNS::CharSet::Code FindDeclaredCharset(const Vector<Attribute<WideChar, WideString>>& attributes);

}  // namespace Kestra::HTML
