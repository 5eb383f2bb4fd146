#pragma once

#include "html/framework/Scan.h"

namespace Kestra::HTML {

/// Reads the content of a literal up to a character that ends it, and appends it to `data->text` in
/// one operation. Shared by the recognizers of quoted strings and regular expressions.
///
/// With `allowEscapes` an unescaped backslash makes the next character content, unless it belongs
/// to `ALWAYS`. `data->lastChar` carries a pending backslash over the end of a piece; without
/// `allowEscapes` it is neither read nor changed.
///
/// @tparam ALWAYS     classes that end the literal whether escaped or not
/// @tparam UNESCAPED  classes that end it unless escaped
/// @return true when a character that ends the literal is next, false when the piece is used up.
template <Scan::Classes ALWAYS, Scan::Classes UNESCAPED, typename C, typename S, typename Data>
bool ReadLiteral(SimpleParserContext<C, S>* context, Data* data) {
    const std::uint64_t begin = context->position;
    constexpr auto ENDS = static_cast<Scan::Classes>(ALWAYS | UNESCAPED);
    if (!data->allowEscapes) {
        Scan::ConsumeUntil<ENDS>(*context);
    } else {
        while (!Scan::AtEnd(*context)) {
            if (data->lastChar == '\\') {
                if ((Scan::ClassesOf(Scan::Next(*context)) & ALWAYS) != 0)
                    break;
                data->lastChar = '*';
                Scan::Advance(*context);
                continue;
            }
            const std::basic_string_view<C> run = Scan::ConsumeUntil<ENDS | Scan::BACKSLASH>(*context);
            if (!run.empty())
                data->lastChar = run.back();
            if (Scan::AtEnd(*context) || (Scan::ClassesOf(Scan::Next(*context)) & ENDS) != 0)
                break;
            data->lastChar = '\\';
            Scan::Advance(*context);
        }
    }
    data->text.append(context->buffer + begin, static_cast<std::size_t>(context->position - begin));
    return !Scan::AtEnd(*context);
}

}  // namespace Kestra::HTML
