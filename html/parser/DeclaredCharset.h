#pragma once

#include <string>

#include "html/framework/Attribute.h"
#include "platform/CharSet.h"
#include "platform/Characters.h"
#include "platform/Vector.h"

namespace Kestra::HTML {

/// The charset that the attributes of a `meta` tag declare: `charset`, or else the first parameter
/// of that name in `content`, whatever `http-equiv` says. Not installed.
///
/// @param buffer  reused from call to call for its capacity; its contents are unspecified
/// @return 0 when they declare none or an unknown one, and for 1200 (UTF-16, low byte first): a
///         document that was read as 8-bit text is not UTF-16
StringNS::CharSet::Code FindDeclaredCharset(const Vector<Attribute<char, std::string>>& attributes, WideString* buffer);

/// A document in UTF-16 has its charset already.
/// @return 0
StringNS::CharSet::Code FindDeclaredCharset(const Vector<Attribute<WideChar, WideString>>& attributes,
                                            WideString* buffer);

}  // namespace Kestra::HTML
