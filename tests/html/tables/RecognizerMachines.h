#pragma once

#include <map>
#include <string>
#include <vector>

#include "tests/support/TableMachine.h"

namespace Kestra::Test {

/// The recognizers that have a state table, by their sources: in both flavours, and once for each
/// set of options that counts.
std::map<std::string, std::vector<TableMachine>> MakeRecognizerMachines();

}  // namespace Kestra::Test
