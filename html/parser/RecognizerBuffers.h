#pragma once

#include "html/framework/Attribute.h"
#include "html/framework/EntityToken.h"
#include "html/parser/RecordConverter.h"
#include "html/tags/EndTagSimpleParser.h"
#include "html/tags/EntityTagSimpleParser.h"
#include "html/tags/ExternTagSimpleParser.h"
#include "html/tags/GenericTagSimpleParser.h"
#include "html/tags/StartTagSimpleParser.h"
#include "html/text/CCommentSimpleParser.h"
#include "html/text/CDATATagSimpleParser.h"
#include "html/text/CPPCommentSimpleParser.h"
#include "html/text/CommentTagSimpleParser.h"
#include "html/text/ConditionalTagSimpleParser.h"
#include "html/text/DQuoteStringSimpleParser.h"
#include "html/text/JSRegExSimpleParser.h"
#include "html/text/JunkSimpleParser.h"
#include "html/text/RawText.h"
#include "html/text/SQuoteStringSimpleParser.h"
#include "html/text/TextSimpleParser.h"
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

/// Hands a visitor (`platform/KeptBuffers.h`) every string and list that a record and its recognizer keep, those of the recognizer's
/// members included, or those of the converter. The names of recognizers, and what is always empty, do not count. Not installed.
template <typename C, typename S>
class RecognizerBuffers {
public:
    template <typename Visitor>
    static void Visit(TextSimpleParser<C, S>& parser, TextSimpleParserData<C, S>& data, Visitor& visit) {
        visit(data.text);
        Visit(parser.escapeData, visit);
    }

    template <typename Visitor>
    static void Visit(DQuoteStringSimpleParser<C, S>& parser, DQuoteStringSimpleParserData<C, S>& data, Visitor& visit) {
        visit(data.text);
        Visit(parser.escapeData, visit);
    }

    template <typename Visitor>
    static void Visit(SQuoteStringSimpleParser<C, S>&, SQuoteStringSimpleParserData<C, S>& data, Visitor& visit) {
        visit(data.text);
    }

    template <typename Visitor>
    static void Visit(JSRegExSimpleParser<C, S>&, JSRegExSimpleParserData<C, S>& data, Visitor& visit) {
        visit(data.text);
    }

    template <typename Visitor>
    static void Visit(JunkSimpleParser<C, S>&, JunkSimpleParserData<C, S>& data, Visitor& visit) {
        visit(data.text);
    }

    template <typename Visitor>
    static void Visit(CommentTagSimpleParser<C, S>&, CommentTagSimpleParserData<C, S>& data, Visitor& visit) {
        visit(data.text);
    }

    template <typename Visitor>
    static void Visit(CDATATagSimpleParser<C, S>&, CDATATagSimpleParserData<C, S>& data, Visitor& visit) {
        visit(data.keyword);
        visit(data.text);
    }

    template <typename Visitor>
    static void Visit(ConditionalTagSimpleParser<C, S>&, ConditionalTagSimpleParserData<C, S>& data, Visitor& visit) {
        visit(data.keyword);
        visit(data.condition);
        visit(data.tail);
    }

    template <typename Visitor>
    static void Visit(CCommentSimpleParser<C, S>& parser, CCommentSimpleParserData<C, S>& data, Visitor& visit) {
        visit(data.text);
        visit(data.keyword);
        Visit(parser.genericTag, parser.genericTagData, visit);
    }

    template <typename Visitor>
    static void Visit(CPPCommentSimpleParser<C, S>& parser, CPPCommentSimpleParserData<C, S>& data, Visitor& visit) {
        visit(data.text);
        visit(data.keyword);
        Visit(parser.genericTag, parser.genericTagData, visit);
    }

    template <typename Visitor>
    static void Visit(GenericTagSimpleParser<C, S>& parser, GenericTagSimpleParserData<C, S>& data, Visitor& visit) {
        visit(data.keyword);
        visit(parser.identifierData.text);
    }

    template <typename Visitor>
    static void Visit(StartTagSimpleParser<C, S>& parser, StartTagSimpleParserData<C, S>& data, Visitor& visit) {
        visit(data.prefix);
        visit(data.name);
        visit(data.attributes);
        visit(data.suffix);
        VisitTag(parser, visit);
        Visit(parser.attribute, parser.attributeData, visit);
    }

    template <typename Visitor>
    static void Visit(EndTagSimpleParser<C, S>& parser, EndTagSimpleParserData<C, S>& data, Visitor& visit) {
        visit(data.prefix);
        visit(data.name);
        visit(data.afterName);
        visit(data.suffix);
        visit(data.attributes);
        VisitTag(parser, visit);
        Visit(parser.attribute, parser.attributeData, visit);
    }

    template <typename Visitor>
    static void Visit(EntityTagSimpleParser<C, S>& parser, EntityTagSimpleParserData<C, S>& data, Visitor& visit) {
        visit(data.prefix);
        visit(data.name);
        visit(data.tokens);
        visit(data.suffix);
        VisitTag(parser, visit);
        Visit(parser.token, parser.tokenData, visit);
    }

    template <typename Visitor>
    static void Visit(ExternTagSimpleParser<C, S>& parser, ExternTagSimpleParserData<C, S>& data, Visitor& visit) {
        visit(data.prefix);
        visit(data.name);
        visit(data.text);
        visit(data.attributes);
        visit(data.suffix);
        VisitTag(parser, visit);
        Visit(parser.attribute, parser.attributeData, visit);
        visit(parser.freeStyleData.text);
        Visit(parser.freeStyle.sQuoteString, parser.freeStyle.sQuoteStringData, visit);
        Visit(parser.freeStyle.dQuoteString, parser.freeStyle.dQuoteStringData, visit);
    }

    template <typename Visitor>
    static void Visit(RawText<C, S>& rawText, Visitor& visit) {
        Visit(rawText.escapeData, visit);
    }

    template <typename Visitor>
    static void Visit(RecordConverter<C, S>& converter, Visitor& visit) {
        for (auto& string : converter.strings)
            visit(string);
        visit(converter.attributes);
        visit(converter.tokens);
    }

private:
    template <typename Visitor>
    static void Visit(Escape2022SimpleParserData<C, S>& data, Visitor& visit) {
        visit(data.text);
        visit(data.pending);
    }

    template <typename Visitor>
    static void Visit(AttributeSimpleParser<C, S>& parser, AttributeSimpleParserData<C, S>& data, Visitor& visit) {
        visit(data.prefix);
        visit(data.name);
        visit(data.beforeEquals);
        visit(data.afterEquals);
        visit(data.value);
        VisitTag(parser, visit);
        Visit(parser.token, parser.tokenData, visit);
    }

    template <typename Visitor>
    static void Visit(TokenSimpleParser<C, S>& parser, TokenSimpleParserData<C, S>& data, Visitor& visit) {
        visit(data.prefix);
        visit(data.value);
        visit(parser.whiteSpaceData.text);
        Visit(parser.singleQuoted, parser.singleQuotedData, visit);
        Visit(parser.doubleQuoted, parser.doubleQuotedData, visit);
    }

    /// The members that attributes and all tags have.
    template <typename Parser, typename Visitor>
    static void VisitTag(Parser& parser, Visitor& visit) {
        visit(parser.identifierData.text);
        visit(parser.whiteSpaceData.text);
    }
};

}  // namespace Kestra::HTML
