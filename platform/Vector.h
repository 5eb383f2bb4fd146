#pragma once

#include <algorithm>
#include <compare>
#include <concepts>
#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <memory>
#include <new>
#include <stdexcept>
#include <type_traits>
#include <utility>

namespace Kestra {

/// A growable array with the interface of `std::vector` that keeps what it drops.
///
/// An element dropped by `clear`, `pop_back`, `erase`, `resize` or `Truncate` is not destroyed: it
/// stays constructed after `size()`, and the next one appended is assigned into it. A list of
/// strings that is filled, cleared and filled again therefore stops allocating as soon as its
/// strings are long enough. What follows from that:
///
/// * Destructors of dropped elements run late: when the vector is destroyed, is assigned to by a
///   move, or by `shrink_to_fit`. An element that owns a file or a lock is better reset before it
///   is dropped.
/// * An element appended where one is kept is made by assignment. `emplace_back` with constructor
///   arguments builds a temporary and moves it in, so only `push_back`, `assign`, `insert`,
///   `resize` and `AppendRecycled` reuse buffers.
/// * A copy holds the live elements only; a move takes the storage, kept elements included.
///
/// Iterators are plain pointers. They become invalid as those of `std::vector` do: all of them when
/// the storage grows, otherwise those from the place of the change on. Where `std::vector` promises
/// that a failed operation changes nothing, so does this class; any other exception leaves valid
/// elements. `insert` and `erase` need elements that can be swapped. An element type without
/// assignment works for everything that does not need it; its kept elements are destroyed by the
/// next append.
template <typename T>
class Vector {
public:
    using value_type = T;                                                  ///< an element
    using size_type = std::size_t;                                         ///< a number of elements, and an index
    using difference_type = std::ptrdiff_t;                                ///< the distance of two iterators
    using reference = T&;                                                  ///< an element in place
    using const_reference = const T&;                                      ///< an element in place, to be read
    using pointer = T*;                                                    ///< to an element
    using const_pointer = const T*;                                        ///< to an element, to be read
    using iterator = T*;                                                   ///< a plain pointer
    using const_iterator = const T*;                                       ///< a plain pointer, to read by
    using reverse_iterator = std::reverse_iterator<iterator>;              ///< from the last element to the first
    using const_reverse_iterator = std::reverse_iterator<const_iterator>;  ///< the same, to read by

    Vector() noexcept = default;

    /// `number` value-initialized elements.
    explicit Vector(size_type number) {
        Block block(number);
        std::uninitialized_value_construct_n(block.memory, number);
        Adopt(&block, number);
    }

    /// `number` copies of `value`.
    Vector(size_type number, const T& value) {
        Block block(number);
        std::uninitialized_fill_n(block.memory, number, value);
        Adopt(&block, number);
    }

    /// Copies of the elements of `[first, last)`.
    template <std::input_iterator Iterator>
    Vector(Iterator first, Iterator last) : Vector() {
        AppendRange(first, last);
    }

    /// Copies of `values`.
    Vector(std::initializer_list<T> values) : Vector(values.begin(), values.end()) {}

    /// Copies the live elements.
    Vector(const Vector& other) : Vector(other.begin(), other.end()) {}

    /// Takes the storage, and leaves the other one empty.
    Vector(Vector&& other) noexcept
        : storage(std::exchange(other.storage, nullptr)),
          live(std::exchange(other.live, 0)),
          constructed(std::exchange(other.constructed, 0)),
          room(std::exchange(other.room, 0)) {}

    /// Assigns into the elements that are there, kept ones included.
    Vector& operator=(const Vector& other) {
        if (this != &other)
            assign(other.begin(), other.end());
        return *this;
    }

    /// Takes the storage, and leaves the other one empty. The own elements are destroyed.
    Vector& operator=(Vector&& other) noexcept {
        Vector taken(std::move(other));
        swap(taken);
        return *this;
    }

    /// As `assign`.
    Vector& operator=(std::initializer_list<T> values) {
        assign(values.begin(), values.end());
        return *this;
    }

