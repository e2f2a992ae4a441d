/// The parts of the module.
#ifndef VELTRANE_PYTHON_BINDINGS_H
#define VELTRANE_PYTHON_BINDINGS_H

#include <nanobind/nanobind.h>

namespace veltrane
{

/// Exceptions of the C++ interface become those of the package's module `_errors`.
void bindErrors();
void bindSettings(nanobind::module_& module);
void bindMeshes(nanobind::module_& module);
void bindMap(nanobind::module_& module);
void bindMatch(nanobind::module_& module);
void bindValidation(nanobind::module_& module);

} // namespace veltrane

#endif
