#include "Bindings.h"

#include "CallSettings.h"

namespace nb = nanobind;

NB_MODULE(_core, module)
{
    module.doc() = "What the package veltrane takes from the C++ interface. Use the package.";
    module.attr("version") = VELTRANE_VERSION;
    module.def("usable_thread_count", &veltrane::usableThreadCount,
               "How many threads `threads=0` stands for: the cores that the process may use.");
    veltrane::bindErrors();
    veltrane::bindSettings(module);
    veltrane::bindMeshes(module);
    veltrane::bindMap(module);
    veltrane::bindMatch(module);
    veltrane::bindValidation(module);
}
