/// What a grid of buckets is built from, with the grid.
#ifndef GRID_BUILD_H
#define GRID_BUILD_H

#include "BucketSpaceClass.h"
#include "TestModels.h"

#include <string>
#include <vector>

struct GridBuild
{
    TestMesh target;
    TestMesh source;
    ModelKind targetKind = ModelKind::pointCloud;
    std::vector<int> flags{1}; ///< per target material
    int mode = BucketSpaceClass::elementBuckets;
    float bucketSize = 1.0F;
    float boxMarginRatio = 0.0F;
    float bucketFactor = 0.0F;
    std::vector<Box> targetBoxes; ///< those of the target's elements if empty
    std::vector<Box> sourceBoxes; ///< those of the source elements if empty
    BucketSpaceClass grid;

    /// A target point on the x axis. With such points alone the grid is a row of buckets.
    void addTargetPoint(float x, int matl = 0) { target.addPoint({x, 0, 0}, matl); }

    /// A source element from one x to another, around the x axis.
    void addSource(float low, float high) { source.addBox({low, -0.5F, -0.5F}, {high, 0.5F, 0.5F}); }

    void addSourceNode(float x) { source.nodes.push_back({x, 0, 0}); }

    /// Builds the grid; the text that the build returns, or "(null)".
    std::string build()
    {
        if (targetKind == ModelKind::pointCloud)
        {
            target.loadCloudInto(itsTargetModel);
        }
        else
        {
            target.loadInto(itsTargetModel, targetKind);
        }
        source.loadInto(itsSourceModel);
        fillBoxTable(itsSourceBoxes, sourceBoxes.empty() ? source.boxes() : sourceBoxes);
        fillBoxTable(itsTargetBoxes, targetBoxes.empty() ? target.boxes() : targetBoxes);
        return buildInto(grid);
    }

    /// The same once more on what build() has loaded, into another grid.
    std::string buildInto(BucketSpaceClass& other) const
    {
        return takeText(other.build(mode, itsTargetModel, itsSourceModel, itsSourceBoxes, itsTargetBoxes, flags.data(),
                                    bucketSize, boxMarginRatio, bucketFactor));
    }

    std::vector<int> items(std::int64_t bucket) const
    {
        const auto found = grid.items(bucket);
        return {found.begin(), found.end()};
    }

    /// States of all buckets, last index fastest.
    std::vector<int> states() const
    {
        const int* values = grid.itsBucketState.values();
        return {values, values + grid.itsBucketState.nbValues()};
    }

    std::vector<int> nbBuckets() const { return {grid.itsNbBuckets[0], grid.itsNbBuckets[1], grid.itsNbBuckets[2]}; }

    std::vector<int> itemsInGrid() const
    {
        const int nbItems = mode == BucketSpaceClass::elementBuckets ? source.nbElts() : source.nbNodes();
        return {grid.itsItemInGrid.get(), grid.itsItemInGrid.get() + nbItems};
    }

private:
    ModelClass itsTargetModel;
    ModelClass itsSourceModel;
    BoxTable itsSourceBoxes;
    BoxTable itsTargetBoxes;
};

#endif
