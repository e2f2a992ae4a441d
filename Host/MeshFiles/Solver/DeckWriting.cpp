#include "DeckWriting.h"

#include "FieldArrays.h"
#include "NodeLabels.h"
#include "Text.h"
#include "TextFile.h"

#include <vtkDataArray.h>
#include <vtkPointData.h>
#include <vtkPointSet.h>

#include <algorithm>
#include <cmath>

namespace veltrane
{
namespace
{

constexpr int vectorSize = 3;
/// Solvers read numbers from 20 columns.
constexpr int digitCount = 12;

struct Chosen
{
    std::vector<vtkDataArray*> temperatures{};
    std::vector<vtkDataArray*> forces{};
    LeftOut others{};
};

Chosen choose(vtkPointSet& dataSet, const FileWriting& writing)
{
    Chosen chosen;
    for (const PointArray& array : listArrays(*dataSet.GetPointData()))
    {
        const bool isWanted =
            writing.fields.empty() || std::ranges::find(writing.fields, array.name) != writing.fields.end();
        if (!array.isFloatingPoint || !isWanted)
        {
            continue;
        }
        vtkDataArray* values = dataSet.GetPointData()->GetArray(array.name.c_str());
        if (array.componentCount == 1)
        {
            chosen.temperatures.push_back(values);
        }
        else if (array.componentCount == vectorSize)
        {
            chosen.forces.push_back(values);
        }
        else
        {
            chosen.others.push_back(text("the field '", array.name, "' of ", array.componentCount, " components"));
        }
    }
    return chosen;
}

void writeTemperatures(TextFile& file, vtkPointSet& dataSet, vtkDataArray& values)
{
    file << "** " << values.GetName() << "\n*TEMPERATURE\n";
    for (vtkIdType point = 0; point < values.GetNumberOfTuples(); ++point)
    {
        const double value = values.GetComponent(point, 0);
        if (std::isfinite(value))
        {
            file << nodeLabel(dataSet, point) << ", ";
            file.addRounded(value, digitCount);
            file << '\n';
        }
    }
}

void writeForces(TextFile& file, vtkPointSet& dataSet, vtkDataArray& values)
{
    file << "** " << values.GetName() << "\n*CLOAD\n";
    for (vtkIdType point = 0; point < values.GetNumberOfTuples(); ++point)
    {
        for (int axis = 0; axis < vectorSize; ++axis)
        {
            const double value = values.GetComponent(point, axis);
            if (std::isfinite(value) && value != 0)
            {
                file << nodeLabel(dataSet, point) << ", " << axis + 1 << ", ";
                file.addRounded(value, digitCount);
                file << '\n';
            }
        }
    }
}

} // namespace

LeftOut writeDeck(vtkPointSet& dataSet, const std::filesystem::path& path, const FileWriting& writing)
{
    const Chosen chosen = choose(dataSet, writing);
    if (chosen.temperatures.size() > 1)
    {
        throw CannotWrite(text("a file for a solver holds one field of temperatures; please choose between '",
                               chosen.temperatures[0]->GetName(), "' and '", chosen.temperatures[1]->GetName(),
                               "' with --field"));
    }
    if (chosen.temperatures.empty() && chosen.forces.empty())
    {
        throw CannotWrite("there is no field of one component, as temperatures, or of three, as forces");
    }
    TextFile file(path);
    for (vtkDataArray* values : chosen.temperatures)
    {
        writeTemperatures(file, dataSet, *values);
    }
    for (vtkDataArray* values : chosen.forces)
    {
        writeForces(file, dataSet, *values);
    }
    file.close();
    return chosen.others;
}

} // namespace veltrane
