#include "PieceOutput.h"

#include "Agreement.h"
#include "PieceSummary.h"

#include "FileFormat.h"
#include "Text.h"

#include <algorithm>
#include <array>
#include <system_error>
#include <utility>

namespace veltrane
{
namespace
{

std::string pieceName(const std::filesystem::path& output, int rank)
{
    return text(output.stem().string(), "_", rank, ".vtu");
}

} // namespace

PieceOutput::PieceOutput(const Communicator& ranks, const MeshPairArguments& files, SpreadFile& target)
    : ranks_(ranks), files_(files), target_(target)
{
    const std::filesystem::path path = files.output;
    const bool isSummary = path.extension() == ".pvtu";
    directory_ = path.parent_path() / path.stem();
    agree(ranks,
          [&]
          {
              if (target.isInPieces() && !isSummary)
              {
                  throw InvalidOption(text("the output '", files.output,
                                           "' is not named .pvtu, as the target in pieces "
                                           "is"));
              }
              if (!target.isInPieces() && !isMeshOutput(files.outputFormat()))
              {
                  throw InvalidOption(text("the output '", files.output,
                                           "' is not named .vtu or .vtk, as it must be "
                                           "for a target in one piece"));
              }
              if (ranks.rank() != 0)
              {
                  return;
              }
              output_.emplace(files.openOutput());
              if (target.isInPieces())
              {
                  std::error_code failure;
                  hasMadeDirectory_ = std::filesystem::create_directory(directory_, failure);
                  if (!std::filesystem::is_directory(directory_))
                  {
                      throw CannotWrite(
                          text("cannot create the directory '", directory_.string(), "': ", failure.message()));
                  }
              }
          });
    agree(ranks,
          [&]
          {
              if (target.isInPieces() && target.file() != nullptr)
              {
                  const std::array<std::filesystem::path, 2> inputs{files.source, files.target};
                  piece_.emplace(directory_ / pieceName(path, ranks.rank()), inputs);
              }
          });
}

PieceOutput::~PieceOutput()
{
    if (hasMadeDirectory_)
    {
        std::error_code ignored; // it is not empty if all went well
        std::filesystem::remove(directory_, ignored);
    }
}

void PieceOutput::write(const std::vector<Field>& fields, const std::vector<IntegerArray>& arrays)
{
    if (target_.isInPieces())
    {
        writePieces(fields, arrays);
    }
    else
    {
        writeWhole(fields, arrays);
    }
}

void PieceOutput::writePieces(const std::vector<Field>& fields, const std::vector<IntegerArray>& arrays)
{
    std::optional<PendingOutput> piece;
    std::string arrayList;
    agree(ranks_,
          [&]
          {
              if (piece_)
              {
                  piece.emplace(piece_->prepare(
                      [&](const std::filesystem::path& path)
                      {
                          target_.file()->writeWith(fields, arrays, path, files_.writing());
                          arrayList = ranks_.rank() == target_.speaker() ? arrayListOf(path) : "";
                      }));
              }
          });
    arrayList = ranks_.told(arrayList, target_.speaker());
    const std::vector<int> havePieces = ranks_.gathered(piece ? 1 : 0);
    std::optional<PendingOutput> summary;
    agree(ranks_,
          [&]
          {
              if (output_)
              {
                  std::vector<std::string> names;
                  for (int rank = 0; rank < ranks_.size(); ++rank)
                  {
                      if (havePieces[static_cast<std::size_t>(rank)] != 0)
                      {
                          names.push_back((directory_.filename() / pieceName(files_.output, rank)).string());
                      }
                  }
                  summary.emplace(output_->prepare([&](const std::filesystem::path& path)
                                                   { writePieceSummary(path, arrayList, names); }));
              }
          });
    agree(ranks_,
          [&]
          {
              if (piece)
              {
                  piece->publish();
              }
          });
    agree(ranks_,
          [&]
          {
              if (summary)
              {
                  summary->publish();
              }
          });
}

void PieceOutput::writeWhole(const std::vector<Field>& fields, const std::vector<IntegerArray>& arrays)
{
    std::vector<Field> wholeFields;
    std::vector<IntegerArray> wholeArrays;
    for (const Field& field : fields)
    {
        std::visit(
            [&](const auto& values)
            {
                auto whole =
                    target_.collected(values, field.location(), static_cast<std::size_t>(field.componentCount()));
                wholeFields.emplace_back(field.name(), field.location(), field.componentCount(), std::move(whole));
            },
            field.values());
    }
    for (const IntegerArray& array : arrays)
    {
        wholeArrays.push_back(
            {array.name, array.place, array.componentCount,
             target_.collected(array.values, Location::nodes, static_cast<std::size_t>(array.componentCount))});
    }
    agree(ranks_,
          [&]
          {
              if (output_)
              {
                  output_->write([&](const std::filesystem::path& path)
                                 { target_.file()->writeWith(wholeFields, wholeArrays, path, files_.writing()); });
              }
          });
}

} // namespace veltrane