    ~Vector() {
        std::destroy_n(storage, constructed);
        Free(storage);
    }

    /// Replaces the elements by copies of those of `[first, last)`, which must not be its own.
    template <std::input_iterator Iterator>
    void assign(Iterator first, Iterator last) {
        live = 0;
        AppendRange(first, last);
    }

    /// Replaces the elements by `number` copies of `value`, which may be one of them.
    void assign(size_type number, const T& value) {
        const T copy(value);  // `value` may be an element of this vector
        live = 0;
        AppendCopies(number, copy);
    }

    /// Replaces the elements by copies of `values`.
    void assign(std::initializer_list<T> values) {
        assign(values.begin(), values.end());
    }

    /// @throws std::out_of_range when `index` is not below `size()`, even if an element is kept
    /// there.
    reference at(size_type index) {
        CheckIndex(index);
        return storage[index];
    }

    /// The same, to be read.
    const_reference at(size_type index) const {
        CheckIndex(index);
        return storage[index];
    }

    /// The element at `index`, which must be below `size()`.
    reference operator[](size_type index) noexcept {
        return storage[index];
    }

    /// The same, to be read.
    const_reference operator[](size_type index) const noexcept {
        return storage[index];
    }

    /// The first element. The vector must not be empty.
    reference front() noexcept {
        return *storage;
    }

    /// The same, to be read.
    const_reference front() const noexcept {
        return *storage;
    }

    /// The last element. The vector must not be empty.
    reference back() noexcept {
        return storage[live - 1];
    }

    /// The same, to be read.
    const_reference back() const noexcept {
        return storage[live - 1];
    }

    /// The first element; null when there is no storage.
    T* data() noexcept {
        return storage;
    }

    /// The same, to be read.
    const T* data() const noexcept {
        return storage;
    }

    /// The first element.
    iterator begin() noexcept {
        return storage;
    }

    /// The same, to be read.
    const_iterator begin() const noexcept {
        return storage;
    }

    /// The same, to be read.
    const_iterator cbegin() const noexcept {
        return storage;
    }

    /// After the last element; kept ones are not counted.
    iterator end() noexcept {
        return storage + live;
    }

    /// The same, to be read.
    const_iterator end() const noexcept {
        return storage + live;
    }

    /// The same, to be read.
    const_iterator cend() const noexcept {
        return storage + live;
    }

    /// The last element, to go to the first one from.
    reverse_iterator rbegin() noexcept {
        return reverse_iterator(end());
    }

    /// The same, to be read.
    const_reverse_iterator rbegin() const noexcept {
        return const_reverse_iterator(end());
    }

    /// The same, to be read.
    const_reverse_iterator crbegin() const noexcept {
        return const_reverse_iterator(end());
    }

    /// Before the first element.
    reverse_iterator rend() noexcept {
        return reverse_iterator(begin());
    }

    /// The same, to be read.
    const_reverse_iterator rend() const noexcept {
        return const_reverse_iterator(begin());
    }

    /// The same, to be read.
    const_reverse_iterator crend() const noexcept {
        return const_reverse_iterator(begin());
    }

    /// Whether there is no live element.
    [[nodiscard]] bool empty() const noexcept {
        return live == 0;
    }

    /// The live elements.
    size_type size() const noexcept {
        return live;
    }

    /// The most elements that fit into `PTRDIFF_MAX` bytes.
    size_type max_size() const noexcept {
        return MAX_SIZE_IN_BYTES / sizeof(T);
    }

    /// The elements, kept ones included, for which there is storage.
    size_type capacity() const noexcept {
        return room;
    }

    /// The live elements and, after them, the kept ones, which `data()` reaches as well.
    size_type ConstructedSize() const noexcept {
        return constructed;
    }

    /// Makes room for `number` elements in all.
    /// @throws std::length_error when `number` exceeds `max_size()`
    void reserve(size_type number) {
        if (number > room)
            Reallocate(number);
    }

