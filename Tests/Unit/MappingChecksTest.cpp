// What a transfer admits, and what the correspondences admit.
#include "AllocationFailure.h"
#include "MappingClass.h"
#include "TestInOwnDirectory.h"
#include "TestModels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace
{
constexpr const char* sourceFieldText = "Error: interpolation from a field defined at elements is not implemented yet.";
constexpr const char* targetFieldText = "Error: interpolation at elements is not implemented yet.";
constexpr const char* sourceTypeText =
    "Error: Interpolation from a mesh containing elements different from linear or quadratic tetrahedrons, linear "
    "hexahedrons, linear wedges and linear pyramids is not possible.";
constexpr const char* targetTypeText =
    "Error: Interpolation on a mesh containing elements different from\nlinear or quadratic tetrahedrons, linear "
    "hexahedrons, linear wedges, linear pyramids,\nlinear triangular elements, linear quadrilateral element\nis not "
    "possible.";
/// The test of one correspondence with its texts.
struct CorrespondenceTest
{
    void (MappingClass::*run)();
    const char* sourceText;
    const char* targetText;
};

const CorrespondenceTest correspondenceTests[] = {
    {&MappingClass::nodTonodCorrTests,
     "Error: node to node correspondence computation from a mesh containing elements different from linear or "
     "quadratic "
     "tetrahedrons, linear hexahedrons, linear wedges or linear pyramids is not possible yet.",
     "Error: node to node correspondence computation to\n a mesh containing elements different from\n linear or "
     "quadratic tetrahedrons, linear hexahedrons, linear wedges or linear pyramids\n linear triangular elements, "
     "linear "
     "quadrilateral element\n is not possible."},
    {&MappingClass::GPToGPCorrTests,
     "Error: GP to GP correspondence computation from a mesh containing elements different from linear or quadratic "
     "tetrahedrons, linear hexahedrons, linear wedges or linear pyramids is not possible yet.",
     "Error: GP to GP correspondence computation to\n a mesh containing elements different from\n linear or quadratic "
     "tetrahedrons, linear hexahedrons, linear wedges, linear pyramids\n linear triangular elements, linear "
     "quadrilateral element\n is not possible."}};

class MappingChecksTest : public TestInOwnDirectory
{
protected:
    struct Outcome
    {
        int code;
        std::string text;
        bool operator==(const Outcome&) const = default;
    };

    static Outcome outcomeOf(const MappingClass& mapping)
    {
        return {mapping.itsErrorCode, mapping.itsErrorMessage == nullptr ? "" : mapping.itsErrorMessage};
    }

    static Outcome checkMode(int transferType, int mode)
    {
        MappingClass mapping;
        mapping.itsTransferType = transferType;
        mapping.itsInterpoMode = mode;
        mapping.checkInterpo();
        return outcomeOf(mapping);
    }

    /// Elements of these types, whose nodes do not matter.
    static TestMesh meshOf(const std::vector<int>& types)
    {
        TestMesh mesh;
        for (const int type : types)
        {
            mesh.addElement(type, std::vector<int>{});
        }
        return mesh;
    }

    static Outcome testTransfer(const std::vector<int>& sourceTypes, const std::vector<int>& targetTypes,
                                const std::vector<int>& sourceLocations = {atNodes},
                                const std::vector<int>& targetLocations = {atNodes})
    {
        TestMesh source = meshOf(sourceTypes);
        TestMesh target = meshOf(targetTypes);
        MappingClass mapping;
        source.loadInto(mapping.itsRefMesh);
        target.loadInto(mapping.itsTargetMesh);
        std::vector<float> values(1);
        std::vector<FieldStruct> sourceFields;
        std::vector<FieldStruct> targetFields;
        for (const int location : sourceLocations)
        {
            sourceFields.push_back(fieldRecord(location, 1, values));
        }
        for (const int location : targetLocations)
        {
            targetFields.push_back(fieldRecord(location, 1, values));
        }
        loadFields(mapping.itsRefFields, sourceFields);
        loadFields(mapping.itsTargetFields, targetFields);
        mapping.interpoTests();
        return outcomeOf(mapping);
    }

    static Outcome testCorrespondence(const CorrespondenceTest& test, const std::vector<int>& sourceTypes,
                                      const std::vector<int>& targetTypes)
    {
        TestMesh source = meshOf(sourceTypes);
        TestMesh target = meshOf(targetTypes);
        MappingClass mapping;
        source.loadInto(mapping.itsRefMesh);
        target.loadInto(mapping.itsTargetMesh);
        (mapping.*test.run)();
        return outcomeOf(mapping);
    }

    static inline const Outcome admitted{0, ""};
    static inline const std::vector<int> volumeTypes{1, 2, 3, 10, 12};
};
} // namespace

