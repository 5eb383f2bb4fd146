#pragma once

#include "html/framework/Attribute.h"
#include "html/framework/EntityToken.h"
#include "html/parser/RecognizerInternals.h"
#include "html/parser/RecordConverter.h"
#include "html/tags/IdentifierSimpleParser.h"
#include "html/text/CDATATagSimpleParser.h"
#include "html/text/CommentTagSimpleParser.h"
#include "html/text/Escape2022SimpleParser.h"
#include "html/text/RawText.h"
#include "html/text/WhiteSpaceSimpleParser.h"
#include "platform/KeptBuffers.h"

namespace Kestra::HTML {

template <typename C, typename S, typename Visitor>
void ForEachString(Attribute<C, S>& attribute, Visitor& visit) {
    visit(attribute.prefix);
    visit(attribute.name);
    visit(attribute.beforeEquals);
    visit(attribute.afterEquals);
    visit(attribute.value);
}

template <typename C, typename S, typename Visitor>
void ForEachString(EntityToken<C, S>& token, Visitor& visit) {
    visit(token.prefix);
    visit(token.value);
}

/// Hands a visitor (`platform/KeptBuffers.h`) every string and list that a record and its
/// recognizer retain, those of the recognizer's members included, or those of the converter. The
/// names of recognizers, and what is always empty, do not count. Not installed.
template <typename C, typename S>
class RecognizerBuffers {
public:
    template <typename Recognizer, typename Visitor>
    static void Visit(Recognizer& recognizer, typename Recognizer::Data& data, Visitor& visit) {
        VisitRecord(data, visit);
        if constexpr (requires { Recognizer::Internals::VisitMembers(recognizer, [](auto&, auto&) {}); })
            Recognizer::Internals::VisitMembers(
                recognizer, [&visit](auto& member, auto& memberData) { Visit(member, memberData, visit); });
    }

    template <typename Visitor>
    static void Visit(RawText<C, S>& rawText, Visitor& visit) {
        VisitRecord(rawText.escapeData, visit);
    }

    template <typename Visitor>
    static void Visit(RecordConverter<C, S>& converter, Visitor& visit) {
        for (auto& string : converter.strings)
            visit(string);
        visit(converter.attributes);
        visit(converter.tokens);
    }

private:
    /// A record without a string but its text.
    template <typename Data, typename Visitor>
    static void VisitRecord(Data& data, Visitor& visit) {
        visit(data.text);
    }

    template <typename Visitor>
    static void VisitRecord(Escape2022SimpleParserData<C, S>& data, Visitor& visit) {
        visit(data.text);
        visit(data.pending);
    }

    template <typename Visitor>
    static void VisitRecord(CDATATagSimpleParserData<C, S>& data, Visitor& visit) {
        visit(data.keyword);
        visit(data.text);
    }

    template <typename Visitor>
    static void VisitRecord(ConditionalTagSimpleParserData<C, S>& data, Visitor& visit) {
        visit(data.keyword);
        visit(data.condition);
        visit(data.tail);
    }

    template <typename Visitor>
    static void VisitRecord(CCommentSimpleParserData<C, S>& data, Visitor& visit) {
        visit(data.text);
        visit(data.keyword);
    }

    template <typename Visitor>
    static void VisitRecord(CPPCommentSimpleParserData<C, S>& data, Visitor& visit) {
        visit(data.text);
        visit(data.keyword);
    }

    template <typename Visitor>
    static void VisitRecord(GenericTagSimpleParserData<C, S>& data, Visitor& visit) {
        visit(data.keyword);
    }

    template <typename Visitor>
    static void VisitRecord(TokenSimpleParserData<C, S>& data, Visitor& visit) {
        visit(data.prefix);
        visit(data.value);
    }

    template <typename Visitor>
    static void VisitRecord(AttributeSimpleParserData<C, S>& data, Visitor& visit) {
        visit(data.prefix);
        visit(data.name);
        visit(data.beforeEquals);
        visit(data.afterEquals);
        visit(data.value);
    }

    template <typename Visitor>
    static void VisitRecord(StartTagSimpleParserData<C, S>& data, Visitor& visit) {
        visit(data.prefix);
        visit(data.name);
        visit(data.attributes);
        visit(data.suffix);
    }

    template <typename Visitor>
    static void VisitRecord(EndTagSimpleParserData<C, S>& data, Visitor& visit) {
        visit(data.prefix);
        visit(data.name);
        visit(data.afterName);
        visit(data.suffix);
        visit(data.attributes);
    }

    template <typename Visitor>
    static void VisitRecord(EntityTagSimpleParserData<C, S>& data, Visitor& visit) {
        visit(data.prefix);
        visit(data.name);
        visit(data.tokens);
        visit(data.suffix);
    }

    template <typename Visitor>
    static void VisitRecord(ExternTagSimpleParserData<C, S>& data, Visitor& visit) {
        visit(data.prefix);
        visit(data.name);
        visit(data.text);
        visit(data.attributes);
        visit(data.suffix);
    }
};

}  // namespace Kestra::HTML
