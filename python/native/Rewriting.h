#pragma once

#include <pybind11/pybind11.h>

#include <cstdint>

namespace Kestra::Python {

/// Rewrites a document.
/// @param edits  a list of tuples: a selector, and either an action with its arguments, or a
///               callable that gets each element. Without a callable the GIL is dropped
/// @return the output, and the first result that was not 0
pybind11::tuple Rewrite(const pybind11::object& source, const pybind11::list& edits, std::uint32_t charset);

/// Binds what callables get.
void BindRewriting(pybind11::module_& module);

}  // namespace Kestra::Python