TEST_F(MappingChecksTest, AMeshTransferHasThreeModes)
{
    for (const int mode : {0, 1, 2})
    {
        EXPECT_EQ(checkMode(meshToMesh, mode), admitted) << mode;
    }
    for (const int mode : {3, -1, 2147483647})
    {
        EXPECT_EQ(checkMode(meshToMesh, mode), (Outcome{1, "Error: interpolation mode number " + std::to_string(mode) +
                                                               " is unknown for 3D FE to 3D FE transfer."}));
    }
}

TEST_F(MappingChecksTest, APointCloudTransferHasTwoModes)
{
    for (const int mode : {0, 1})
    {
        EXPECT_EQ(checkMode(meshToPointCloud, mode), admitted) << mode;
    }
    for (const int mode : {2, 3, -1})
    {
        EXPECT_EQ(checkMode(meshToPointCloud, mode),
                  (Outcome{1, "Error: interpolation mode number " + std::to_string(mode) +
                                  " is unknown for 3D FE to points cloud transfer."}));
    }
}

TEST_F(MappingChecksTest, FieldsAtElementsAreRefused)
{
    EXPECT_EQ(testTransfer(volumeTypes, volumeTypes, {atNodes, atGaussPoints}, {atNodes, atGaussPoints}), admitted);
    EXPECT_EQ(testTransfer(volumeTypes, volumeTypes, {atNodes, atElements}), (Outcome{1, sourceFieldText}));
    EXPECT_EQ(testTransfer(volumeTypes, volumeTypes, {atNodes}, {atNodes, atElements}), (Outcome{1, targetFieldText}));
}

TEST_F(MappingChecksTest, ASourceMeshHasVolumeElementsOnly)
{
    for (int type = -1; type <= 15; ++type)
    {
        const bool isVolume = std::find(volumeTypes.begin(), volumeTypes.end(), type) != volumeTypes.end();
        EXPECT_EQ(testTransfer({1, type, 2}, {1}), isVolume ? admitted : (Outcome{1, sourceTypeText})) << type;
    }
}

TEST_F(MappingChecksTest, ATargetMeshMayHaveTrianglesAndQuadrilateralsToo)
{
    for (int type = -1; type <= 15; ++type)
    {
        const bool isVolume = std::find(volumeTypes.begin(), volumeTypes.end(), type) != volumeTypes.end();
        EXPECT_EQ(testTransfer({1}, {1, 2, type}),
                  isVolume || type == 6 || type == 7 ? admitted : (Outcome{1, targetTypeText}))
            << type;
    }
}

TEST_F(MappingChecksTest, OfSeveralFaultsTheFirstIsReported)
{
    EXPECT_EQ(testTransfer({4}, {4}, {atElements}, {atElements}), (Outcome{1, sourceFieldText}));
    EXPECT_EQ(testTransfer({4}, {4}, {atNodes}, {atElements}), (Outcome{1, targetFieldText}));
    EXPECT_EQ(testTransfer({4}, {4}), (Outcome{1, sourceTypeText}));
    EXPECT_EQ(testTransfer({1}, {4}), (Outcome{1, targetTypeText}));
}

