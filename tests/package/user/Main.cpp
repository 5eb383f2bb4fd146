#include <cstdio>

#include "Check.h"

namespace {

int failures = 0;
int expectations = 0;

}  // namespace

void Note(bool holds, const char* expression, const char* file, int line) {
    ++expectations;
    if (holds)
        return;
    ++failures;
    std::printf("%s:%d: %s does not hold\n", file, line, expression);
}

int main() {
    UsePlatform();
    UseRecognizers();
    UseRecords();
    UseRewriter();
    UseDocuments();
    UseEvents();
    UseDetection();
    UseBoundary();
    CHECK(CheckInterface() == 0);
    std::printf("%d expectations, %d failed\n", expectations, failures);
    return failures == 0 && expectations > 0 ? 0 : 1;
}
