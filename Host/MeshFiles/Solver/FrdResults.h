/// The blocks of values in CalculiX's result files.
#ifndef VELTRANE_HOST_FRD_RESULTS_H
#define VELTRANE_HOST_FRD_RESULTS_H

#include "FrdLines.h"
#include "NodeNumbers.h"
#include "ParsedMesh.h"

#include <string>
#include <string_view>
#include <vector>

namespace veltrane
{

/// Finds the blocks, and takes the values of those of one step.
class FrdResults
{
public:
    explicit FrdResults(FrdLines& lines) : lines_(lines) {}

    /// Remembers the block that this line begins, and goes behind it.
    void findBlock(std::string_view line);

    /// Of all steps.
    std::vector<double> times() const;

    /// Adds the fields of a step.
    void take(std::size_t step, const NodeNumbers& nodes, ParsedMesh& mesh);

private:
    struct Block
    {
        const char* heading;
        FrdStorage storage;
        long long rowCount;
        std::string name{};
        int componentCount = 0; ///< of those that are stored
        bool isAtNodes = true;
        const char* values = nullptr; ///< where they begin
    };

    struct Step
    {
        long long number;
        double time;
        std::vector<Block> blocks;
    };

    void takeBlockHeading(Block& block);
    void skipValues(const Block& block);
    void takeField(const Block& block);
    void takeTextValues(const Block& block, ParsedField& field);
    void takeBinaryValues(const Block& block, ParsedField& field);
    ParsedField& fieldOf(const Block& block);
    double* rowOf(long long node, std::size_t& next, ParsedField& field) const;

    FrdLines& lines_;
    std::vector<Step> steps_{};
    const NodeNumbers* nodes_ = nullptr;
    ParsedMesh* mesh_ = nullptr;
};

} // namespace veltrane

#endif