TEST_F(MappingChecksTest, APointCloudHasNoElementsToRefuse)
{
    TestMesh source = meshOf({1});
    TestMesh cloud;
    cloud.addPoint({0, 0, 0});
    std::vector<float> values(1);
    MappingClass mapping;
    source.loadInto(mapping.itsRefMesh);
    cloud.loadCloudInto(mapping.itsTargetMesh);
    loadFields(mapping.itsRefFields, {fieldRecord(atNodes, 1, values)});
    loadFields(mapping.itsTargetFields, {fieldRecord(atNodes, 1, values)});
    mapping.interpoTests();
    EXPECT_EQ(outcomeOf(mapping), admitted);
}

TEST_F(MappingChecksTest, AdmittedTransfersLeaveNoTextBehind)
{
    MappingClass mapping;
    mapping.itsTransferType = meshToMesh;
    const std::int64_t before = nbLiveAllocations();
    mapping.checkInterpo();
    mapping.interpoTests();
    EXPECT_EQ(outcomeOf(mapping), admitted);
    EXPECT_EQ(nbLiveAllocations(), before);
}

TEST_F(MappingChecksTest, ATransferThatIsNotAdmittedDoesNotStart)
{
    static int nbCalls = 0;
    nbCalls = 0;
    MappingClass mapping;
    mapping.itsTransferType = meshToMesh;
    mapping.itsInterpoMode = 7;
    mapping.itsCallback = [](int, char*, char*, int) { return ++nbCalls; };
    mapping.interpolation();
    EXPECT_EQ(outcomeOf(mapping),
              (Outcome{1, "Error: interpolation mode number 7 is unknown for 3D FE to 3D FE transfer."}));
    EXPECT_EQ(nbCalls, 0);
    EXPECT_STREQ(mapping.itsTitle, "");
}

TEST_F(MappingChecksTest, PointsAreMatchedFromVolumeElementsOnly)
{
    for (const CorrespondenceTest& test : correspondenceTests)
    {
        for (const int type : {1, 2, 3, 10})
        {
            EXPECT_EQ(testCorrespondence(test, {type}, {1}), admitted) << type;
        }
        for (const int type : {0, 4, 5, 6, 7, 8, 9, 11, 12, 13, 14, 15, -1})
        {
            EXPECT_EQ(testCorrespondence(test, {1, type}, {1, 1}), (Outcome{1, test.sourceText})) << type;
        }
    }
}

TEST_F(MappingChecksTest, APyramidToBeMatchedIsLookedForInTheTarget)
{
    for (const CorrespondenceTest& test : correspondenceTests)
    {
        EXPECT_EQ(testCorrespondence(test, {12}, {12}), admitted);
        EXPECT_EQ(testCorrespondence(test, {6, 1}, {12, 1}), admitted);
        EXPECT_EQ(testCorrespondence(test, {1, 12}, {12, 1}), (Outcome{1, test.sourceText}));
        // The target has no element there.
        EXPECT_EQ(testCorrespondence(test, {1, 12}, {12}), (Outcome{1, test.sourceText}));
    }
}

TEST_F(MappingChecksTest, PointsAreMatchedWithTrianglesAndQuadrilateralsToo)
{
    for (const CorrespondenceTest& test : correspondenceTests)
    {
        for (const int type : {1, 2, 3, 10, 6, 7, 12})
        {
            EXPECT_EQ(testCorrespondence(test, {1}, {1, type}), admitted) << type;
        }
        for (const int type : {0, 4, 5, 8, 9, 11, 13, 14, 15, -1})
        {
            EXPECT_EQ(testCorrespondence(test, {1}, {1, type}), (Outcome{1, test.targetText})) << type;
        }
        EXPECT_EQ(testCorrespondence(test, {6}, {4}), (Outcome{1, test.sourceText}));
    }
}
