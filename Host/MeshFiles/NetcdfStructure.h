/// The structure of NetCDF files, which Exodus files are.
#ifndef VELTRANE_HOST_NETCDF_STRUCTURE_H
#define VELTRANE_HOST_NETCDF_STRUCTURE_H

#include <filesystem>

namespace veltrane
{

/// Finds a file of the classic formats (CDF-1, CDF-2, CDF-5) that ends before the values that its header tells of; the
/// NetCDF library would take zeros for them. Throws BadFile. What else is wrong, and other files, are left to the
/// library.
void checkNetcdfSize(const std::filesystem::path& path);

/// Whether it is of the format that is based on HDF5, whose library takes notice of missing ends itself.
bool isHdf5(const std::filesystem::path& path);

} // namespace veltrane

#endif
