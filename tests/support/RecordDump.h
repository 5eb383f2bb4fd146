#pragma once

#include <string>
#include <string_view>

#include "html/framework/Attribute.h"
#include "html/framework/EntityToken.h"
#include "html/tags/AttributeSimpleParser.h"
#include "html/tags/EndTagSimpleParser.h"
#include "html/tags/EntityTagSimpleParser.h"
#include "html/tags/ExternTagFreeStyleSimpleParser.h"
#include "html/tags/ExternTagSimpleParser.h"
#include "html/tags/GenericTagSimpleParser.h"
#include "html/tags/IdentifierSimpleParser.h"
#include "html/tags/StartTagSimpleParser.h"
#include "html/tags/TokenSimpleParser.h"
#include "html/text/CCommentSimpleParser.h"
#include "html/text/CDATATagSimpleParser.h"
#include "html/text/CPPCommentSimpleParser.h"
#include "html/text/CommentTagSimpleParser.h"
#include "html/text/ConditionalTagSimpleParser.h"
#include "html/text/DQuoteStringSimpleParser.h"
#include "html/text/Escape2022SimpleParser.h"
#include "html/text/JSRegExSimpleParser.h"
#include "html/text/JunkSimpleParser.h"
#include "html/text/SQuoteStringSimpleParser.h"
#include "html/text/TextSimpleParser.h"
#include "html/text/WhiteSpaceSimpleParser.h"
#include "tools/trace/TokenTrace.h"

/// @file
/// What a recognizer gathered, as one line in the escapes of the trace language. States, options and other means of a machine are left
/// out.
///
///     text(t)                                  white space, names, strings, escape runs, junk, free-style instructions
///     text(t) next(Recognizer)                 text that has handed over
///     text(t) next(Recognizer) keyword(k)      script comments, which may hand over as well
///     {prefix|value}                           a value, in its quotes
///     {prefix|name|beforeEquals}               an attribute without a value
///     {prefix|name|beforeEquals=afterEquals|value}
///     next(Recognizer)  next(Recognizer) keyword(k)
///     start(prefix|name|attributes|suffix)     ", short", ", open"
///     end(prefix|name|afterName|attributes|suffix)   ", slash", ", open"
///     comment(t)  cdata(keyword|text)          ", open"
///     conditional(keyword|condition|tail)      ", no-bracket", ", open"
///     entity(prefix|name|tokens|suffix)
///     extern(prefix|name|attributes|suffix)    ", slash"
///     extern(prefix|name||) free(t)            an instruction that was read as raw text

