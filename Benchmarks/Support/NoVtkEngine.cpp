// Stands in for VtkEngine.cpp where VTK is not installed.
#include "TransferCase.h"

namespace benchmarks
{
std::vector<Engine> vtkEngines(const TransferCase&)
{
    return {};
}
} // namespace benchmarks
