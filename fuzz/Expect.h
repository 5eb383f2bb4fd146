#pragma once

#include <string>

namespace Kestra::Fuzz {

/// Prints a fault and aborts, which makes the input a finding. An empty string is none.
void Expect(const std::string& fault);

}  // namespace Kestra::Fuzz
