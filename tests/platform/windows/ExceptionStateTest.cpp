#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <exception>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "platform/windows/WindowsApi.h"

// The state of exceptions that the library puts in the place of the runtime's: this program has it
// as the DLL does.

namespace Kestra {
namespace {

/// Throws and handles exceptions inside each other.
/// @return what they say in the order in which they are handled
std::string Nest(int depth, const std::string& name) {
    try {
        throw std::runtime_error(name + std::to_string(depth));
    } catch (const std::exception& outer) {
        const std::string inner = depth > 1 ? Nest(depth - 1, name) : "";
        try {
            throw;  // this one, although others have come and gone
        } catch (const std::runtime_error& again) {
            return std::string(outer.what()) + " " + again.what() + " " + inner;
        }
    }
}

TEST(WindowsExceptionStateTest, ExceptionsNest) {
    EXPECT_EQ(std::uncaught_exceptions(), 0);
    EXPECT_EQ(Nest(3, "x"), "x3 x3 x2 x2 x1 x1 ");
    EXPECT_EQ(std::uncaught_exceptions(), 0);
    EXPECT_EQ(std::current_exception(), nullptr);
}

TEST(WindowsExceptionStateTest, AnExceptionOnItsWayIsCounted) {
    struct Counter {
        int* count;
        ~Counter() {
            *count = std::uncaught_exceptions();
        }
    };
    int count = 0;
    try {
        const Counter counter = {&count};
        throw 7;
    } catch (int number) {
        EXPECT_EQ(number, 7);
        EXPECT_EQ(std::uncaught_exceptions(), 0);
    }
    EXPECT_EQ(count, 1);
}

/// More threads than have a state without the heap, twice, all handling an exception of their own
/// at once.
TEST(WindowsExceptionStateTest, EachThreadHandlesItsOwn) {
    const std::size_t size = 100;
    for (int round = 0; round < 2; ++round) {
        std::vector<std::string> seen(size);
        std::atomic<std::size_t> handling = 0;
        std::vector<std::thread> threads;
        for (std::size_t i = 0; i < size; ++i) {
            threads.emplace_back([&, i] {
                try {
                    throw i;
                } catch (std::size_t) {
                    ++handling;
                    while (handling < size)
                        Sleep(1);
                    try {
                        throw;
                    } catch (std::size_t number) {
                        seen[i] = std::to_string(number) + " " + Nest(1, "x");
                    }
                }
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        for (std::size_t i = 0; i < size; ++i)
            EXPECT_EQ(seen[i], std::to_string(i) + " x1 x1 ");
    }
}

TEST(WindowsExceptionStateTest, AnExceptionMayGoToAnotherThread) {
    std::exception_ptr kept;
    std::thread([&kept] {
        try {
            throw std::out_of_range("far");
        } catch (...) {
            kept = std::current_exception();
        }
    }).join();
    EXPECT_THROW(std::rethrow_exception(kept), std::out_of_range);
}

TEST(WindowsExceptionStateTest, TheLastErrorOutlivesAQuestion) {
    for (int i = 0; i < 2; ++i) {
        DWORD error = 0;
        std::thread([&error] {
            SetLastError(4711);
            const int count = std::uncaught_exceptions();
            error = GetLastError() + static_cast<DWORD>(count);
        }).join();
        EXPECT_EQ(error, 4711U);
    }
}

}  // namespace
}  // namespace Kestra
