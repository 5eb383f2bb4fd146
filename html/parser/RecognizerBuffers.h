#pragma once

#include <type_traits>

#include "html/framework/Attribute.h"
#include "html/framework/EntityToken.h"
#include "html/framework/RecordFields.h"
#include "html/parser/RecognizerInternals.h"
#include "html/parser/RecordConverter.h"
#include "html/text/Escape2022SimpleParser.h"
#include "html/text/RawText.h"
#include "platform/KeptBuffers.h"

namespace Kestra::HTML {

/// Calls `visit` with each string and list that a record, or an item of a list, has itself. Names
/// of recognizers are left out: they are short.
template <template <typename, typename> class Record, typename C, typename S, typename Visitor>
void ForEachBuffer(Record<C, S>& record, Visitor& visit) {
    ForEachField<Record>([&record, &visit](const auto& field) {
        if constexpr (IS_BUFFER<typename std::remove_cvref_t<decltype(field)>::Tag>)
            visit(field.In(record));
    });
}

template <typename C, typename S, typename Visitor>
void ForEachString(Attribute<C, S>& attribute, Visitor& visit) {
    ForEachBuffer(attribute, visit);
}

template <typename C, typename S, typename Visitor>
void ForEachString(EntityToken<C, S>& token, Visitor& visit) {
    ForEachBuffer(token, visit);
}

/// Calls a visitor (`platform/KeptBuffers.h`) with every string and list that a record and its
/// recognizer, with its members, or the converter retain. Not installed.
template <typename C, typename S>
class RecognizerBuffers {
public:
    template <typename Recognizer, typename Visitor>
    static void Visit(Recognizer& recognizer, typename Recognizer::Data& data, Visitor& visit) {
        ForEachBuffer(data, visit);
        if constexpr (requires { Recognizer::Internals::VisitMembers(recognizer, [](auto&, auto&) {}); })
            Recognizer::Internals::VisitMembers(
                recognizer, [&visit](auto& member, auto& memberData) { Visit(member, memberData, visit); });
    }

    template <typename Visitor>
    static void Visit(RawText<C, S>& rawText, Visitor& visit) {
        ForEachBuffer(rawText.escapeData, visit);
    }

    template <typename Visitor>
    static void Visit(RecordConverter<C, S>& converter, Visitor& visit) {
        for (auto& string : converter.strings)
            visit(string);
        visit(converter.attributes);
        visit(converter.tokens);
    }
};

}  // namespace Kestra::HTML
