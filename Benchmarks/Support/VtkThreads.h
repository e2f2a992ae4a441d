#ifndef VELTRANE_BENCHMARKS_VTK_THREADS_H
#define VELTRANE_BENCHMARKS_VTK_THREADS_H

namespace benchmarks
{
/// Makes VTK work on one thread from here on.
void useOneVtkThread();
} // namespace benchmarks

#endif
