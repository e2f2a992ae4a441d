#include "ClusterTransfer.h"

#include "Agreement.h"
#include "DistributedMap.h"
#include "PieceOutput.h"
#include "RankThreads.h"
#include "SpreadFile.h"

#include "ElementChecks.h"
#include "ElementSizes.h"
#include "FileFormat.h"
#include "GridMaterials.h"
#include "NearPoints.h"
#include "Report.h"
#include "Text.h"
#include "TransferFindings.h"

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <optional>
#include <sstream>
#include <utility>

namespace veltrane
{
namespace
{

/// One transfer on its way.
class ClusterTransfer
{
public:
    ClusterTransfer(const Communicator& ranks, const TransferChoices& choices) : ranks_(ranks), choices_(choices) {}

    ExitStatus run()
    {
        agree(ranks_, [&] { checkChoices(); });
        MeshReading reading = commonReading();
        reading.role = MeshRole::source;
        reading.cellsAsNodes = choices_.arguments.cellsAsNodes;
        reading.placement = choices_.placement.placement();
        source_.emplace(ranks_, choices_.files.source, reading);
        reading = commonReading();
        reading.role = choices_.arguments.atGaussPoints ? MeshRole::gaussPointTarget : MeshRole::target;
        target_.emplace(ranks_, choices_.files.target, reading);
        PieceOutput output(ranks_, choices_.files, *target_);
        checkSource();
        shareMaterials();
        chooseFields();
        source_->deal();
        target_->deal();
        readFields();
        matchMaterials();
        TransferResult result = transfer();
        completeForOutput(result, options_, false);
        if (choices_.arguments.atGaussPoints && result.gaussPointFindings.empty())
        {
            // This rank has no Gauss points, but the same fields as the others.
            result.fields.emplace_back(gaussPointMaskName, Location::gaussPoints, 1, std::vector<float>());
        }
        std::vector<IntegerArray> arrays;
        if (!choices_.arguments.atGaussPoints)
        {
            arrays.push_back(validPointMask(result.findings, options_.mode));
        }
        output.write(result.fields, arrays);
        return tell();
    }

private:
    void checkChoices();
    MeshReading commonReading() const;
    void checkSource();
    void shareMaterials();
    void chooseFields();
    void readFields();
    void matchMaterials();
    TransferResult transfer();
    ExitStatus tell() const;

