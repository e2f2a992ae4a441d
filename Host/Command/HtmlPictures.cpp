#include "HtmlPictures.h"

#include "CutChoice.h"
#include "Html.h"
#include "Markup.h"
#include "QualityFigures.h"
#include "RecordPicture.h"
#include "Text.h"
#include "Validation.h"

#include <algorithm>
#include <cmath>

namespace veltrane
{
namespace
{

constexpr std::size_t room = 4'000'000; // bytes of pictures on a page, which are to stay below 5 MB with all else
constexpr std::size_t mostFields = 6;

/// A plane, and what it goes through.
struct NamedPlane
{
    CutPlane plane;
    std::string name;
};

/// The field that is asked for first, if one is.
std::vector<PictureView> viewsOf(const TransferRecord& record, const PictureArguments& pictures)
{
    const std::optional<PictureView> first = pictures.choose(record.sourceFields);
    if (!first)
    {
        return {};
    }
    std::vector<PictureView> views{*first};
    for (std::size_t i = 0; i < record.sourceFields.size() && views.size() < mostFields; ++i)
    {
        if (i != first->field && record.sourceFields[i].location() == Location::nodes)
        {
            views.push_back({i, {.plane = first->choice.plane}});
        }
    }
    return views;
}

std::vector<NamedPlane> planesOf(const TransferRecord& record, const PictureView& view,
                                 std::span<const double> differences)
{
    const Mesh& source = record.source.mesh();
    const auto named = [&](const CutPlane& plane, const char* what) {
        return NamedPlane{plane, text(what, planeText(plane, double{source.boundingBox().size()}))};
    };
    if (view.choice.plane)
    {
        return {named(*view.choice.plane, "")};
    }
    const std::vector<double> values = shownValues(record.result.fields[view.field], view.choice.component);
    if (const PointFile* points = record.targetPoints())
    {
        return {named(planeThroughPeak(source, points->points(), values), "through the largest value, ")};
    }
    std::vector<NamedPlane> planes;
    for (const CutPlane& plane : planesThroughPeak(record.targetMesh()->mesh(), values))
    {
        planes.push_back(named(plane, "through the peak, "));
    }
    if (!differences.empty())
    {
        planes.push_back(named(planeThroughPeak(source, differences), "through the largest difference, "));
    }
    return planes;
}

/// Empty if the field was not mapped back.
std::vector<double> shownDifferences(const TransferRecord& record, const PictureView& view)
{
    if (record.validation == nullptr)
    {
        return {};
    }
    const FieldRoundTrip& field = record.validation->fields[view.field];
    const Field& source = record.sourceFields[view.field];
    if (!view.choice.component)
    {
        return differencesOf(field, source);
    }
    std::vector<double> differences = shownValues(field.returned, view.choice.component);
    const std::vector<double> before = shownValues(source, view.choice.component);
    std::ranges::transform(differences, before, differences.begin(),
                           [](double returned, double value) { return std::abs(returned - value); });
    return differences;
}

std::string list(const char* label, const char* name, const std::vector<std::string>& entries)
{
    std::string options;
    for (std::size_t i = 0; i < entries.size(); ++i)
    {
        options += text("<option value=\"", i, "\">", escaped(entries[i]), "</option>");
    }
    return text("<label>", label, " <select name=\"", name, "\">", options, "</select></label>\n");
}

} // namespace

std::string htmlPictures(const TransferRecord& record, const PictureArguments& pictures)
{
    std::string figures;
    std::vector<std::string> fieldNames;
    std::size_t leftOut = 0;
    for (PictureView view : viewsOf(record, pictures))
    {
        const Field& field = record.sourceFields[view.field];
        const std::string name = shownName(field, view.choice.component);
        const std::vector<double> differences = shownDifferences(record, view);
        for (const auto& [plane, planeName] : planesOf(record, view, differences))
        {
            view.choice.plane = plane;
            const std::string number = text("cut", fieldNames.size());
            const std::string description =
                text(name, ", cut ", planeName,
                     record.validation == nullptr ? ": source and target" : ": source, target and difference");
            std::string svg =
                figures.size() < room
                    ? drawRecord(DrawingFormat::vectors, record, view, differences).svg(number, description)
                    : "";
            if (svg.empty() || figures.size() + svg.size() > room)
            {
                ++leftOut;
                continue;
            }
            figures += text("<figure data-of=\"cuts\" data-cut=\"", fieldNames.size(), "\">\n", svg, "<figcaption>",
                            escaped(description), "</figcaption></figure>\n");
            fieldNames.push_back(text(name, ", ", planeName));
        }
    }
    if (fieldNames.empty())
    {
        return leftOut == 0 ? "" : htmlParagraph("The cuts are too large for a page; --picture draws them.");
    }
    return text("<fieldset class=\"choice\" data-choice=\"cuts\" hidden>\n", list("Cut", "cut", fieldNames),
                "</fieldset>\n", figures,
                leftOut == 0 ? ""
                             : htmlParagraph(text(leftOut, " more cuts found no room on this page; --picture-field and "
                                                           "--picture-plane choose.")));
}

} // namespace veltrane