    /// Destroys the kept elements and gives back the memory that the live ones do not need.
    void shrink_to_fit() {
        DestroyKept();
        if (room > live)
            Reallocate(live);
    }

    /// Drops all elements; their buffers are kept for the next ones.
    void clear() noexcept {
        live = 0;
    }

    /// Drops the elements from `number` on; nothing happens when there are no more than that.
    void Truncate(size_type number) noexcept {
        if (number < live)
            live = number;
    }

    /// Drops the last element. The vector must not be empty.
    void pop_back() noexcept {
        --live;
    }

    /// Appends a copy of `value`, which may be an element.
    void push_back(const T& value) {
        Append(value);
    }

    /// Appends `value` by a move.
    void push_back(T&& value) {
        Append(std::move(value));
    }

    /// Appends an element made of the arguments, and returns it.
    template <typename... Arguments>
    reference emplace_back(Arguments&&... arguments) {
        if constexpr (IS_ELEMENT<Arguments...>) {
            return Append(std::forward<Arguments>(arguments)...);
        } else {
            if (!HasKept())
                return Construct(std::forward<Arguments>(arguments)...);
            T element(std::forward<Arguments>(arguments)...);
            return Append(std::move(element));
        }
    }

    /// Appends an element with whatever content a dropped one left there, or a value-initialized
    /// one when none is kept. The caller sets every field.
    reference AppendRecycled() {
        if (live == constructed) [[unlikely]]
            return Construct();
        return storage[live++];
    }

    /// Inserts a copy of `value`, which may be an element, before `place`, and returns its place.
    iterator insert(const_iterator place, const T& value) {
        const size_type index = IndexOf(place);
        Append(value);
        return RotateIn(index, live - 1);
    }

    /// Inserts `value` by a move before `place`, and returns its place.
    iterator insert(const_iterator place, T&& value) {
        const size_type index = IndexOf(place);
        Append(std::move(value));
        return RotateIn(index, live - 1);
    }

    /// Inserts `number` copies of `value` before `place`, and returns the place of the first one.
    iterator insert(const_iterator place, size_type number, const T& value) {
        const size_type index = IndexOf(place);
        const size_type before = live;
        const T copy(value);  // `value` may be an element of this vector
        AppendCopies(number, copy);
        return RotateIn(index, before);
    }

    /// Inserts copies of the elements of `[first, last)`, which must not be its own, before
    /// `place`, and returns the place of the first one.
    template <std::input_iterator Iterator>
    iterator insert(const_iterator place, Iterator first, Iterator last) {
        const size_type index = IndexOf(place);
        const size_type before = live;
        AppendRange(first, last);
        return RotateIn(index, before);
    }

    /// The same with `values`.
    iterator insert(const_iterator place, std::initializer_list<T> values) {
        return insert(place, values.begin(), values.end());
    }

    /// Inserts an element made of the arguments before `place`, and returns its place.
    template <typename... Arguments>
    iterator emplace(const_iterator place, Arguments&&... arguments) {
        const size_type index = IndexOf(place);
        emplace_back(std::forward<Arguments>(arguments)...);
        return RotateIn(index, live - 1);
    }

    /// Drops the element at `place`, and returns the place of the next one.
    iterator erase(const_iterator place) {
        return erase(place, place + 1);
    }

    /// Drops the elements of `[first, last)`, and returns the place of the next one.
    ///
    /// Closes the gap by swapping, so that the dropped elements and their buffers end up after
    /// `size()`.
    iterator erase(const_iterator first, const_iterator last) {
        const size_type gap = IndexOf(first);
        const size_type number = static_cast<size_type>(last - first);
        if (number != 0) {
            for (size_type next = gap + number; next < live; ++next)
                std::iter_swap(storage + next - number, storage + next);
            live -= number;
        }
        return storage + gap;
    }

    /// Drops the elements from `number` on, or appends value-initialized ones up to `number`.
    void resize(size_type number) {
        if (number <= live) {
            live = number;
            return;
        }
        Transaction transaction(this);
        GrowTo(number);
        while (live < number) {
            if (HasKept())
                Append(T());
            else
                Construct();
        }
        transaction.Commit();
    }

