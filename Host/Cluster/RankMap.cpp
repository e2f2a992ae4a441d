#include "RankMap.h"

#include "Agreement.h"
#include "Text.h"

#include <algorithm>
#include <utility>

namespace veltrane
{
namespace
{

std::string signatureOf(std::span<const Field> fields, const ApplyOptions& options)
{
    std::string signature = text(options.defaultValue, "\n");
    for (std::size_t i = 0; i < fields.size(); ++i)
    {
        const Field& field = fields[i];
        const auto target = i < options.targetLocations.size() ? options.targetLocations[i] : field.location();
        const FieldOptions special = i < options.fieldOptions.size() ? options.fieldOptions[i] : FieldOptions{};
        signature += text(field.name(), " ", static_cast<int>(field.location()), " ", field.componentCount(), " ",
                          field.isSinglePrecision(), " ", static_cast<int>(target), " ",
                          special.defaultValue.value_or(options.defaultValue), " ", special.isClassOneOnly, "\n");
    }
    return signature;
}

} // namespace

void checkSame(const Communicator& ranks, const std::string& signature, const char* what)
{
    const std::string first = ranks.told(signature, 0);
    agree(ranks,
          [&]
          {
              if (signature != first)
              {
                  throw InvalidOption(text("rank ", ranks.rank(), " gives other ", what, " than rank 0"));
              }
          });
}

void RankMap::checkFields(std::span<const Field> fields, const ApplyOptions& options) const
{
    if (!options.fieldOptions.empty() && options.fieldOptions.size() != fields.size())
    {
        throw InvalidOption(text("there are options for ", options.fieldOptions.size(), " fields, but ", fields.size(),
                                 " source fields"));
    }
    if (!options.targetLocations.empty() && options.targetLocations.size() != fields.size())
    {
        throw InvalidOption(text("there are ", options.targetLocations.size(), " target locations for ", fields.size(),
                                 " source fields"));
    }
    for (const Field& field : fields)
    {
        const bool isAtNodes = field.location() == Location::nodes;
        if (!isAtNodes && !averages_)
        {
            throw InvalidData("the map is not made for fields at Gauss points of the source");
        }
        const std::size_t expected = isAtNodes ? sourceNodeCount_ : sourceGaussPointCount_;
        if (field.locationCount() != expected)
        {
            throw InvalidData(text("field '", field.name(), "' has values at ", field.locationCount(),
                                   isAtNodes ? " nodes" : " Gauss points", ", but the source has ", expected,
                                   " on rank ", ranks_.rank()));
        }
    }
}

template <class Value> std::vector<Value> RankMap::carried(const std::vector<Value>& atNodes, std::size_t width) const
{
    std::vector<Value> taken;
    agree(ranks_,
          [&]
          {
              const std::size_t size = sizeOf(nodes_.exchange().takenCount()) * width;
              taken.reserve(size + 1); // so that there is an array, even an empty one
              taken.resize(size);
          });
    nodes_.carry(atNodes.data(), width, taken.data());
    return taken;
}

/// At the nodes of the elements that this rank holds.
FieldValues RankMap::valuesForWindow(const Field& field) const
{
    const auto width = static_cast<std::size_t>(field.componentCount());
    return std::visit(
        [&](const auto& values) -> FieldValues
        {
            if (field.location() == Location::nodes)
            {
                return carried(values, width);
            }
            if (options_.rules.inDoublePrecision)
            {
                return carried(averages_->average<double>(ranks_, values.data(), width), width);
            }
            return carried(averages_->average<float>(ranks_, values.data(), width), width);
        },
        field.values());
}

/// One field on its way to this rank's target locations.
struct RankMap::Application
{
    FieldValues atWindow;
    FieldValues atTarget;
    FieldView view{};
};

/// Collective.
RankMap::Application RankMap::prepared(const Field& field, Location target, const FieldOptions& special,
                                       float commonDefault) const
{
    Application application;
    application.atWindow = valuesForWindow(field);
    FieldView& view = application.view;
    view.componentCount = field.componentCount();
    view.targetLocation = target;
    view.defaultValue = special.defaultValue.value_or(commonDefault);
    view.isClassOneOnly = special.isClassOneOnly;
    agree(ranks_,
          [&]
          {
              const std::size_t count = map_->locationCount(target) * static_cast<std::size_t>(view.componentCount);
              if (field.isSinglePrecision())
              {
                  application.atTarget = std::vector<float>(count, view.defaultValue);
              }
              else
              {
                  application.atTarget = std::vector<double>(count, double{view.defaultValue});
              }
          });
    return application;
}

std::vector<Field> RankMap::apply(std::span<const Field> fields, const ApplyOptions& options) const
{
    agree(ranks_, [&] { checkFields(fields, options); });
    checkSame(ranks_, signatureOf(fields, options), "fields");
    std::vector<Application> applications;
    for (std::size_t i = 0; i < fields.size(); ++i)
    {
        const Location target = options.targetLocations.empty() ? fields[i].location() : options.targetLocations[i];
        const FieldOptions special = options.fieldOptions.empty() ? FieldOptions{} : options.fieldOptions[i];
        applications.push_back(prepared(fields[i], target, special, options.defaultValue));
    }
    agree(ranks_,
          [&]
          {
              std::vector<FieldView> views;
              for (Application& application : applications)
              {
                  FieldView& view = application.view;
                  std::visit([&](const auto& values) { view.source = std::span(values); }, application.atWindow);
                  std::visit([&](auto& values) { view.target = std::span(values); }, application.atTarget);
                  if (map_->locationCount(view.targetLocation) > 0)
                  {
                      views.push_back(view);
                  }
              }
              std::vector<std::byte> workspace(map_->workspaceSize(views));
              map_->apply(views, workspace, options.threads);
          });
    std::vector<Field> results;
    for (std::size_t i = 0; i < fields.size(); ++i)
    {
        Application& application = applications[i];
        if (far_ && application.view.targetLocation == Location::nodes)
        {
            spread(application);
        }
        results.emplace_back(fields[i].name(), application.view.targetLocation, fields[i].componentCount(),
                             std::move(application.atTarget));
    }
    return results;
}

/// Collective.
void RankMap::spread(Application& application) const
{
    MapField field;
    field.nbComponents = application.view.componentCount;
    field.isClassOneOnly = application.view.isClassOneOnly;
    field.defaultValue = application.view.defaultValue;
    const auto spreadIn = [&](auto& values)
    {
        if (options_.rules.inDoublePrecision)
        {
            far_->spread<double>(ranks_, field, values.data());
        }
        else
        {
            far_->spread<float>(ranks_, field, values.data());
        }
    };
    std::visit(spreadIn, application.atTarget);
}

std::vector<Finding> RankMap::findings(Location location) const
{
    const MapTable& table = engineMap().table();
    const std::int64_t first = location == Location::nodes ? 0 : table.nbNodes;
    std::vector<Finding> findings;
    for (std::size_t i = 0; i < map_->locationCount(location); ++i)
    {
        auto finding = static_cast<Finding>(table.finding(first + static_cast<std::int64_t>(i)));
        const bool isReached = location == Location::nodes && far_ && finding == Finding::far && isUnreached_[i] == 0;
        findings.push_back(isReached ? Finding::reached : finding);
    }
    return findings;
}

DistributedStatistics RankMap::statistics() const
{
    DistributedStatistics statistics = statistics_;
    statistics.messageCount = ranks_.traffic().messages;
    statistics.byteCount = ranks_.traffic().bytes;
    return statistics;
}

} // namespace veltrane
