#include "fuzz/Expect.h"

#include <cstdlib>
#include <iostream>

namespace Kestra::Fuzz {

void Expect(const std::string& fault) {
    if (fault.empty())
        return;
    std::cerr << fault << std::endl;
    std::abort();
}

}  // namespace Kestra::Fuzz
