#pragma once

#include <cstdint>

#include "html/parser/RecognizerBuffers.h"
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

namespace Kestra::HTML {

/// A recognizer with its state record.
template <typename R>
struct Recognition {
    using Recognizer = R;

    R recognizer;
    typename R::Data data;

    std::uint32_t Begin() {
        return recognizer.BeginParse(&data);
    }
    template <typename Context>
    std::uint32_t Parse(Context* context) {
        return recognizer.Parse(context, &data);
    }
    std::uint32_t End() {
        return recognizer.EndParse(&data);
    }
};

/// One recognizer for each construct. Not installed.
template <typename C, typename S>
struct Recognizers {
    Recognition<TextSimpleParser<C, S>> text;  ///< its record has the pending text, raw text included
    Recognition<GenericTagSimpleParser<C, S>> genericTag;
    Recognition<StartTagSimpleParser<C, S>> startTag;
    Recognition<CommentTagSimpleParser<C, S>> commentTag;
    Recognition<CDATATagSimpleParser<C, S>> cdataTag;
    Recognition<ConditionalTagSimpleParser<C, S>> conditionalTag;
    Recognition<EndTagSimpleParser<C, S>> endTag;
    Recognition<ExternTagSimpleParser<C, S>> externTag;
    Recognition<EntityTagSimpleParser<C, S>> entityTag;
    Recognition<CCommentSimpleParser<C, S>> cComment;
    Recognition<CPPCommentSimpleParser<C, S>> cppComment;
    Recognition<SQuoteStringSimpleParser<C, S>> sQuoteString;
    Recognition<DQuoteStringSimpleParser<C, S>> dQuoteString;
    Recognition<JunkSimpleParser<C, S>> junk;
    Recognition<JSRegExSimpleParser<C, S>> jsRegEx;
    RawText<C, S> rawText;

    /// @param attributes  of a tag or an instruction that are not too many
    /// @param items       of a declaration
    void SetMaxParts(std::size_t attributes, std::size_t items) {
        SetMaxParts(&startTag, attributes);
        SetMaxParts(&endTag, attributes);
        SetMaxParts(&externTag, attributes);
        SetMaxParts(&entityTag, items);
    }

    /// The capacity of the lists of attributes and items.
    std::size_t GetRoomOfLists() const {
        return startTag.data.attributes.capacity() + endTag.data.attributes.capacity() +
               externTag.data.attributes.capacity() + entityTag.data.tokens.capacity();
    }

    /// Calls a visitor with everything that is retained for the next tokens: everything except the
    /// text or the junk that is being read.
    template <typename Visitor>
    void VisitBuffers(bool isInJunk, Visitor& visit) {
        if (text.data.text.empty() && text.data.state == 0)
            VisitBuffers(text, visit);
        VisitBuffers(genericTag, visit);
        VisitBuffers(startTag, visit);
        VisitBuffers(endTag, visit);
        VisitBuffers(commentTag, visit);
        VisitBuffers(cdataTag, visit);
        VisitBuffers(conditionalTag, visit);
        VisitBuffers(entityTag, visit);
        VisitBuffers(externTag, visit);
        VisitBuffers(cComment, visit);
        VisitBuffers(cppComment, visit);
        VisitBuffers(sQuoteString, visit);
        VisitBuffers(dQuoteString, visit);
        if (!isInJunk)
            VisitBuffers(junk, visit);
        VisitBuffers(jsRegEx, visit);
        RecognizerBuffers<C, S>::Visit(rawText, visit);
    }

private:
    template <typename R>
    static void SetMaxParts(Recognition<R>* of, std::size_t count) {
        R::Internals::SetMaxParts(of->recognizer, count);
    }

    template <typename R, typename Visitor>
    static void VisitBuffers(Recognition<R>& of, Visitor& visit) {
        RecognizerBuffers<C, S>::Visit(of.recognizer, of.data, visit);
    }
};

}  // namespace Kestra::HTML
