#pragma once

#include <cstddef>

#include "html/tags/AttributeSimpleParser.h"
#include "html/tags/EndTagSimpleParser.h"
#include "html/tags/EntityTagSimpleParser.h"
#include "html/tags/ExternTagFreeStyleSimpleParser.h"
#include "html/tags/ExternTagSimpleParser.h"
#include "html/tags/GenericTagSimpleParser.h"
#include "html/tags/StartTagSimpleParser.h"
#include "html/tags/TokenSimpleParser.h"
#include "html/text/CCommentSimpleParser.h"
#include "html/text/CPPCommentSimpleParser.h"
#include "html/text/ConditionalTagSimpleParser.h"
#include "html/text/DQuoteStringSimpleParser.h"
#include "html/text/TextSimpleParser.h"

/// @file What the driver reaches in the recognizers beside their three operations. `VisitMembers`
/// calls a visitor with each member recognizer and its record. Not installed.

namespace Kestra::HTML {

template <typename C, typename S>
struct TextSimpleParser<C, S>::Internals {
    /// As `Parse` up to "<" or a quote, inclusive, without naming the recognizer that runs next.
    /// @return that opener, or 0 when something else stops the text: `Parse` goes on
    static C ReadUntilOpener(TextSimpleParser& parser, SimpleParserContext<C, S>* context, Data* data) {
        return parser.ReadUntilOpener(context, data);
    }

    template <typename Visitor>
    static void VisitMembers(TextSimpleParser& parser, Visitor visit) {
        visit(parser.escape, parser.escapeData);
    }
};

template <typename C, typename S>
struct DQuoteStringSimpleParser<C, S>::Internals {
    template <typename Visitor>
    static void VisitMembers(DQuoteStringSimpleParser& parser, Visitor visit) {
        visit(parser.escape, parser.escapeData);
    }
};

template <typename C, typename S>
struct ConditionalTagSimpleParser<C, S>::Internals {
    /// The context ends within a piece: what is scanned up to there is still in the piece of the
    /// ">".
    static void SetPieceGoesOn(ConditionalTagSimpleParser& parser, bool goesOn) {
        parser.pieceGoesOn = goesOn;
    }
};

template <typename C, typename S>
struct CCommentSimpleParser<C, S>::Internals {
    template <typename Visitor>
    static void VisitMembers(CCommentSimpleParser& parser, Visitor visit) {
        visit(parser.genericTag, parser.genericTagData);
    }
};

template <typename C, typename S>
struct CPPCommentSimpleParser<C, S>::Internals {
    template <typename Visitor>
    static void VisitMembers(CPPCommentSimpleParser& parser, Visitor visit) {
        visit(parser.genericTag, parser.genericTagData);
    }
};

template <typename C, typename S>
struct GenericTagSimpleParser<C, S>::Internals {
    template <typename Visitor>
    static void VisitMembers(GenericTagSimpleParser& parser, Visitor visit) {
        visit(parser.identifier, parser.identifierData);
    }
};

template <typename C, typename S>
struct TokenSimpleParser<C, S>::Internals {
    template <typename Visitor>
    static void VisitMembers(TokenSimpleParser& parser, Visitor visit) {
        visit(parser.whiteSpace, parser.whiteSpaceData);
        visit(parser.singleQuoted, parser.singleQuotedData);
        visit(parser.doubleQuoted, parser.doubleQuotedData);
    }
};

template <typename C, typename S>
struct AttributeSimpleParser<C, S>::Internals {
    template <typename Visitor>
    static void VisitMembers(AttributeSimpleParser& parser, Visitor visit) {
        visit(parser.identifier, parser.identifierData);
        visit(parser.whiteSpace, parser.whiteSpaceData);
        visit(parser.token, parser.tokenData);
    }
};

template <typename C, typename S>
struct StartTagSimpleParser<C, S>::Internals {
    /// @param count  of attributes that are not too many
    static void SetMaxParts(StartTagSimpleParser& parser, std::size_t count) {
        parser.maxParts = count;
    }

    template <typename Visitor>
    static void VisitMembers(StartTagSimpleParser& parser, Visitor visit) {
        visit(parser.identifier, parser.identifierData);
        visit(parser.whiteSpace, parser.whiteSpaceData);
        visit(parser.attribute, parser.attributeData);
    }
};

template <typename C, typename S>
struct EndTagSimpleParser<C, S>::Internals {
    /// @param count  of attributes that are not too many
    static void SetMaxParts(EndTagSimpleParser& parser, std::size_t count) {
        parser.maxParts = count;
    }

    template <typename Visitor>
    static void VisitMembers(EndTagSimpleParser& parser, Visitor visit) {
        visit(parser.identifier, parser.identifierData);
        visit(parser.whiteSpace, parser.whiteSpaceData);
        visit(parser.attribute, parser.attributeData);
    }
};

template <typename C, typename S>
struct EntityTagSimpleParser<C, S>::Internals {
    /// @param count  of items that are not too many
    static void SetMaxParts(EntityTagSimpleParser& parser, std::size_t count) {
        parser.maxParts = count;
    }

    template <typename Visitor>
    static void VisitMembers(EntityTagSimpleParser& parser, Visitor visit) {
        visit(parser.identifier, parser.identifierData);
        visit(parser.whiteSpace, parser.whiteSpaceData);
        visit(parser.token, parser.tokenData);
    }
};

template <typename C, typename S>
struct ExternTagFreeStyleSimpleParser<C, S>::Internals {
    template <typename Visitor>
    static void VisitMembers(ExternTagFreeStyleSimpleParser& parser, Visitor visit) {
        visit(parser.sQuoteString, parser.sQuoteStringData);
        visit(parser.dQuoteString, parser.dQuoteStringData);
    }
};

template <typename C, typename S>
struct ExternTagSimpleParser<C, S>::Internals {
    /// @param count  of attributes that are not too many
    static void SetMaxParts(ExternTagSimpleParser& parser, std::size_t count) {
        parser.maxParts = count;
    }

    template <typename Visitor>
    static void VisitMembers(ExternTagSimpleParser& parser, Visitor visit) {
        visit(parser.identifier, parser.identifierData);
        visit(parser.whiteSpace, parser.whiteSpaceData);
        visit(parser.attribute, parser.attributeData);
        visit(parser.freeStyle, parser.freeStyleData);
    }
};

}  // namespace Kestra::HTML
