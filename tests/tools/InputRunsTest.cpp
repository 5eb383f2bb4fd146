#include "tools/kestra-html/commands/InputRuns.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

#include "tools/kestra-html/output/Console.h"

namespace Kestra::Test {
namespace {

using Tool::Console;
using Tool::ExitStatus;
using Tool::InputOutput;
using Tool::SizeKnown;

struct Outcome {
    ExitStatus status = Tool::EXIT_STATUS_GOOD;
    std::string output;
    std::string errors;
};

/// Runs work that writes the name of each input and fails for "bad" with an exception.
Outcome RunNames(const std::vector<std::string>& names, std::size_t jobs) {
    Outcome outcome;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    {
        Console console;
        const auto runOne = [&names](std::size_t index, InputOutput* output, const SizeKnown&) {
            output->Line(names[index]);
            if (names[index] == "bad")
                throw std::runtime_error("has no middle");
            return Tool::EXIT_STATUS_GOOD;
        };
        outcome.status = Tool::RunInOrder(names, jobs, &console, runOne, [&console] { console.Line("the end"); });
    }
    outcome.output = testing::internal::GetCapturedStdout();
    outcome.errors = testing::internal::GetCapturedStderr();
    return outcome;
}

TEST(InputRuns, WhatEndsTheWorkOnOneInputEndsNoOther) {
    for (const std::size_t jobs : {1U, 2U, 5U}) {
        const Outcome outcome = RunNames({"a", "bad", "b", "bad"}, jobs);
        EXPECT_EQ(outcome.status, Tool::EXIT_STATUS_FAILED) << jobs;
        EXPECT_EQ(outcome.output, "a\nbad\nb\nbad\nthe end\n") << jobs;
        EXPECT_EQ(outcome.errors, "bad: has no middle\nbad: has no middle\n") << jobs;
        EXPECT_EQ(RunNames({"a", "-", "b"}, jobs).output, "a\n-\nb\nthe end\n") << jobs;
        EXPECT_EQ(RunNames({}, jobs).output, "the end\n") << jobs;
    }
}

}  // namespace
}  // namespace Kestra::Test