namespace Kestra::Test {

template <typename Data>
std::string DumpText(const Data& data) {
    return "text(" + Trace::Escape(data.text) + ")";
}

template <typename C, typename S>
std::string Dump(const HTML::WhiteSpaceSimpleParserData<C, S>& data) {
    return DumpText(data);
}

template <typename C, typename S>
std::string Dump(const HTML::IdentifierSimpleParserData<C, S>& data) {
    return DumpText(data);
}

template <typename C, typename S>
std::string Dump(const HTML::SQuoteStringSimpleParserData<C, S>& data) {
    return DumpText(data);
}

template <typename C, typename S>
std::string Dump(const HTML::DQuoteStringSimpleParserData<C, S>& data) {
    return DumpText(data);
}

template <typename C, typename S>
std::string Dump(const HTML::JSRegExSimpleParserData<C, S>& data) {
    return DumpText(data);
}

template <typename C, typename S>
std::string Dump(const HTML::Escape2022SimpleParserData<C, S>& data) {
    return DumpText(data);
}

template <typename C, typename S>
std::string Dump(const HTML::JunkSimpleParserData<C, S>& data) {
    return DumpText(data);
}

template <typename C, typename S>
std::string Dump(const HTML::TextSimpleParserData<C, S>& data) {
    const std::string next = data.nextParserName.empty() ? "" : " next(" + Trace::Escape(data.nextParserName) + ")";
    return DumpText(data) + next;
}

template <typename C, typename S>
std::string Dump(const HTML::TokenSimpleParserData<C, S>& data) {
    HTML::EntityToken<C, S> token;
    token.prefix = data.prefix;
    token.value = data.value;
    token.quote = data.quote;
    return Trace::Format(token);
}

template <typename C, typename S>
std::string Dump(const HTML::AttributeSimpleParserData<C, S>& data) {
    if (data.hasValue == 0)
        return "{" + Trace::Escape(data.prefix) + "|" + Trace::Escape(data.name) + "|" + Trace::Escape(data.beforeEquals) + "}";
    HTML::Attribute<C, S> attribute;
    attribute.prefix = data.prefix;
    attribute.name = data.name;
    attribute.beforeEquals = data.beforeEquals;
    attribute.afterEquals = data.afterEquals;
    attribute.value = data.value;
    attribute.quote = data.quote;
    attribute.hasValue = true;
    return Trace::Format(attribute);
}

template <typename C, typename S>
std::string Dump(const HTML::GenericTagSimpleParserData<C, S>& data) {
    const std::string next = "next(" + Trace::Escape(data.nextParser) + ")";
    return data.keyword.empty() ? next : next + " keyword(" + Trace::Escape(data.keyword) + ")";
}

template <typename C, typename S>
std::string Dump(const HTML::StartTagSimpleParserData<C, S>& data) {
    std::string line = "start(" + Trace::Escape(data.prefix) + "|" + Trace::Escape(data.name) + "|";
    for (const HTML::Attribute<C, S>& attribute : data.attributes)
        line += Trace::Format(attribute);
    line += "|" + Trace::Escape(data.suffix);
    return line + (data.selfClosing ? ", short" : "") + (data.closed ? "" : ", open") + ")";
}

template <typename C, typename S>
std::string Dump(const HTML::EndTagSimpleParserData<C, S>& data) {
    std::string line = "end(" + Trace::Escape(data.prefix) + "|" + Trace::Escape(data.name) + "|" + Trace::Escape(data.afterName) + "|";
    for (const HTML::Attribute<C, S>& attribute : data.attributes)
        line += Trace::Format(attribute);
    line += "|" + Trace::Escape(data.suffix);
    return line + (data.slashBeforeClose ? ", slash" : "") + (data.closed ? "" : ", open") + ")";
}

template <typename C, typename S>
std::string Dump(const HTML::CommentTagSimpleParserData<C, S>& data) {
    return "comment(" + Trace::Escape(data.text) + (data.closed ? "" : ", open") + ")";
}

template <typename C, typename S>
std::string Dump(const HTML::CDATATagSimpleParserData<C, S>& data) {
    return "cdata(" + Trace::Escape(data.keyword) + "|" + Trace::Escape(data.text) + (data.closed ? "" : ", open") + ")";
}

template <typename C, typename S>
std::string Dump(const HTML::ConditionalTagSimpleParserData<C, S>& data) {
    const std::string strings = Trace::Escape(data.keyword) + "|" + Trace::Escape(data.condition) + "|" + Trace::Escape(data.tail);
    return "conditional(" + strings + (data.bracketClosed ? "" : ", no-bracket") + (data.tagClosed ? "" : ", open") + ")";
}

/// Text with what a hand-over leaves beside it.
template <typename Data>
std::string DumpScriptComment(const Data& data) {
    const std::string next = data.nextParserName.empty() ? "" : " next(" + Trace::Escape(data.nextParserName) + ")";
    const std::string keyword = data.keyword.empty() ? "" : " keyword(" + Trace::Escape(data.keyword) + ")";
    return DumpText(data) + next + keyword;
}

template <typename C, typename S>
std::string Dump(const HTML::CCommentSimpleParserData<C, S>& data) {
    return DumpScriptComment(data);
}

template <typename C, typename S>
std::string Dump(const HTML::CPPCommentSimpleParserData<C, S>& data) {
    return DumpScriptComment(data);
}

template <typename C, typename S>
std::string Dump(const HTML::EntityTagSimpleParserData<C, S>& data) {
    std::string line = "entity(" + Trace::Escape(data.prefix) + "|" + Trace::Escape(data.name) + "|";
    for (const HTML::EntityToken<C, S>& token : data.tokens)
        line += Trace::Format(token);
    return line + "|" + Trace::Escape(data.suffix) + ")";
}

template <typename C, typename S>
std::string Dump(const HTML::ExternTagFreeStyleSimpleParserData<C, S>& data) {
    return DumpText(data);
}

template <typename C, typename S>
std::string Dump(const HTML::ExternTagSimpleParserData<C, S>& data) {
    std::string line = "extern(" + Trace::Escape(data.prefix) + "|" + Trace::Escape(data.name) + "|";
    for (const HTML::Attribute<C, S>& attribute : data.attributes)
        line += Trace::Format(attribute);
    line += "|" + Trace::Escape(data.suffix) + (data.slashBeforeClose ? ", slash" : "") + ")";
    if (data.freeStyle)
        return line + " free(" + Trace::Escape(data.text) + ")";
    return data.text.empty() ? line : line + " " + DumpText(data);
}

}  // namespace Kestra::Test
