/// Figures of a validation that reports show: where fields differ most, and how differences and distances are spread.
#ifndef VELTRANE_COMMAND_QUALITY_FIGURES_H
#define VELTRANE_COMMAND_QUALITY_FIGURES_H

#include "Transfer.h"
#include "TransferRecord.h"
#include "Validation.h"

#include <cstddef>
#include <vector>

namespace veltrane
{

/// How many values lie between one edge and the next; the first edge is included. Values beyond the first or the last
/// edge are counted in the first or the last interval.
struct Histogram
{
    std::vector<double> edges; ///< one more than counts
    std::vector<long long> counts;
};

/// Magnitudes of differences at the source's locations as parts of the field's largest magnitude, from 1e-7 to 1 in
/// half powers of ten.
Histogram histogramOfDifferences(const FieldRoundTrip& field, const Field& source);

/// Distances of near locations in ten steps from 0 to the largest; no counts without any.
Histogram histogramOfDistances(const std::vector<Finding>& findings, const std::vector<double>& distances);

/// A location of the source where a field that was mapped back differs.
struct WorstPlace
{
    int location;      ///< a node, or a Gauss point, from 0
    int element;       ///< of the source, one around it, from 0; -1 if there is none
    double source;     ///< magnitude
    double returned;   ///< magnitude
    double difference; ///< magnitude of the difference
};

/// Those of the largest differences, the largest first.
std::vector<WorstPlace> worstPlaces(const FieldRoundTrip& field, const Field& source, const Mesh& mesh,
                                    std::size_t count = 10);

/// Magnitudes of the differences, location by location; not a number where nothing comes back.
std::vector<double> differencesOf(const FieldRoundTrip& field, const Field& source);

} // namespace veltrane

#endif
