#include "GridBuild.h"
#include "MappingClass.h"
#include "TestInOwnDirectory.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace
{
class StatisticsLogTest : public TestInOwnDirectory
{
protected:
    /// Three used buckets with five entries, one needed bucket without elements, and one that is not needed.
    static void buildGrid(MappingClass& mapping)
    {
        GridBuild build;
        for (const float x : {0.0F, 1.5F, 2.5F, 4.0F})
        {
            build.addTargetPoint(x);
        }
        build.addSource(0.25F, 0.75F);
        build.addSource(0.25F, 1.5F);
        build.addSource(1.25F, 2.75F);
        ASSERT_EQ(build.build(), "(null)");
        ASSERT_EQ(build.buildInto(mapping.itsBucketSpace), "(null)");
    }

    static void count(MappingClass& mapping)
    {
        mapping.itsNbInterpolatedPoints = 12;
        mapping.itsMeanIterations = 2.25F;
        mapping.itsNbTargetNodesOutside = 9;
        mapping.itsNbTargetNodesFarOutside = 4;
        mapping.itsNbTargetGPsOutside = 8;
        mapping.itsNbTargetGPsFarOutside = 1;
    }

    /// As the platform prints what 0 divided by 0 is when it is computed.
    static std::string notANumber()
    {
        volatile float zero = 0.0F;
        char text[20];
        std::snprintf(text, sizeof text, "%f", static_cast<double>(zero / zero));
        return text;
    }
};

constexpr const char* gridLines =
    "Total number of buckets = 5\n\n"
    "number of target points where interpolation was done = 12\n\n"
    "Average number of iterations for calculating reference coordinates at each target point = 2.250000\n\n\n"
    "Total number of used buckets (buckets containing at least one target point and one source element) = 3\n\n"
    "Total number of unused buckets (buckets containing no target point or no source element) = 2\n\n"
    "Average number of elements per used bucket = 1.666667\n\n\n";
} // namespace

TEST_F(StatisticsLogTest, OfAMeshTransferCountsTheOutsidePoints)
{
    MappingClass mapping;
    mapping.itsTransferType = meshToMesh;
    buildGrid(mapping);
    count(mapping);
    mapping.writeInterpoLog();
    EXPECT_EQ(
        contentsOf("interpoLog.txt"),
        std::string(gridLines) +
            "Total number of target nodes outside the source mesh = 9\n\n"
            "Number of target nodes outside the source mesh but close enough for interpolation = 5\n\n"
            "Number of target nodes far from the source mesh for which fields are set to the default value or are "
            "propagated = 4\n\n\n"
            "Total number of target gauss points outside the source mesh = 8\n\n"
            "Number of target gauss points outside the source mesh but close enough for interpolation = 7\n\n"
            "Number of target gauss points far from the source mesh (set to zero) = 1\n\n\n");
}

TEST_F(StatisticsLogTest, OfAPointCloudTransferEndsWithTheGrid)
{
    MappingClass mapping;
    mapping.itsTransferType = meshToPointCloud;
    buildGrid(mapping);
    count(mapping);
    mapping.writeInterpoLog();
    EXPECT_EQ(contentsOf("interpoLog.txt"), gridLines);
}

TEST_F(StatisticsLogTest, CountsBucketsFilledByWidenedElementsAsUsed)
{
    GridBuild build;
    build.addTargetPoint(0);
    build.addTargetPoint(2);
    build.addSource(0.25F, 0.75F);
    build.addSource(1.25F, 1.75F);
    build.addSource(1.25F, 1.75F);
    build.bucketFactor = 0.5F;
    ASSERT_EQ(build.build(), "(null)");
    MappingClass mapping;
    mapping.itsTransferType = meshToPointCloud;
    ASSERT_EQ(build.buildInto(mapping.itsBucketSpace), "(null)");
    mapping.writeInterpoLog();
    const std::string text = contentsOf("interpoLog.txt");
    EXPECT_NE(text.find("one source element) = 2\n\n"), std::string::npos);
    EXPECT_NE(text.find("no source element) = 1\n\n"), std::string::npos);
    EXPECT_NE(text.find("per used bucket = 1.500000\n\n\n"), std::string::npos);
}

TEST_F(StatisticsLogTest, ReplacesWhatTheFileHeld)
{
    MappingClass mapping;
    mapping.itsTransferType = meshToPointCloud;
    buildGrid(mapping);
    count(mapping);
    writeFile("interpoLog.txt", std::string(5000, 'x'));
    mapping.writeInterpoLog();
    EXPECT_EQ(contentsOf("interpoLog.txt"), gridLines);
}

TEST_F(StatisticsLogTest, AveragesOverNothingAreNotANumber)
{
    // All points of a cloud lie outside the source: none is interpolated, and no bucket has elements.
    TestMesh source;
    TestMesh cloud;
    source.addBox({0, 0, 0}, {1, 1, 1});
    cloud.addPoint({50, 50, 50});
    std::vector<float> sourceValues(8, 1);
    std::vector<float> targetValues(1, 1);
    const int flag = 1;
    MappingClass mapping;
    mapping.itsTransferType = meshToPointCloud;
    mapping.itsInterpoMode = defaultAtFarNodes;
    mapping.itsTargetMatlMappingFlags = &flag;
    source.loadInto(mapping.itsRefMesh);
    cloud.loadCloudInto(mapping.itsTargetMesh);
    loadFields(mapping.itsRefFields, {fieldRecord(atNodes, 1, sourceValues)});
    loadFields(mapping.itsTargetFields, {fieldRecord(atNodes, 1, targetValues)});
    mapping.interpolation();
    ASSERT_EQ(mapping.itsErrorCode, 0);
    mapping.writeInterpoLog();
    EXPECT_EQ(contentsOf("interpoLog.txt"),
              "Total number of buckets = 1\n\n"
              "number of target points where interpolation was done = 0\n\n"
              "Average number of iterations for calculating reference coordinates at each target point = " +
                  notANumber() +
                  "\n\n\n"
                  "Total number of used buckets (buckets containing at least one target point and one source element) "
                  "= 0\n\n"
                  "Total number of unused buckets (buckets containing no target point or no source element) = 1\n\n"
                  "Average number of elements per used bucket = " +
                  notANumber() + "\n\n\n");
}

TEST_F(StatisticsLogTest, AFileThatCannotBeOpenedIsReported)
{
    MappingClass mapping;
    mapping.itsTransferType = meshToMesh;
    buildGrid(mapping);
    std::filesystem::create_directory("interpoLog.txt");
    testing::internal::CaptureStdout();
    mapping.writeInterpoLog();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Error: impossible to open interpoLog.txt");
    EXPECT_EQ(mapping.itsErrorCode, 0);
}
