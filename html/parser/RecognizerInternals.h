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

/// @file
/// What the driver reaches in the recognizers besides their three operations. Not installed.

namespace Kestra::HTML {

/// A member recognizer of a recognizer, and its record.
template <auto RECOGNIZER, auto RECORD>
struct MemberRecognizer {
    template <typename Owner, typename Visitor>
    static void Visit(Owner& owner, Visitor& visit) {
        visit(owner.*RECOGNIZER, owner.*RECORD);
    }
};

/// Calls a visitor with each member recognizer and its record.
template <typename... Members>
struct MemberRecognizers {
    template <typename Owner, typename Visitor>
    static void VisitMembers(Owner& owner, Visitor visit) {
        (Members::Visit(owner, visit), ...);
    }
};

/// Limits the parts of a construct.
template <auto MAX_PARTS>
struct LimitedParts {
    /// @param count  of attributes or items that are not too many
    template <typename Owner>
    static void SetMaxParts(Owner& owner, std::size_t count) {
        owner.*MAX_PARTS = count;
    }
};

template <typename C, typename S>
struct TextSimpleParser<C, S>::Internals
    : MemberRecognizers<MemberRecognizer<&TextSimpleParser::escape, &TextSimpleParser::escapeData>> {
    /// As `Parse` up to "<" or a quote, inclusive, without naming the recognizer that runs next.
    /// @return that opener, or 0 when something else stops the text: then call `Parse`
    static C ReadUntilOpener(TextSimpleParser& parser, SimpleParserContext<C, S>* context, Data* data) {
        return parser.ReadUntilOpener(context, data);
    }
};

template <typename C, typename S>
struct DQuoteStringSimpleParser<C, S>::Internals
    : MemberRecognizers<MemberRecognizer<&DQuoteStringSimpleParser::escape, &DQuoteStringSimpleParser::escapeData>> {};

template <typename C, typename S>
struct ConditionalTagSimpleParser<C, S>::Internals {
    /// The context ends within a piece: what is scanned up to there is still in the piece of the
    /// ">".
    static void SetPieceContinues(ConditionalTagSimpleParser& parser, bool continues) {
        parser.pieceContinues = continues;
    }
};

template <typename C, typename S>
struct CCommentSimpleParser<C, S>::Internals
    : MemberRecognizers<MemberRecognizer<&CCommentSimpleParser::genericTag, &CCommentSimpleParser::genericTagData>> {};

template <typename C, typename S>
struct CPPCommentSimpleParser<C, S>::Internals
    : MemberRecognizers<
          MemberRecognizer<&CPPCommentSimpleParser::genericTag, &CPPCommentSimpleParser::genericTagData>> {};

template <typename C, typename S>
struct GenericTagSimpleParser<C, S>::Internals
    : MemberRecognizers<
          MemberRecognizer<&GenericTagSimpleParser::identifier, &GenericTagSimpleParser::identifierData>> {};

template <typename C, typename S>
struct TokenSimpleParser<C, S>::Internals
    : MemberRecognizers<MemberRecognizer<&TokenSimpleParser::whiteSpace, &TokenSimpleParser::whiteSpaceData>,
                        MemberRecognizer<&TokenSimpleParser::singleQuoted, &TokenSimpleParser::singleQuotedData>,
                        MemberRecognizer<&TokenSimpleParser::doubleQuoted, &TokenSimpleParser::doubleQuotedData>> {};

template <typename C, typename S>
struct AttributeSimpleParser<C, S>::Internals
    : MemberRecognizers<MemberRecognizer<&AttributeSimpleParser::identifier, &AttributeSimpleParser::identifierData>,
                        MemberRecognizer<&AttributeSimpleParser::whiteSpace, &AttributeSimpleParser::whiteSpaceData>,
                        MemberRecognizer<&AttributeSimpleParser::token, &AttributeSimpleParser::tokenData>> {};

template <typename C, typename S>
struct StartTagSimpleParser<C, S>::Internals
    : LimitedParts<&StartTagSimpleParser::maxParts>,
      MemberRecognizers<MemberRecognizer<&StartTagSimpleParser::identifier, &StartTagSimpleParser::identifierData>,
                        MemberRecognizer<&StartTagSimpleParser::whiteSpace, &StartTagSimpleParser::whiteSpaceData>,
                        MemberRecognizer<&StartTagSimpleParser::attribute, &StartTagSimpleParser::attributeData>> {};

template <typename C, typename S>
struct EndTagSimpleParser<C, S>::Internals
    : LimitedParts<&EndTagSimpleParser::maxParts>,
      MemberRecognizers<MemberRecognizer<&EndTagSimpleParser::identifier, &EndTagSimpleParser::identifierData>,
                        MemberRecognizer<&EndTagSimpleParser::whiteSpace, &EndTagSimpleParser::whiteSpaceData>,
                        MemberRecognizer<&EndTagSimpleParser::attribute, &EndTagSimpleParser::attributeData>> {};

template <typename C, typename S>
struct EntityTagSimpleParser<C, S>::Internals
    : LimitedParts<&EntityTagSimpleParser::maxParts>,
      MemberRecognizers<MemberRecognizer<&EntityTagSimpleParser::identifier, &EntityTagSimpleParser::identifierData>,
                        MemberRecognizer<&EntityTagSimpleParser::whiteSpace, &EntityTagSimpleParser::whiteSpaceData>,
                        MemberRecognizer<&EntityTagSimpleParser::token, &EntityTagSimpleParser::tokenData>> {};

template <typename C, typename S>
struct ExternTagFreeStyleSimpleParser<C, S>::Internals
    : MemberRecognizers<MemberRecognizer<&ExternTagFreeStyleSimpleParser::sQuoteString,
                                         &ExternTagFreeStyleSimpleParser::sQuoteStringData>,
                        MemberRecognizer<&ExternTagFreeStyleSimpleParser::dQuoteString,
                                         &ExternTagFreeStyleSimpleParser::dQuoteStringData>> {};

template <typename C, typename S>
struct ExternTagSimpleParser<C, S>::Internals
    : LimitedParts<&ExternTagSimpleParser::maxParts>,
      MemberRecognizers<MemberRecognizer<&ExternTagSimpleParser::identifier, &ExternTagSimpleParser::identifierData>,
                        MemberRecognizer<&ExternTagSimpleParser::whiteSpace, &ExternTagSimpleParser::whiteSpaceData>,
                        MemberRecognizer<&ExternTagSimpleParser::attribute, &ExternTagSimpleParser::attributeData>,
                        MemberRecognizer<&ExternTagSimpleParser::freeStyle, &ExternTagSimpleParser::freeStyleData>> {};

}  // namespace Kestra::HTML
