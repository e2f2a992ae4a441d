/// A mapping object made ready to transfer single points, without the driver of a whole transfer.
#ifndef POINT_TRANSFER_H
#define POINT_TRANSFER_H

#include "GridBuild.h"
#include "MappingClass.h"

#include <stdexcept>
#include <string>
#include <vector>

struct PointTransfer
{
    TestMesh source;
    TestMesh target; ///< only its kind and materials matter here
    ModelKind targetKind = ModelKind::mesh;
    std::vector<float> sourceValues;
    std::vector<FieldStruct> sourceFields; ///< sourceValues at nodes, one component, if empty
    std::vector<float> targetValues{-1};
    std::vector<FieldStruct> targetFields; ///< targetValues at nodes, one component, if empty
    TestMesh gridPoints;                   ///< the points that the grid is made for: the source's nodes if empty
    float bucketSize = 1000.0F;            ///< by default one bucket holds everything
    float bucketFactor = 0.0F;
    float boxMargin = 0.01F;
    MappingClass mapping;

    /// Loads everything, and builds the grid.
    void prepare()
    {
        mapping.itsTransferType = targetKind == ModelKind::mesh ? meshToMesh : meshToPointCloud;
        source.loadInto(mapping.itsRefMesh);
        if (targetKind == ModelKind::mesh)
        {
            target.loadInto(mapping.itsTargetMesh);
        }
        else
        {
            target.loadCloudInto(mapping.itsTargetMesh);
        }
        loadFields(mapping.itsRefFields,
                   sourceFields.empty() ? std::vector{fieldRecord(atNodes, 1, sourceValues)} : sourceFields);
        loadFields(mapping.itsTargetFields,
                   targetFields.empty() ? std::vector{fieldRecord(atNodes, 1, targetValues)} : targetFields);
        fillBoxTable(mapping.itsRefMeshBoxPerElt, source.boxes(boxMargin));
        buildGrid();
    }

    /// Transfers one point; its far-outside flag, which is set to nonsense before.
    int transfer(const Vector3& point, Location kind = atNodes, int index = 0, int matlStateClass = 1,
                 int matlState = 1)
    {
        int farOutside = 77;
        mapping.interpolationAtPoint(kind, index, point, matlStateClass, matlState, farOutside);
        return farOutside;
    }

    std::string errorText() const { return mapping.itsErrorMessage == nullptr ? "" : mapping.itsErrorMessage; }

private:
    void buildGrid()
    {
        if (gridPoints.nodes.empty())
        {
            for (const auto& node : source.nodes)
            {
                gridPoints.addPoint(node);
            }
        }
        ModelClass cloud;
        gridPoints.loadCloudInto(cloud);
        const int flag = 1;
        const BoxTable noBoxes;
        if (mapping.itsBucketSpace.build(BucketSpaceClass::elementBuckets, cloud, mapping.itsRefMesh,
                                         mapping.itsRefMeshBoxPerElt, noBoxes, &flag, bucketSize, 0.0F,
                                         bucketFactor) != nullptr)
        {
            throw std::runtime_error("no grid");
        }
    }
};

#endif
