// VTK on one thread: its probe filter, and the loop of a program that uses its cell locator directly.
#include "TransferCase.h"

#include "Elements/ElementKinds.h"
#include "VtkThreads.h"

#include <vtkCellLocatorStrategy.h>
#include <vtkDoubleArray.h>
#include <vtkGenericCell.h>
#include <vtkIdTypeArray.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkPoints.h>
#include <vtkPolyData.h>
#include <vtkProbeFilter.h>
#include <vtkSmartPointer.h>
#include <vtkStaticCellLocator.h>
#include <vtkUnstructuredGrid.h>

#include <algorithm>
#include <memory>

namespace benchmarks
{
namespace
{
constexpr int mostNodes = maxNbNodes;

vtkSmartPointer<vtkPoints> singlePrecisionPoints(std::span<const float> coords)
{
    auto points = vtkSmartPointer<vtkPoints>::New();
    points->SetDataTypeToFloat();
    points->SetNumberOfPoints(static_cast<vtkIdType>(coords.size() / 3));
    std::ranges::copy(coords, static_cast<float*>(points->GetVoidPointer(0)));
    return points;
}

vtkSmartPointer<vtkDoubleArray> array(const char* name, int nbComponents, const std::vector<double>& values)
{
    auto result = vtkSmartPointer<vtkDoubleArray>::New();
    result->SetName(name);
    result->SetNumberOfComponents(nbComponents);
    result->SetNumberOfValues(static_cast<vtkIdType>(values.size()));
    std::ranges::copy(values, result->GetPointer(0));
    return result;
}

vtkSmartPointer<vtkUnstructuredGrid> sourceGrid(const TransferCase& transfer)
{
    const GeneratedMesh& source = transfer.source;
    auto grid = vtkSmartPointer<vtkUnstructuredGrid>::New();
    grid->SetPoints(singlePrecisionPoints(source.coords));
    grid->AllocateExact(source.nbElts(), static_cast<vtkIdType>(source.connectivity.size()));
    for (std::size_t elt = 0; elt < source.eltTypes.size(); ++elt)
    {
        visitElementKind(source.eltTypes[elt],
                         [&]<class Kind>(Kind)
                         {
                             const auto& cell = Kind::vtkCells.front();
                             vtkIdType ids[Kind::nbNodes];
                             for (std::size_t node = 0; node < Kind::nbNodes; ++node)
                             {
                                 ids[cell.nodeOrder[node]] = source.eltNodes[elt][node];
                             }
                             grid->InsertNextCell(cell.cellType, Kind::nbNodes, ids);
                         });
    }
    grid->GetPointData()->AddArray(array("scalar", 1, transfer.sourceFields.scalar));
    grid->GetPointData()->AddArray(array("vector", 3, transfer.sourceFields.vector));
    return grid;
}

/// What a host of VTK has before it starts to transfer.
struct Scene
{
    explicit Scene(const TransferCase& transfer) : source(sourceGrid(transfer))
    {
        target->SetPoints(singlePrecisionPoints(transfer.points()));
    }

    vtkSmartPointer<vtkUnstructuredGrid> source;
    vtkNew<vtkPolyData> target;
};

vtkSmartPointer<vtkStaticCellLocator> builtLocator(vtkUnstructuredGrid* source)
{
    auto locator = vtkSmartPointer<vtkStaticCellLocator>::New();
    locator->SetDataSet(source);
    locator->BuildLocator();
    return locator;
}

/// Finds cells and weights, point after point, with everything reused between points.
class CellFinder
{
public:
    CellFinder(vtkStaticCellLocator* locator, bool takesClosest, double radius)
        : itsLocator(locator), itsTakesClosest(takesClosest), itsRadius(radius)
    {
    }

    bool find(double (&point)[3])
    {
        double pcoords[3];
        if (itsLocator->FindCell(point, 0.0, itsCell, pcoords, itsWeights) >= 0)
        {
            return true;
        }
        return itsTakesClosest && findClosest(point);
    }

