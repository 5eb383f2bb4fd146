#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tests/support/TableMachine.h"

namespace Kestra::Test {

/// A table of the stateless parser, by its source and its place among the tables there, and the
/// machine below it, in one or two ways.
struct StatelessTable {
    std::string source;
    std::size_t index;
    std::vector<TableMachine> machines;
};

std::vector<StatelessTable> MakeStatelessTables();

}  // namespace Kestra::Test
