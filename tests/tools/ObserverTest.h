#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Characters.h"
#include "tools/kestra-html/output/LineSink.h"

namespace Kestra::Test {

/// Keeps the lines that an observer of the tool writes.
class KeptLines final : public Tool::LineSink {
public:
    void Line(std::string_view line) override {
        lines.emplace_back(line);
    }

    /// The lines since the last call.
    std::vector<std::string> Take() {
        std::vector<std::string> taken;
        taken.swap(lines);
        return taken;
    }

private:
    std::vector<std::string> lines;
};

/// A flavour of observers. Text is given in Latin-1.
template <typename Character>
struct ObserverFlavour {
    using C = Character;
    using S = std::basic_string<Character>;

    static S Text(std::string_view latin1) {
        S text;
        for (const char letter : latin1)
            text.push_back(static_cast<C>(static_cast<unsigned char>(letter)));
        return text;
    }
};

using ObserverFlavours = testing::Types<ObserverFlavour<char>, ObserverFlavour<WideChar>>;

/// The base of tests that call observers with records of their own making.
template <typename Flavour>
class ObserverTest : public testing::Test {
protected:
    /// A string for a record, kept until the end of the test.
    const typename Flavour::S* Text(std::string_view latin1) {
        texts.push_back(std::make_unique<typename Flavour::S>(Flavour::Text(latin1)));
        return texts.back().get();
    }

    KeptLines lines;

private:
    std::vector<std::unique_ptr<typename Flavour::S>> texts;
};

}  // namespace Kestra::Test
