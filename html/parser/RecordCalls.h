#pragma once

#include "html/framework/ParserObserver.h"

/// @file
/// From a record to the callback of its kind, for code that handles all kinds alike. Not installed.

namespace Kestra::HTML {

template <typename C, typename S>
void CallObserver(ParserObserver<C, S>* observer, TextData<C, S>* data) {
    observer->OnText(data);
}

template <typename C, typename S>
void CallObserver(ParserObserver<C, S>* observer, CCommentData<C, S>* data) {
    observer->OnCComment(data);
}

template <typename C, typename S>
void CallObserver(ParserObserver<C, S>* observer, CPPCommentData<C, S>* data) {
    observer->OnCPPComment(data);
}

template <typename C, typename S>
void CallObserver(ParserObserver<C, S>* observer, SQuoteStringData<C, S>* data) {
    observer->OnSQuoteString(data);
}

template <typename C, typename S>
void CallObserver(ParserObserver<C, S>* observer, DQuoteStringData<C, S>* data) {
    observer->OnDQuoteString(data);
}

template <typename C, typename S>
void CallObserver(ParserObserver<C, S>* observer, StartTagData<C, S>* data) {
    observer->OnStartTag(data);
}

template <typename C, typename S>
void CallObserver(ParserObserver<C, S>* observer, ShortTagData<C, S>* data) {
    observer->OnShortTag(data);
}

template <typename C, typename S>
void CallObserver(ParserObserver<C, S>* observer, EndTagData<C, S>* data) {
    observer->OnEndTag(data);
}

template <typename C, typename S>
void CallObserver(ParserObserver<C, S>* observer, CDATATagData<C, S>* data) {
    observer->OnCDATATag(data);
}

template <typename C, typename S>
void CallObserver(ParserObserver<C, S>* observer, ConditionalTagData<C, S>* data) {
    observer->OnConditionalTag(data);
}

template <typename C, typename S>
void CallObserver(ParserObserver<C, S>* observer, CommentTagData<C, S>* data) {
    observer->OnCommentTag(data);
}

template <typename C, typename S>
void CallObserver(ParserObserver<C, S>* observer, EntityTagData<C, S>* data) {
    observer->OnEntityTag(data);
}

template <typename C, typename S>
void CallObserver(ParserObserver<C, S>* observer, ExternTagData<C, S>* data) {
    observer->OnExternTag(data);
}

template <typename C, typename S>
void CallObserver(ParserObserver<C, S>* observer, JunkData<C, S>* data) {
    observer->OnJunkData(data);
}

}  // namespace Kestra::HTML
