#include "platform/Vector.h"

#include <gtest/gtest.h>

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <limits>
#include <memory>
#include <new>
#include <random>
#include <ranges>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace Kestra {
namespace {

/// Longer than any string that is stored without a heap block.
const std::string LONG = "a text that does not fit into the string object itself";

/// Counts its living objects and fails in the n-th copy or move when told to.
struct Tracked {
    Tracked() : Tracked(0) {}
    explicit Tracked(int number) : value(number) {
        ++alive;
    }
    Tracked(const Tracked& other) : value(other.value) {
        CountCopy();
        ++alive;
    }
    Tracked(Tracked&& other) noexcept(false) : value(other.value) {
        CountCopy();
        ++alive;
        other.value = MOVED;
    }
    Tracked& operator=(const Tracked& other) {
        CountCopy();
        value = other.value;
        ++assignments;
        return *this;
    }
    ~Tracked() {
        --alive;
    }
    bool operator==(const Tracked& other) const {
        return value == other.value;
    }

    static void CountCopy() {
        if (failingCopy != 0 && --failingCopy == 0)
            throw std::runtime_error("copy");
    }
    static void Reset() {
        failingCopy = 0;
        assignments = 0;
    }

    static constexpr int MOVED = -1;

    int value;

    static int alive;
    static int assignments;
    static int failingCopy;  ///< 1 for the next one, 0 for none
};

int Tracked::alive = 0;
int Tracked::assignments = 0;
int Tracked::failingCopy = 0;

/// A page: no allocator aligns so far by chance.
struct alignas(4096) Aligned {
    char letter = 'x';
};

struct Unassignable {
    explicit Unassignable(std::string initial) : text(std::move(initial)) {}
    const std::string text;
};

struct OnlyLess {
    int value;
    bool operator<(const OnlyLess& other) const {
        return value < other.value;
    }
    bool operator==(const OnlyLess&) const = default;
};

template <typename T>
std::vector<T> Live(const Vector<T>& vector) {
    return std::vector<T>(vector.begin(), vector.end());
}

static_assert(std::ranges::contiguous_range<Vector<std::string>>);
static_assert(std::is_nothrow_move_constructible_v<Vector<Tracked>> &&
              std::is_nothrow_move_assignable_v<Vector<Tracked>>);
static_assert(std::is_same_v<decltype(Vector<double>() <=> Vector<double>()), std::partial_ordering>);

TEST(VectorTest, ConstructorsAndAssignments) {
    const std::vector<std::string> source = {"one", "two", "three"};
    std::istringstream words("one two three");
    Vector<std::string> moved = {"one", "two", "three"};
    const Vector<std::string> base = moved;

    struct Row {
        const char* note;
        std::function<Vector<std::string>()> make;
        std::vector<std::string> expected;
    };
    const Row rows[] = {
        {"default", [] { return Vector<std::string>(); }, {}},
        {"a number of value-initialized elements", [] { return Vector<std::string>(2); }, {"", ""}},
        {"a number of copies", [] { return Vector<std::string>(2, "x"); }, {"x", "x"}},
        {"no copies", [] { return Vector<std::string>(0, "x"); }, {}},
        {"a range", [&] { return Vector<std::string>(source.begin(), source.end()); }, source},
        {"a range that can be read once",
         [&] {
             return Vector<std::string>(std::istream_iterator<std::string>(words),
                                        std::istream_iterator<std::string>());
         },
         source},
        {"an initializer list",
         [] {
             return Vector<std::string>{"one", "two", "three"};
         },
         source},
        {"a copy", [&] { return Vector<std::string>(base); }, source},
        {"a move", [&] { return Vector<std::string>(std::move(moved)); }, source},
        {"copy assignment",
         [&] {
             Vector<std::string> target = {"a"};
             target = base;
             return target;
         },
         source},
        {"assignment to itself",
         [&] {
             Vector<std::string> target = base;
             const Vector<std::string>& same = target;
             target = same;
             return target;
         },
         source},
        {"a move to itself",
         [&] {
             Vector<std::string> target = base;
             Vector<std::string>& same = target;
             target = std::move(same);
             return target;
         },
         source},
        {"list assignment",
         [] {
             Vector<std::string> target = {"a", "b", "c"};
             target = {"x"};
             return target;
         },
         {"x"}},
        {"assign copies",
         [] {
             Vector<std::string> target = {"a", "b", "c"};
             target.assign(2, "x");
             return target;
         },
         {"x", "x"}},
        {"assign copies of an own element",
         [] {
             Vector<std::string> target = {"a", LONG};
             target.assign(3, target[1]);
             return target;
         },
         {LONG, LONG, LONG}},
        {"assign a range",
         [&] {
             Vector<std::string> target = {"a"};
             target.assign(source.begin(), source.end());
             return target;
         },
         source},
        {"assign a list",
         [] {
             Vector<std::string> target = {"a", "b"};
             target.assign({"x"});
             return target;
         },
         {"x"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        EXPECT_EQ(Live(row.make()), row.expected);
    }
    EXPECT_TRUE(moved.empty());
    EXPECT_EQ(moved.capacity(), 0U);
    EXPECT_EQ(Vector(source.begin(), source.end()), base);
}

TEST(VectorTest, Editing) {
    using Strings = Vector<std::string>;
    struct Row {
        const char* note;
        std::ptrdiff_t (*edit)(Strings& v);  ///< the index of the iterator returned
        std::vector<std::string> expected;
        std::ptrdiff_t index;
    };
    const Row rows[] = {
        // on "a", "b", "c", "d", "e"
        {"insert at the front",
         [](Strings& v) { return v.insert(v.begin(), "x") - v.begin(); },
         {"x", "a", "b", "c", "d", "e"},
         0},
        {"insert in the middle",
         [](Strings& v) { return v.insert(v.begin() + 2, "x") - v.begin(); },
         {"a", "b", "x", "c", "d", "e"},
         2},
        {"insert at the end",
         [](Strings& v) { return v.insert(v.end(), "x") - v.begin(); },
         {"a", "b", "c", "d", "e", "x"},
         5},
        {"insert an own element after the place",
         [](Strings& v) { return v.insert(v.begin() + 1, v[3]) - v.begin(); },
         {"a", "d", "b", "c", "d", "e"},
         1},
        {"insert copies of an own element",
         [](Strings& v) { return v.insert(v.begin() + 1, 2, v[4]) - v.begin(); },
         {"a", "e", "e", "b", "c", "d", "e"},
         1},
        {"insert no copies",
         [](Strings& v) { return v.insert(v.begin() + 1, 0, "x") - v.begin(); },
         {"a", "b", "c", "d", "e"},
         1},
        {"insert a list",
         [](Strings& v) {
             return v.insert(v.begin() + 4, {"x", "y"}) - v.begin();
         },
         {"a", "b", "c", "d", "x", "y", "e"},
         4},
        {"emplace in the middle",
         [](Strings& v) { return v.emplace(v.begin() + 3, 3U, 'x') - v.begin(); },
         {"a", "b", "c", "xxx", "d", "e"},
         3},
        {"erase the first", [](Strings& v) { return v.erase(v.begin()) - v.begin(); }, {"b", "c", "d", "e"}, 0},
        {"erase in the middle", [](Strings& v) { return v.erase(v.begin() + 2) - v.begin(); }, {"a", "b", "d", "e"}, 2},
        {"erase the last", [](Strings& v) { return v.erase(v.end() - 1) - v.begin(); }, {"a", "b", "c", "d"}, 4},
        {"erase a range with more after it than in it",
         [](Strings& v) { return v.erase(v.begin(), v.begin() + 2) - v.begin(); },
         {"c", "d", "e"},
         0},
        {"erase a range with less after it than in it",
         [](Strings& v) { return v.erase(v.begin() + 1, v.begin() + 4) - v.begin(); },
         {"a", "e"},
         1},
        {"erase everything", [](Strings& v) { return v.erase(v.begin(), v.end()) - v.begin(); }, {}, 0},
        {"erase nothing",
         [](Strings& v) { return v.erase(v.begin() + 3, v.begin() + 3) - v.begin(); },
         {"a", "b", "c", "d", "e"},
         3},
        {"truncate",
         [](Strings& v) {
             v.Truncate(2);
             return v.end() - v.begin();
         },
         {"a", "b"},
         2},
        {"truncate after the end",
         [](Strings& v) {
             v.Truncate(9);
             return v.end() - v.begin();
         },
         {"a", "b", "c", "d", "e"},
         5},
        {"resize down",
         [](Strings& v) {
             v.resize(1);
             return v.end() - v.begin();
         },
         {"a"},
         1},
        {"resize up over kept elements gives empty ones",
         [](Strings& v) {
             v.resize(3);
             v.resize(7);
             return v.end() - v.begin();
         },
         {"a", "b", "c", "", "", "", ""},
         7},
        {"resize up with copies of an own element",
         [](Strings& v) {
             v.resize(4);
             v.resize(7, v[1]);
             return v.end() - v.begin();
         },
         {"a", "b", "c", "d", "b", "b", "b"},
         7},
        {"resize down with a value",
         [](Strings& v) {
             v.resize(2, "x");
             return v.end() - v.begin();
         },
         {"a", "b"},
         2},
    };
    for (const Row& row : rows) {
        for (const bool roomy : {false, true}) {
            SCOPED_TRACE(std::string(row.note) + (roomy ? ", kept elements after" : ", storage full"));
            Strings v = {"a", "b", "c", "d", "e"};
            if (roomy) {
                v.resize(12, LONG);
                v.resize(5);
            }
            EXPECT_EQ(row.edit(v), row.index);
            EXPECT_EQ(Live(v), row.expected);
        }
    }
}

TEST(VectorTest, AccessAndIterators) {
    Vector<int> v = {1, 2, 3};
    const Vector<int>& fixed = v;
    EXPECT_EQ(v.front(), 1);
    EXPECT_EQ(fixed.back(), 3);
    EXPECT_EQ(fixed[1], 2);
    EXPECT_EQ(*fixed.data(), 1);
    EXPECT_EQ(std::vector<int>(v.rbegin(), v.rend()), (std::vector<int>{3, 2, 1}));
    EXPECT_EQ(std::vector<int>(fixed.crbegin(), fixed.crend()), (std::vector<int>{3, 2, 1}));
    EXPECT_EQ(std::vector<int>(v.cbegin(), v.cend()), (std::vector<int>{1, 2, 3}));
    v.at(2) = 7;
    v.pop_back();
    EXPECT_EQ(fixed.at(1), 2);
    EXPECT_THROW(v.at(2), std::out_of_range);  // kept, but not an element
    EXPECT_THROW(fixed.at(99), std::out_of_range);

    Vector<int> empty;
    EXPECT_TRUE(empty.empty());
    EXPECT_EQ(empty.begin(), empty.end());
    swap(v, empty);
    EXPECT_TRUE(v.empty());
    EXPECT_EQ(empty.size(), 2U);
}

TEST(VectorTest, Comparisons) {
    using Ints = Vector<int>;
    struct Row {
        Ints left;
        Ints right;
        std::strong_ordering expected;
    };
    const Row rows[] = {
        {{}, {}, std::strong_ordering::equal},           {{1}, {}, std::strong_ordering::greater},
        {{1, 2}, {1, 2}, std::strong_ordering::equal},   {{1, 2}, {1, 3}, std::strong_ordering::less},
        {{1, 2}, {1, 2, 0}, std::strong_ordering::less}, {{2}, {1, 9, 9}, std::strong_ordering::greater},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(row.left <=> row.right, row.expected);
        EXPECT_EQ(row.left == row.right, row.expected == 0);
    }
    Ints shorter = {1, 2};
    shorter.pop_back();
    EXPECT_EQ(shorter, Ints{1});  // a kept element does not count
    EXPECT_LT((Vector<OnlyLess>{{1}, {2}}), (Vector<OnlyLess>{{1}, {3}}));
    EXPECT_GT((Vector<OnlyLess>{{2}}), (Vector<OnlyLess>{{1}, {3}}));
    EXPECT_EQ((Vector<OnlyLess>{{2}} <=> Vector<OnlyLess>{{2}}), std::weak_ordering::equivalent);
}

TEST(VectorTest, AppendingReusesTheBuffersOfDroppedElements) {
    using Strings = Vector<std::string>;
    struct Row {
        const char* note;
        void (*drop)(Strings& v);    ///< from three long strings down to the first
        void (*append)(Strings& v);  ///< a short second one
        const char* expected;
    };
    const Row rows[] = {
        {"truncate, recycle", [](Strings& v) { v.Truncate(1); }, [](Strings& v) { v.AppendRecycled() = "x"; }, "x"},
        {"truncate, recycle as it was", [](Strings& v) { v.Truncate(1); }, [](Strings& v) { v.AppendRecycled(); },
         LONG.c_str()},
        {"resize, push back", [](Strings& v) { v.resize(1); }, [](Strings& v) { v.push_back(v[0]); }, LONG.c_str()},
        {"pop back, resize", [](Strings& v) { v.pop_back(), v.pop_back(); }, [](Strings& v) { v.resize(2); }, ""},
        {"erase the first, insert", [](Strings& v) { v.erase(v.begin(), v.begin() + 2); },
         [](Strings& v) { v.insert(v.end(), {"x"}); }, "x"},
        {"erase the last, resize with a value", [](Strings& v) { v.erase(v.begin() + 1, v.end()); },
         [](Strings& v) { v.resize(2, "x"); }, "x"},
        {"clear, assign", [](Strings& v) { v.clear(); },
         [](Strings& v) {
             v.assign({LONG, "x"});
         },
         "x"},
        {"clear, copy", [](Strings& v) { v.clear(); },
         [](Strings& v) {
             const Strings source = {"x", "y"};
             v = source;
         },
         "y"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        Strings v(3, LONG);
        std::set<const char*> buffers;
        for (const std::string& text : v)
            buffers.insert(text.data());
        row.drop(v);
        row.append(v);
        ASSERT_EQ(v.size(), 2U);
        EXPECT_EQ(v[1], row.expected);
        for (const std::string& text : v)
            EXPECT_EQ(buffers.count(text.data()), 1U);
    }
}

TEST(VectorTest, ErasedElementsKeepTheirBuffersAfterTheLiveOnes) {
    Vector<std::vector<int>> v(4, std::vector<int>(10));
    const int* const erased = v[1].data();
    const int* const last = v[3].data();
    v.erase(v.begin() + 1);
    EXPECT_EQ(v[2].data(), last);
    EXPECT_EQ(v.AppendRecycled().data(), erased);
}

TEST(VectorTest, ConstructedSizeCountsTheKeptElementsToo) {
    Vector<std::string> v;
    EXPECT_EQ(v.ConstructedSize(), 0U);
    v = {"a", "b", "c"};
    v.Truncate(1);
    EXPECT_EQ(v.ConstructedSize(), 3U);
    EXPECT_EQ(v.data()[2], "c");
    v.reserve(100);
    EXPECT_EQ(v.ConstructedSize(), 3U);
    v.shrink_to_fit();
    EXPECT_EQ(v.ConstructedSize(), 1U);
}

TEST(VectorTest, AppendRecycledValueInitializesWhenNothingIsKept) {
    Vector<int> v;
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(v.AppendRecycled(), 0);
    v.back() = 5;
    v.pop_back();
    EXPECT_EQ(v.AppendRecycled(), 5);
    EXPECT_EQ(v.size(), 9U);
}

TEST(VectorTest, KeptElementsMoveAlongWhenTheStorageGrows) {
    Vector<std::string> v(3, LONG);
    const char* const buffer = v[2].data();
    v.Truncate(1);
    v.reserve(100);
    v.AppendRecycled();
    EXPECT_EQ(v.AppendRecycled().data(), buffer);
    EXPECT_EQ(v.capacity(), 100U);
}

TEST(VectorTest, DroppedElementsAreDestroyedLate) {
    Tracked::Reset();
    {
        Vector<Tracked> v(5, Tracked(1));
        v.clear();
        EXPECT_EQ(Tracked::alive, 5);
        v.push_back(Tracked(2));
        EXPECT_EQ(Tracked::alive, 5);
        EXPECT_EQ(Tracked::assignments, 1);
        const Vector<Tracked> copy = v;
        EXPECT_EQ(Tracked::alive, 6);  // the copy has no kept ones
        EXPECT_EQ(copy.capacity(), 1U);
        v.shrink_to_fit();
        EXPECT_EQ(Tracked::alive, 2);
        EXPECT_EQ(v.capacity(), 1U);
        v.clear();
        v.shrink_to_fit();
        EXPECT_EQ(Tracked::alive, 1);
        EXPECT_EQ(v.data(), nullptr);
        v.resize(3);
        v.clear();
        v = Vector<Tracked>(2);
        EXPECT_EQ(Tracked::alive, 3);
        Vector<Tracked> taken = std::move(v);
        EXPECT_EQ(Tracked::alive, 3);
        EXPECT_EQ(taken.size(), 2U);
        taken.pop_back();
    }
    EXPECT_EQ(Tracked::alive, 0);
}

TEST(VectorTest, CopyAssignmentAssignsIntoTheElementsOfTheTarget) {
    Tracked::Reset();
    const Vector<Tracked> source(3, Tracked(7));
    Vector<Tracked> target(4);
    target.clear();
    target = source;
    EXPECT_EQ(Tracked::assignments, 3);
    EXPECT_EQ(target, source);
}

TEST(VectorTest, ElementsOfTheVectorCanBeAppendedToIt) {
    Vector<std::string> v;
    v.push_back(LONG);
    for (int i = 0; i < 40; ++i) {
        if (i % 2 == 0)
            v.push_back(v[0]);
        else
            v.emplace_back(v.front());
        EXPECT_EQ(v.back(), LONG);
        EXPECT_EQ(v.front(), LONG);
    }
    std::string& moved = v.emplace_back(std::move(v[3]));
    EXPECT_EQ(moved, LONG);
    v.pop_back();
    v.push_back(std::move(v[4]));
    EXPECT_EQ(v.back(), LONG);
}

TEST(VectorTest, CapacityGrowsByDoublingAndIsExactWhenTheSizeIsKnown) {
    Vector<int> v;
    std::vector<std::size_t> capacities;
    for (int i = 0; i < 33; ++i) {
        v.push_back(i);
        if (capacities.empty() || capacities.back() != v.capacity())
            capacities.push_back(v.capacity());
    }
    EXPECT_EQ(capacities, (std::vector<std::size_t>{4, 8, 16, 32, 64}));
    v.reserve(10);
    EXPECT_EQ(v.capacity(), 64U);
    v.shrink_to_fit();
    EXPECT_EQ(v.capacity(), 33U);
    EXPECT_EQ(Vector<int>(v).capacity(), 33U);
    EXPECT_EQ(Vector<int>(5).capacity(), 5U);
}

TEST(VectorTest, SizesThatCannotBe) {
    Vector<std::string> v = {LONG};
    const std::size_t tooMany = v.max_size() + 1;
    EXPECT_LE(v.max_size(), static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max()));
    EXPECT_THROW(v.reserve(tooMany), std::length_error);
    EXPECT_THROW(v.resize(tooMany), std::length_error);
    EXPECT_THROW(v.resize(tooMany, "x"), std::length_error);
    EXPECT_THROW(v.insert(v.begin(), std::numeric_limits<std::size_t>::max(), "x"), std::length_error);
    EXPECT_THROW(Vector<std::string>{tooMany}, std::length_error);
    EXPECT_EQ(Live(v), std::vector<std::string>{LONG});
}

TEST(VectorTest, EmplaceBackOverKeptElementsBuildsANewOne) {
    Vector<std::string> v(5, LONG);
    v.clear();
    EXPECT_EQ(v.emplace_back(), "");
    EXPECT_EQ(v.emplace_back("text"), "text");
    EXPECT_EQ(v.emplace_back(2U, 'x'), "xx");
    EXPECT_EQ(v.emplace_back(v[1]), "text");
    EXPECT_EQ(v.size(), 4U);
    Vector<int> numbers = {7};
    numbers.pop_back();
    EXPECT_EQ(numbers.emplace_back(), 0);
}

TEST(VectorTest, MoveOnlyElements) {
    Vector<std::unique_ptr<int>> v;
    for (int i = 0; i < 10; ++i)
        v.push_back(std::make_unique<int>(i));
    v.erase(v.begin() + 2, v.begin() + 9);
    v.emplace_back(new int(20));
    v.insert(v.begin(), std::make_unique<int>(30));
    v.emplace_back();
    std::vector<int> values;
    for (const std::unique_ptr<int>& element : v)
        values.push_back(element ? *element : -1);
    EXPECT_EQ(values, (std::vector<int>{30, 0, 1, 9, 20, -1}));
}

TEST(VectorTest, ElementsWithoutAssignment) {
    Vector<Unassignable> v;
    for (int i = 0; i < 6; ++i)
        v.emplace_back(LONG);
    v.Truncate(1);
    v.push_back(Unassignable("x"));
    v.emplace_back("y");
    v.emplace_back(v[0]);
    v.pop_back();
    v.pop_back();
    v.emplace_back("z");
    ASSERT_EQ(v.size(), 3U);
    EXPECT_EQ(v[0].text + v[1].text + v[2].text, LONG + "xz");
}

TEST(VectorTest, AlignedElements) {
    Vector<Aligned> v;
    for (int i = 0; i < 20; ++i) {
        v.AppendRecycled().letter = static_cast<char>('a' + i);
        ASSERT_EQ(reinterpret_cast<std::uintptr_t>(v.data()) % alignof(Aligned), 0U);
    }
    EXPECT_EQ(v[19].letter, 't');
}

TEST(VectorTest, BoolIsAnElementLikeAnyOther) {
    Vector<bool> v = {true, false};
    bool& first = v.front();
    first = false;
    EXPECT_EQ(v, (Vector<bool>{false, false}));
}

/// Every operation that copies, with the failure in each of its copies in turn: nothing leaks, and
/// nothing is appended half.
TEST(VectorTest, AFailedCopyLeavesTheVectorAsItWas) {
    using Trackeds = Vector<Tracked>;
    const std::vector<Tracked> source(3, Tracked(8));
    struct Row {
        const char* note;
        std::function<void(Trackeds& v)> change;
    };
    const Row rows[] = {
        {"push back", [&](Trackeds& v) { v.push_back(source[0]); }},
        {"push back a temporary", [](Trackeds& v) { v.push_back(Tracked(8)); }},
        {"emplace back", [](Trackeds& v) { v.emplace_back(8); }},
        {"recycle", [](Trackeds& v) { v.AppendRecycled(); }},
        {"reserve", [](Trackeds& v) { v.reserve(50); }},
        {"resize", [](Trackeds& v) { v.resize(9); }},
        {"resize with a value", [&](Trackeds& v) { v.resize(9, source[0]); }},
        {"append a range", [&](Trackeds& v) { v.insert(v.end(), source.begin(), source.end()); }},
        {"append copies", [&](Trackeds& v) { v.insert(v.end(), 3, source[0]); }},
        {"copy", [](Trackeds& v) { Trackeds copy(v); }},
        {"copies", [&](Trackeds&) { Trackeds copies(4, source[0]); }},
    };
    const std::vector<Tracked> expected = {Tracked(1), Tracked(2), Tracked(3), Tracked(4)};
    for (const Row& row : rows) {
        for (const std::size_t kept : {0U, 2U, 8U}) {
            bool failed = true;
            for (int copy = 1; failed; ++copy) {
                SCOPED_TRACE(std::string(row.note) + ", kept " + std::to_string(kept) + ", copy " +
                             std::to_string(copy));
                const int before = Tracked::alive;
                {
                    Trackeds v(expected.begin(), expected.end());
                    v.resize(v.size() + kept);
                    v.resize(expected.size());
                    Tracked::failingCopy = copy;
                    try {
                        row.change(v);
                        failed = false;
                    } catch (const std::runtime_error&) {
                        EXPECT_EQ(Live(v), expected);
                    }
                    Tracked::Reset();
                }
                EXPECT_EQ(Tracked::alive, before);
            }
        }
    }
}

/// The same operations on a `std::vector` and on ours give the same elements.
TEST(VectorTest, AgreesWithTheStandardVectorOverRandomOperations) {
    for (unsigned seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const auto below = [&random](std::size_t limit) { return static_cast<std::size_t>(random() % limit); };
        Vector<std::string> ours;
        std::vector<std::string> theirs;
        for (int step = 0; step < 3000; ++step) {
            const std::string text = std::to_string(step) + (below(2) == 0 ? LONG : "");
            const std::size_t place = below(theirs.size() + 1);
            const auto offset = static_cast<std::ptrdiff_t>(place);
            const std::size_t number = below(4);
            switch (theirs.size() > 60 ? 9 : below(12)) {
                case 0:
                    ours.push_back(text);
                    theirs.push_back(text);
                    break;
                case 1:
                    ours.emplace_back(number, 'x');
                    theirs.emplace_back(number, 'x');
                    break;
                case 2:
                    ours.AppendRecycled() = text;
                    theirs.push_back(text);
                    break;
                case 3:
                    ours.insert(ours.begin() + offset, text);
                    theirs.insert(theirs.begin() + offset, text);
                    break;
                case 4:
                    ours.insert(ours.begin() + offset, number, text);
                    theirs.insert(theirs.begin() + offset, number, text);
                    break;
                case 5: {
                    const std::vector<std::string> more(number, text);
                    ours.insert(ours.begin() + offset, more.begin(), more.end());
                    theirs.insert(theirs.begin() + offset, more.begin(), more.end());
                    break;
                }
                case 6:
                    if (place < theirs.size()) {
                        ours.push_back(ours[place]);
                        theirs.push_back(std::string(theirs[place]));
                    }
                    break;
                case 7:
                    if (place < theirs.size()) {
                        ours.erase(ours.begin() + offset);
                        theirs.erase(theirs.begin() + offset);
                    }
                    break;
                case 8:
                    ours.resize(place + number);
                    theirs.resize(place + number);
                    break;
                case 9: {
                    const auto end = offset + static_cast<std::ptrdiff_t>(below(theirs.size() - place + 1));
                    ours.erase(ours.begin() + offset, ours.begin() + end);
                    theirs.erase(theirs.begin() + offset, theirs.begin() + end);
                    break;
                }
                case 10:
                    if (number == 0)
                        ours.shrink_to_fit();
                    else
                        ours.reserve(ours.size() + number);
                    break;
                case 11:
                    ours.Truncate(place);
                    theirs.resize(place);
                    break;
            }
            ASSERT_EQ(Live(ours), theirs) << "step " << step;
        }
    }
}

}  // namespace
}  // namespace Kestra