    const Communicator& ranks_;
    const TransferChoices& choices_;
    TransferOptions options_;
    std::optional<SpreadFile> source_;
    std::optional<SpreadFile> target_;
    std::vector<ChosenField> chosen_;
    std::vector<Field> fields_;
    DistributedStatistics statistics_;
    bool hasUnreachedNodes_ = false;
};

void ClusterTransfer::checkChoices()
{
    options_ = choices_.arguments.options(!choices_.files.materials.states.empty());
    choices_.placement.placement();
    const auto refuse = [](bool isGiven, const char* what)
    {
        if (isGiven)
        {
            throw InvalidOption(text(what, " cannot be had from several processes; start veltrane without mpirun"));
        }
    };
    const RecordFileOptions& records = choices_.recordFiles;
    refuse(!records.report.path.empty(), "--report");
    refuse(!records.picture.path.empty(), "--picture");
    refuse(!records.log.path.empty(), "--log");
    refuse(!choices_.loads.loads.empty(), "--loads");
    refuse(choices_.quality.wantsVerdict(), "a verdict on the transfer");
    refuse(choices_.arguments.writesDistances, "--distances");
    refuse(isCollection(formatOf(choices_.files.source)) || !choices_.series.steps.empty(), "a series of steps");
    refuse(choices_.files.isOutputStandard(), "standard output as the output");
    choices_.files.checkCompression();
    options_.threads = choices_.files.threads;
}

MeshReading ClusterTransfer::commonReading() const
{
    MeshReading reading;
    reading.skipUnsupported = choices_.files.skipUnsupported;
    reading.materialArray = choices_.files.materials.array;
    reading.gaussPointRule = choices_.files.gaussPointRule();
    return reading;
}

void ClusterTransfer::checkSource()
{
    std::int64_t flatCount = 0;
    agree(ranks_,
          [&]
          {
              if (const MeshFile* file = source_->file())
              {
                  flatCount = static_cast<std::int64_t>(findElementFaults(file->mesh(), options_.threads).flat.size());
              }
          });
    if (const std::int64_t count = ranks_.sum(flatCount); count > 0 && ranks_.rank() == 0)
    {
        warn(text("'", source_->path().string(), "' has ", oneOrMore(count, "cell", "cells"),
                  " without volume in single precision, in which nothing is found"),
             "flat cells");
    }
}

/// If the arrays of materials have different names, one of the usual ones that both files have takes their place.
void ClusterTransfer::shareMaterials()
{
    if (!source_->hasMaterials() || !target_->hasMaterials() || source_->materialArray() == target_->materialArray())
    {
        return;
    }
    for (const char* name : usualMaterialArrays())
    {
        if (source_->hasCellArray(name) && target_->hasCellArray(name))
        {
            source_->useMaterials(name);
            target_->useMaterials(name);
            return;
        }
    }
}

/// The lowest rank with a part of the source chooses for all.
void ClusterTransfer::chooseFields()
{
    std::string list;
    agree(ranks_,
          [&]
          {
              if (ranks_.rank() == source_->speaker())
              {
                  for (const ChosenField& field : choices_.arguments.chooseFields(*source_->file(), {}))
                  {
                      list += field.name + "\n" + field.newName + "\n";
                  }
              }
          });
    std::istringstream lines(ranks_.told(list, source_->speaker()));
    for (ChosenField field; std::getline(lines, field.name) && std::getline(lines, field.newName);)
    {
        chosen_.push_back(field);
    }
    agree(ranks_,
          [&]
          {
              options_.fieldOptions = choices_.arguments.fieldOptions(chosen_);
              const ArrayPlace place = choices_.arguments.atGaussPoints ? ArrayPlace::file : ArrayPlace::points;
              for (const ChosenField& field : chosen_)
              {
                  if (target_->file() != nullptr)
                  {
                      choices_.files.checkNewArray(*target_->file(), place, field.newName);
                  }
              }
          });
}

void ClusterTransfer::readFields()
{
    for (const ChosenField& field : chosen_)
    {
        fields_.push_back(source_->field(field.name, field.newName));
    }
    source_->forgetWhole();
    agree(ranks_, [&] { choices_.placement.turn(fields_); });
    options_.targetLocations.assign(fields_.size(),
                                    choices_.arguments.atGaussPoints ? Location::gaussPoints : Location::nodes);
}

void ClusterTransfer::matchMaterials()
{
    agree(ranks_,
          [&]
          {
              const MaterialArguments& materials = choices_.files.materials;
              options_.targetMapping =
                  materials.select(target_->mesh().materials(), target_->hasMaterials(), target_->path());
              const std::optional<std::string> missing =
                  materials.match(source_->mesh(), source_->hasMaterials(), target_->mesh(), target_->hasMaterials(),
                                  options_.targetMapping);
              if (ranks_.rank() == 0 || options_.mode == OutsideMode::error)
              {
                  reportMissingMaterials(missing, options_.mode);
              }
          });
    const float largest = ranks_.largest(largestElementSize(source_->mesh()));
    options_.rules.nearLimit = choices_.arguments.nearLimit.value_or(largest);
}

TransferResult ClusterTransfer::transfer()
{
    options_.threads = options_.threads == 0 ? threadsOfRank(ranks_) : options_.threads;
    MapOptions mapping = mapOptions(fields_, options_);
    std::optional<DistributedMap> map;
    try
    {
        map.emplace(ranks_.comm(), source_->part(), target_->part(), mapping);
    }
    catch (const TargetOutside&)
    {
        // All ranks come here.
        mapping.mode = OutsideMode::defaultValue;
        const DistributedStatistics found =
            DistributedMap(ranks_.comm(), source_->part(), target_->part(), mapping).statistics();
        agree(ranks_,
              [&]
              {
                  throw TargetOutside(text(oneOrMore(found.farNodeCount, "node", "nodes"), " and ",
                                           oneOrMore(found.farGaussPointCount, "Gauss point", "Gauss points"),
                                           " of the target are outside the source; --outside default gives such nodes "
                                           "the default value, --outside propagate the values of neighbouring nodes"));
              });
    }
    TransferResult result{};
    result.fields = map->apply(fields_, {.defaultValue = options_.defaultValue,
                                         .fieldOptions = options_.fieldOptions,
                                         .targetLocations = options_.targetLocations,
                                         .threads = options_.threads});
    if (choices_.arguments.atGaussPoints)
    {
        result.gaussPointFindings = map->findings(Location::gaussPoints);
    }
    else
    {
        result.findings = map->findings(Location::nodes);
    }
    hasUnreachedNodes_ = map->hasUnreachedNodes();
    statistics_ = map->statistics();
    return result;
}

ExitStatus ClusterTransfer::tell() const
{
    const auto largest = [&](std::int64_t count)
    {
        const std::vector<std::int64_t> counts = ranks_.gathered(count);
        return *std::ranges::max_element(counts);
    };
    const std::int64_t elements = largest(statistics_.windowElementCount);
    const std::int64_t messages = largest(statistics_.messageCount);
    const std::int64_t bytes = largest(statistics_.byteCount);
    if (ranks_.rank() == 0 && !choices_.files.quiet)
    {
        std::ostream& stream = std::cout;
        printLine(stream, "ranks",
                  text(ranks_.size(), ", at most ", elements, " source elements, ", messages, " messages and ", bytes,
                       " bytes sent by one"));
        printCount(stream, "interpolated", statistics_.interpolatedPointCount);
        const bool atGaussPoints = choices_.arguments.atGaussPoints;
        printCount(stream, "  near", atGaussPoints ? statistics_.nearGaussPointCount : statistics_.nearNodeCount,
                   "just outside the source: values of a nearby element");
        printCount(stream, "far", atGaussPoints ? statistics_.farGaussPointCount : statistics_.farNodeCount,
                   "too far from the source");
        printLine(stream, "written", choices_.files.output);
    }
    if (!hasUnreachedNodes_)
    {
        return ExitStatus::done;
    }
    if (ranks_.rank() == 0)
    {
        warn("regions of the target are not connected to any region with values; they hold 0", "unreached");
    }
    return ExitStatus::propagationWarning;
}

} // namespace

ExitStatus transferOnAllRanks(const Communicator& ranks, const TransferChoices& choices)
{
    return ClusterTransfer(ranks, choices).run();
}

} // namespace veltrane