    /// Drops the elements from `number` on, or appends copies of `value` up to `number`.
    void resize(size_type number, const T& value) {
        if (number <= live) {
            live = number;
            return;
        }
        const T copy(value);  // `value` may be an element of this vector
        AppendCopies(number - live, copy);
    }

    /// Exchanges the storage; iterators stay valid, and are those of the other vector.
    void swap(Vector& other) noexcept {
        std::swap(storage, other.storage);
        std::swap(live, other.live);
        std::swap(constructed, other.constructed);
        std::swap(room, other.room);
    }

    /// As the member.
    friend void swap(Vector& left, Vector& right) noexcept {
        left.swap(right);
    }

private:
    static constexpr size_type MAX_SIZE_IN_BYTES = static_cast<size_type>(std::numeric_limits<difference_type>::max());
    static constexpr size_type FIRST_CAPACITY = 4;  ///< more than most lists of attributes ever need

    /// True for exactly one argument that is an element itself.
    template <typename... Arguments>
    static constexpr bool IS_ELEMENT = sizeof...(Arguments) == 1 &&
                                       (std::is_same_v<std::remove_cvref_t<Arguments>, T> && ...);

    /// Raw memory that is given back unless a vector adopts it.
    struct Block {
        explicit Block(size_type number) : memory(Allocate(number)), capacity(number) {}
        Block(const Block&) = delete;
        Block& operator=(const Block&) = delete;
        ~Block() {
            Free(memory);
        }

        T* memory;
        size_type capacity;
    };

    /// Drops what was appended since its construction unless the whole was committed.
    struct Transaction {
        explicit Transaction(Vector* vector) : owner(vector), before(vector->live) {}
        Transaction(const Transaction&) = delete;
        Transaction& operator=(const Transaction&) = delete;
        ~Transaction() {
            owner->live = before;
        }
        void Commit() {
            before = owner->live;
        }

        Vector* owner;
        size_type before;
    };

    static T* Allocate(size_type number) {
        if (number > MAX_SIZE_IN_BYTES / sizeof(T))
            throw std::length_error("Kestra::Vector");
        if (number == 0)
            return nullptr;
        if constexpr (alignof(T) > __STDCPP_DEFAULT_NEW_ALIGNMENT__)
            return static_cast<T*>(::operator new(number * sizeof(T), std::align_val_t(alignof(T))));
        else
            return static_cast<T*>(::operator new(number * sizeof(T)));
    }

    static void Free(T* memory) noexcept {
        if constexpr (alignof(T) > __STDCPP_DEFAULT_NEW_ALIGNMENT__)
            ::operator delete(memory, std::align_val_t(alignof(T)));
        else
            ::operator delete(memory);
    }

    bool HasKept() const noexcept {
        return live < constructed;
    }

    size_type IndexOf(const_iterator place) const noexcept {
        return static_cast<size_type>(place - storage);
    }

    void CheckIndex(size_type index) const {
        if (index >= live)
            throw std::out_of_range("Kestra::Vector");
    }

    /// Takes a block whose first `number` elements are constructed. The vector has no storage
    /// before.
    void Adopt(Block* block, size_type number) noexcept {
        storage = std::exchange(block->memory, nullptr);
        room = block->capacity;
        live = number;
        constructed = number;
    }

    void DestroyKept() noexcept {
        std::destroy(storage + live, storage + constructed);
        constructed = live;
    }

    /// Moves all constructed elements into the beginning of `memory`, or copies them when a move
    /// could throw half-way.
    void Relocate(T* memory) {
        if constexpr (std::is_nothrow_move_constructible_v<T> || !std::is_copy_constructible_v<T>)
            std::uninitialized_move_n(storage, constructed, memory);
        else
            std::uninitialized_copy_n(storage, constructed, memory);
    }

