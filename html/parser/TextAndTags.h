#pragma once

#include <cstdint>
#include <string_view>

#include "html/fastpath/WholeTag.h"
#include "html/parser/ParserCore.h"

namespace Kestra::HTML {

/// Text, raw text, start tags and end tags, which most of a document is. Text and tags that lie in
/// the piece as a whole are read without a recognizer (`html/fastpath/`). The functions are those
/// of `Construct`. Not installed.
template <typename C, typename S>
class TextAndTags {
public:
    using Core = ParserCore<C, S>;

    static std::uint32_t ParseText(Core& core);
    static std::uint32_t EndText(Core& core);
    static std::uint32_t ParseRawText(Core& core);
    static std::uint32_t EndRawText(Core& core);
    static std::uint32_t ParseStartTag(Core& core);
    static std::uint32_t ParseEndTag(Core& core);
    static std::uint32_t EndEndTag(Core& core);

private:
    struct RecognizedTag {};  // a tag that its recognizer has completed; the other way is `WholeTag`

    static bool IsPlainText(const Core& core);
    static std::uint32_t ParsePlainText(Core& core);
    static void DeliverTextWith(Core& core, std::basic_string_view<C> run);
    static std::uint32_t ParseCutEndTag(Core& core);
    static std::uint32_t ReadTag(Core& core);
    template <typename Tag>
    static std::uint32_t FinishStartTag(Core& core, Tag tag);
    template <typename Tag>
    static std::uint32_t FinishEndTag(Core& core, Tag tag);
    static void DeliverStartTag(Core& core);
    static void SwitchScriptAndStyle(Core& core, std::basic_string_view<C> name, bool starts);
    static void NotifyOfRawText(Core& core, RawTextElement element);
    static void ReturnToText(Core& core, WholeTag tag);
    static void ReturnToText(Core& core, RecognizedTag tag);
};

}  // namespace Kestra::HTML