    vtkIdList* nodes() const { return itsCell->PointIds; }
    const double* weights() const { return itsWeights; }

private:
    bool findClosest(double (&point)[3])
    {
        double closest[3];
        vtkIdType cellId = -1;
        int subId = 0;
        int inside = 0;
        double squaredDistance = 0.0;
        if (itsLocator->FindClosestPointWithinRadius(point, itsRadius, closest, itsCell, cellId, subId, squaredDistance,
                                                     inside) == 0)
        {
            return false;
        }
        double pcoords[3];
        return itsCell->EvaluatePosition(closest, nullptr, subId, pcoords, squaredDistance, itsWeights) != -1;
    }

    vtkStaticCellLocator* itsLocator;
    bool itsTakesClosest;
    double itsRadius;
    vtkNew<vtkGenericCell> itsCell;
    double itsWeights[mostNodes]{};
};

double* valuesOf(vtkPointData* data, const char* name)
{
    return vtkDoubleArray::SafeDownCast(data->GetAbstractArray(name))->GetPointer(0);
}

Measurement measureLoop(const TransferCase& transfer, const Scene& scene)
{
    useOneVtkThread();
    const std::span<const float> points = transfer.points();
    const double* scalar = valuesOf(scene.source->GetPointData(), "scalar");
    const double* vector = valuesOf(scene.source->GetPointData(), "vector");
    FieldValues result(points.size() / 3);

    Meter meter;
    const auto locator = builtLocator(scene.source);
    meter.endSetUp();
    CellFinder finder(locator, transfer.options.target == TargetKind::nearMiss, transfer.nearMissReach());
    for (std::size_t i = 0; i < result.scalar.size(); ++i)
    {
        double point[3] = {points[3 * i], points[3 * i + 1], points[3 * i + 2]};
        if (!finder.find(point))
        {
            continue;
        }
        double sums[TransferCase::interpolatedComponents]{};
        const vtkIdType* nodes = finder.nodes()->GetPointer(0);
        for (vtkIdType node = 0; node < finder.nodes()->GetNumberOfIds(); ++node)
        {
            const double weight = finder.weights()[node];
            sums[0] += weight * scalar[nodes[node]];
            for (int component = 0; component < 3; ++component)
            {
                sums[1 + component] += weight * vector[3 * nodes[node] + component];
            }
        }
        result.scalar[i] = sums[0];
        std::copy_n(sums + 1, 3, &result.vector[3 * i]);
    }
    Measurement measurement = meter.stop();
    transfer.assess(result, measurement);
    return measurement;
}

Measurement measureProbe(const TransferCase& transfer, const Scene& scene)
{
    useOneVtkThread();
    Meter meter;
    const auto locator = builtLocator(scene.source);
    meter.endSetUp();
    vtkNew<vtkCellLocatorStrategy> strategy;
    strategy->SetCellLocator(locator);
    vtkNew<vtkProbeFilter> probe;
    probe->SetInputData(scene.target);
    probe->SetSourceData(scene.source);
    probe->SetFindCellStrategy(strategy);
    probe->Update();
    Measurement measurement = meter.stop();

    FieldValues result(static_cast<std::size_t>(transfer.nbPoints()));
    vtkPointData* data = probe->GetOutput()->GetPointData();
    std::copy_n(valuesOf(data, "scalar"), result.scalar.size(), result.scalar.begin());
    std::copy_n(valuesOf(data, "vector"), result.vector.size(), result.vector.begin());
    // Where no cell is found the filter leaves zeros, which count as not found.
    transfer.assess(result, measurement);
    return measurement;
}
} // namespace

std::vector<Engine> vtkEngines(const TransferCase& transfer)
{
    const auto scene = std::make_shared<const Scene>(transfer);
    return {{"vtk-loop", [&transfer, scene] { return measureLoop(transfer, *scene); }},
            {"vtk-probe", [&transfer, scene] { return measureProbe(transfer, *scene); }}};
}
} // namespace benchmarks