    /// Replaces the storage by a block that already holds the relocated elements.
    void Replace(Block* block) noexcept {
        std::destroy_n(storage, constructed);
        std::swap(storage, block->memory);
        std::swap(room, block->capacity);
    }

    /// @param number  not below `constructed`; the maximum below only shows the compiler that the
    ///                elements fit
    void Reallocate(size_type number) {
        Block block(std::max(number, constructed));
        Relocate(block.memory);
        Replace(&block);
    }

    size_type GrownCapacity(size_type needed) const noexcept {
        const size_type doubled = room > max_size() / 2 ? max_size() : room * 2;
        return std::max({needed, doubled, std::min(FIRST_CAPACITY, max_size())});
    }

    /// Makes room for `number` elements, with some to spare when there is any storage yet.
    void GrowTo(size_type number) {
        if (number > room)
            Reallocate(room == 0 ? number : GrownCapacity(number));
    }

    /// Appends by construction. No element is kept when it is called, or all kept ones are lost.
    template <typename... Arguments>
    reference Construct(Arguments&&... arguments) {
        if (live == room) {
            Block block(GrownCapacity(live + 1));
            // First the new element: an argument may refer to an old one.
            T* const element = std::construct_at(block.memory + live, std::forward<Arguments>(arguments)...);
            try {
                Relocate(block.memory);
            } catch (...) {
                std::destroy_at(element);
                throw;
            }
            Replace(&block);
        } else {
            std::construct_at(storage + live, std::forward<Arguments>(arguments)...);
        }
        constructed = ++live;
        return storage[live - 1];
    }

    /// Appends by assignment into a kept element, or else by construction.
    template <typename Value>
    reference Append(Value&& value) {
        if constexpr (std::is_assignable_v<T&, Value&&>) {
            if (HasKept()) {
                storage[live] = std::forward<Value>(value);
                return storage[live++];
            }
        } else {
            DestroyKept();
        }
        return Construct(std::forward<Value>(value));
    }

    void AppendCopies(size_type number, const T& value) {
        if (number > max_size() - live)
            throw std::length_error("Kestra::Vector");
        Transaction transaction(this);
        GrowTo(live + number);
        for (; number > 0; --number)
            Append(value);
        transaction.Commit();
    }

    template <typename Iterator>
    void AppendRange(Iterator first, Iterator last) {
        Transaction transaction(this);
        if constexpr (std::forward_iterator<Iterator>)
            GrowTo(live + static_cast<size_type>(std::distance(first, last)));
        for (; first != last; ++first)
            Append(*first);
        transaction.Commit();
    }

    /// Moves the elements from `appended` to the end before `index`.
    iterator RotateIn(size_type index, size_type appended) {
        std::rotate(storage + index, storage + appended, storage + live);
        return storage + index;
    }

    T* storage = nullptr;
    size_type live = 0;         ///< elements in the vector
    size_type constructed = 0;  ///< the live ones and, after them, the kept ones
    size_type room = 0;         ///< elements that fit into the storage
};

/// The elements of a range.
template <std::input_iterator Iterator>
Vector(Iterator, Iterator) -> Vector<std::iter_value_t<Iterator>>;

/// Whether the live elements are equal, one by one.
template <typename T>
bool operator==(const Vector<T>& left, const Vector<T>& right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end());
}

/// Lexicographic. Elements that only have "<" are ordered weakly by it.
template <typename T>
requires requires(const T& left, const T& right) {
    { left < right } -> std::convertible_to<bool>;
}
auto operator<=>(const Vector<T>& left, const Vector<T>& right) {
    return std::lexicographical_compare_three_way(
        left.begin(), left.end(), right.begin(), right.end(), [](const T& leftElement, const T& rightElement) {
            if constexpr (std::three_way_comparable<T>) {
                return leftElement <=> rightElement;
            } else {
                if (leftElement < rightElement)
                    return std::weak_ordering::less;
                return rightElement < leftElement ? std::weak_ordering::greater : std::weak_ordering::equivalent;
            }
        });
}

}  // namespace Kestra
