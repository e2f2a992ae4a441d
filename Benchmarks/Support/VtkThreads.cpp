// Compiled as C++17: this header of VTK 9.1 is not valid C++20.
#include "VtkThreads.h"

#include <vtkSMPTools.h>

namespace benchmarks
{
void useOneVtkThread()
{
    vtkSMPTools::Initialize(1);
}
} // namespace benchmarks
