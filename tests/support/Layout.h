#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "html/framework/RecordFields.h"

/// @file
/// The order of virtual operations and of fields, as hosts that were compiled before have it.

namespace Kestra::Test {

/// The entry of a virtual operation in its class's table, from 0. A virtual destructor takes two
/// entries.
///
/// Reads the representation that the Itanium C++ ABI gives to a pointer to a virtual member
/// function: 1 plus the offset of the entry in bytes. GCC and Clang keep to it on every platform of
/// ours, MinGW included.
template <typename Operation>
std::size_t SlotOf(Operation operation) {
    struct Representation {
        std::uintptr_t function;
        std::ptrdiff_t adjustment;
    } representation;
    static_assert(sizeof(operation) == sizeof(representation));
    std::memcpy(&representation, &operation, sizeof(representation));
    EXPECT_EQ(representation.function % 2, 1U) << "not a virtual operation";
    return static_cast<std::size_t>(representation.function / sizeof(void*));
}

/// Walks over the fields of an object in order, and expects each one right after the one before, as
/// its alignment allows.
template <typename T>
class FieldWalk {
public:
    /// @param baseSize  bytes before the first field
    FieldWalk(const T& walkedObject, std::size_t baseSize) : object(walkedObject), end(baseSize) {}

    /// @param field  one of the object
    template <typename Field>
    FieldWalk& Next(const char* name, const Field& field) {
        const auto* const begin = reinterpret_cast<const char*>(&object);
        const auto offset = static_cast<std::size_t>(reinterpret_cast<const char*>(&field) - begin);
        EXPECT_EQ(offset, AlignUp(alignof(Field))) << "field " << name;
        end = offset + sizeof(Field);
        return *this;
    }

    /// Expects no other field after the last one.
    void Last() {
        EXPECT_EQ(sizeof(T), AlignUp(alignof(T)));
    }

private:
    std::size_t AlignUp(std::size_t alignment) const {
        return (end + alignment - 1) / alignment * alignment;
    }

    const T& object;
    std::size_t end;
};

/// Expects a record to have the fields of the list, in this order and of these types, and no
/// others.
/// @param baseSize  bytes before the first field
template <template <typename, typename> class Record, typename C, typename S>
void ExpectFieldsOfList(std::size_t baseSize) {
    using R = Record<C, S>;
    const R record{};
    FieldWalk<R> walk(record, baseSize);
    HTML::ForEachField<Record>([&]<typename Tag, typename Getter>(const HTML::RecordField<Tag, Getter>& field) {
        using Type = typename Tag::template Type<C, S>;
        static_assert(std::is_same_v<decltype(field.In(record)), const Type&>);
        walk.Next(field.name, field.In(record));
    });
    walk.Last();
}

/// Expects that an object of the polymorphic class `Member` begins at the next aligned offset after
/// `*end`: it must start with the pointer to the table of its class.
template <typename Member, typename Composite>
void ExpectMember(const Composite& composite, std::size_t* end) {
    const Member sample{};
    const std::size_t begin = (*end + alignof(Member) - 1) / alignof(Member) * alignof(Member);
    *end = begin + sizeof(Member);
    ASSERT_LE(*end, sizeof(Composite));
    EXPECT_EQ(std::memcmp(reinterpret_cast<const char*>(&composite) + begin, reinterpret_cast<const char*>(&sample),
                          sizeof(void*)),
              0)
        << "another class at offset " << begin;
}

/// Expects the private members of a composite object to be objects of the polymorphic classes
/// `Members`, in this order, with nothing between them, and after them a setting of the driver
/// alone.
template <typename Setting, typename Composite, typename... Members>
void ExpectMembersAndSetting() {
    const Composite composite{};
    std::size_t end = sizeof(void*);
    (ExpectMember<Members>(composite, &end), ...);
    if constexpr (!std::is_void_v<Setting>)
        end = (end + alignof(Setting) - 1) / alignof(Setting) * alignof(Setting) + sizeof(Setting);
    EXPECT_EQ(sizeof(Composite), (end + alignof(Composite) - 1) / alignof(Composite) * alignof(Composite));
}

/// The same with nothing after them.
template <typename Composite, typename... Members>
void ExpectMembers() {
    ExpectMembersAndSetting<void, Composite, Members...>();
}

}  // namespace Kestra::Test
