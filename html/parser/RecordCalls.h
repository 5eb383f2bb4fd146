#pragma once

#include <type_traits>

#include "html/framework/RecordFields.h"

/// @file
/// From the state of a recognizer to the record of a token. Not installed.

namespace Kestra::HTML {

/// The record of a token that a recognizer has read. Each field points to the field of its name in
/// the state, or has its value.
template <template <typename, typename> class Record, template <typename, typename> class State, typename C, typename S>
Record<C, S> MakeRecord(const State<C, S>& state) {
    Record<C, S> record{};
    ForEachField<Record>([&record, &state](const auto& field) {
        if constexpr (std::is_pointer_v<std::remove_reference_t<decltype(field.In(record))>>)
            field.In(record) = &field.In(state);
        else
            field.In(record) = field.In(state);
    });
    return record;
}

}  // namespace Kestra::HTML
