/// The output of all ranks: a piece of each with a file that names them, or the whole file by the first rank.
#ifndef VELTRANE_CLUSTER_PIECE_OUTPUT_H
#define VELTRANE_CLUSTER_PIECE_OUTPUT_H

#include "Communicator.h"
#include "SpreadFile.h"

#include "MeshPair.h"
#include "OutputFile.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace veltrane
{

class PieceOutput
{
public:
    /// Collective. Throws on all ranks, before any work is done, if the output could not be written: a target in pieces
    /// gives a .pvtu, whose pieces lie in a directory of its name without the ending, another target another file.
    PieceOutput(const Communicator& ranks, const MeshPairArguments& files, SpreadFile& target);
    /// Takes away a directory that is left empty.
    ~PieceOutput();
    PieceOutput(const PieceOutput&) = delete;
    PieceOutput& operator=(const PieceOutput&) = delete;

    /// Collective. Fields and arrays are those of this rank's part. No file appears before all are complete.
    void write(const std::vector<Field>& fields, const std::vector<IntegerArray>& arrays);

private:
    void writePieces(const std::vector<Field>& fields, const std::vector<IntegerArray>& arrays);
    void writeWhole(const std::vector<Field>& fields, const std::vector<IntegerArray>& arrays);

    const Communicator& ranks_;
    const MeshPairArguments& files_;
    SpreadFile& target_;
    std::optional<OutputFile> output_; ///< on the first rank
    std::optional<OutputFile> piece_;
    std::filesystem::path directory_;
    bool hasMadeDirectory_ = false;
};

} // namespace veltrane

#endif
