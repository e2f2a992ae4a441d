/// The list of formats: `formats::` and a name for the definition that a file in Formats/ has. Messages name their
/// endings in this order.
#ifndef VELTRANE_HOST_FORMAT_LIST_H
#define VELTRANE_HOST_FORMAT_LIST_H

#include "FileFormat.h"

#define VELTRANE_FORMATS(FORMAT)                                                                                       \
    FORMAT(table)                                                                                                      \
    FORMAT(polyData)                                                                                                   \
    FORMAT(unstructuredGrid)                                                                                           \
    FORMAT(legacy)                                                                                                     \
    FORMAT(parallelUnstructuredGrid)                                                                                   \
    FORMAT(exodus)                                                                                                     \
    FORMAT(exodusParts)                                                                                                \
    FORMAT(gmsh)                                                                                                       \
    FORMAT(abaqus)                                                                                                     \
    FORMAT(calculix)                                                                                                   \
    FORMAT(nastran)                                                                                                    \
    FORMAT(multiBlock)                                                                                                 \
    FORMAT(structuredGrid)                                                                                             \
    FORMAT(rectilinearGrid)                                                                                            \
    FORMAT(imageData)                                                                                                  \
    FORMAT(enSight)                                                                                                    \
    FORMAT(med)                                                                                                        \
    FORMAT(cgns)                                                                                                       \
    FORMAT(vtkHdf)                                                                                                     \
    FORMAT(openFoam)                                                                                                   \
    FORMAT(lsDyna)                                                                                                     \
    FORMAT(collection)                                                                                                 \
    FORMAT(series)                                                                                                     \
    FORMAT(xdmf)                                                                                                       \
    FORMAT(universal)

namespace veltrane::formats
{

#define VELTRANE_DECLARE_FORMAT(format) extern const FileFormat format;
VELTRANE_FORMATS(VELTRANE_DECLARE_FORMAT)
#undef VELTRANE_DECLARE_FORMAT

} // namespace veltrane::formats

#endif
