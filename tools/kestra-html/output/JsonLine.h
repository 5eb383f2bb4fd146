#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "html/framework/Attribute.h"
#include "html/framework/EntityToken.h"
#include "html/framework/TokenPlace.h"
#include "html/parser/GenericParser.h"
#include "platform/Characters.h"
#include "platform/Vector.h"
#include "tools/kestra-html/input/CallResults.h"
#include "tools/kestra-html/output/JsonText.h"
#include "tools/kestra-html/output/LineSink.h"

namespace Kestra::Tool {

/// One JSON object on one line, member by member in the order of the calls.
class JsonLine {
public:
    explicit JsonLine(LineSink* lineSink);

    void Begin();
    /// Begins with the member `event`.
    void Begin(std::string_view event);
    void End();

    // What writes a member is inlined: its name, a constant, is then copied without a loop.

    [[gnu::always_inline]] void Null(const char* name) {
        text.Name(name);
        text.Null();
    }
    [[gnu::always_inline]] void Bool(const char* name, bool value) {
        text.Name(name);
        text.Bool(value);
    }
    [[gnu::always_inline]] void Number(const char* name, std::uint64_t value) {
        text.Name(name);
        text.Number(value);
    }
    /// A null pointer is written as `null`.
    [[gnu::always_inline]] void String(const char* name, const std::string* bytes) {
        Optional(name, bytes);
    }
    [[gnu::always_inline]] void String(const char* name, const WideString* value) {
        Optional(name, value);
    }
    /// The same for a NUL-terminated string.
    void String(const char* name, const WideChar* value);
    /// The members `startParse`, `parse`, `endParse`, `line` and `column`.
    void Calls(const CallResults& results);
    /// The member `file`. Names are UTF-8; a byte that is not is written as U+FFFD.
    void File(const std::string& inputName);
    /// A null list is written as `null`. An item is an object, a string, or for a pair an array of
    /// two strings. The place of an attribute whose value begins where its name ends is that of one
    /// without a value.
    template <typename T>
    [[gnu::always_inline]] void List(const char* name, const Vector<T>* items) {
        text.Name(name);
        if (items == nullptr)
            text.Null();
        else
            Items(*items);
    }
    /// The attributes of the tag or instruction that a parser is delivering, each with its three
    /// places.
    template <typename C, typename S>
    void PlacedAttributes(const char* name, const Vector<HTML::Attribute<C, S>>* attributes,
                          const HTML::GenericParser& parser);
    /// The members `begin`, `end`, `line` and `column`.
    void Place(const HTML::TokenPlace& place);

private:
    template <typename S>
    [[gnu::always_inline]] void Optional(const char* name, const S* value) {
        text.Name(name);
        if (value == nullptr)
            text.Null();
        else
            text.String(*value);
    }
    template <typename T>
    void Items(const Vector<T>& items);
    template <template <typename, typename> class Part, typename C, typename S>
    void Item(const Part<C, S>& part);
    template <template <typename, typename> class Part, typename C, typename S>
    void Fields(const Part<C, S>& part);
    template <typename S>
    [[gnu::always_inline]] void Field(const char* name, const S& value) {
        String(name, &value);
    }
    [[gnu::always_inline]] void Field(const char* name, std::uint32_t number) {
        Number(name, number);
    }
    [[gnu::always_inline]] void Field(const char* name, bool value) {
        Bool(name, value);
    }
    void Place(const HTML::AttributePlace& place, bool hasValue);
    template <typename S>
    void Item(const std::pair<S, S>& nameAndValue);
    void Item(const WideString& value);
    void Item(const HTML::AttributePlace& place);

    LineSink* sink;
    JsonText text;
};

}  // namespace Kestra::Tool
