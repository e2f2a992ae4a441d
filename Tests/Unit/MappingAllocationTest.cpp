// What happens to whole computations whose memory requests fail, one after the other.
#include "AllocationFailure.h"
#include "MappingClass.h"
#include "TemporaryDirectory.h"
#include "TestModels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <new>
#include <string>
#include <vector>

namespace
{
/// Two cubes in a larger one. The second is of a material that the source does not have, so that the four nodes that it
/// does not share with the first are far outside.
class MappingAllocationTest : public TestInOwnDirectory
{
protected:
    MappingAllocationTest()
    {
        source.addBox({0, 0, 0}, {1, 1, 1});
        target.matlStates = {1, 4};
        target.addBox({0.125F, 0.125F, 0.125F}, {0.5F, 0.875F, 0.875F}, 0);
        for (const int node : {1, 2, 6, 5})
        {
            target.nodes.push_back(target.nodes[static_cast<std::size_t>(node)]);
            target.nodes.back()[0] = 0.875F;
        }
        target.addElement(1, std::vector<int>{1, 8, 9, 2, 5, 11, 10, 6}, 1);
        sourceRecord = fieldRecord(atGaussPoints, 1, sourceValues);
        targetRecord = fieldRecord(atNodes, 1, targetValues);
        loadOnce();
    }

    /// The meshes' own tables are made here, before anything fails.
    void loadOnce()
    {
        ModelClass model;
        source.loadInto(model);
        target.loadInto(model);
        for (const std::vector<int>& row : source.connectivity)
        {
            sourceRows.push_back(row.data());
        }
        for (const std::vector<int>& row : target.connectivity)
        {
            targetRows.push_back(row.data());
        }
    }

    void load(MappingClass& mapping)
    {
        load(mapping.itsRefMesh, source, sourceRows);
        load(mapping.itsTargetMesh, target, targetRows);
        mapping.itsTargetMatlMappingFlags = flags.data();
    }

    static void load(ModelClass& model, const TestMesh& mesh, const std::vector<const int*>& rows)
    {
        model.init(ModelKind::mesh, mesh.nbElts(), mesh.nbNodes(),
                   reinterpret_cast<const float(*)[3]>(mesh.nodes.data()), rows.data(), mesh.types.data(),
                   static_cast<int>(mesh.matlStates.size()), mesh.matlIds.data(), mesh.matlStates.data());
    }

    static void printOutcome(const MappingClass& mapping)
    {
        std::printf("%d %s", mapping.itsErrorCode, mapping.itsErrorMessage == nullptr ? "" : mapping.itsErrorMessage);
    }

    void transfer()
    {
        MappingClass mapping;
        mapping.itsTransferType = meshToMesh;
        mapping.itsInterpoMode = propagateToFarNodes;
        load(mapping);
        mapping.itsRefFields.init({1, &sourceRecord});
        mapping.itsTargetFields.init({1, &targetRecord});
        mapping.interpolation();
        printOutcome(mapping);
    }

    void matchNodes()
    {
        MappingClass mapping;
        load(mapping);
        mapping.itsNodeCorrespondence = correspondence.data();
        mapping.nodToNodCorrespondence();
        printOutcome(mapping);
    }

    void matchGaussPoints()
    {
        MappingClass mapping;
        load(mapping);
        mapping.itsGPCorrespondenceA = correspondenceRows.data();
        mapping.itsGPCorrespondenceB = correspondenceRows.data();
        mapping.GPToGPCorrespondence();
        printOutcome(mapping);
    }

    TestMesh source;
    TestMesh target;
    std::vector<float> sourceValues = std::vector<float>(8, 3);
    std::vector<float> targetValues = std::vector<float>(12, -1);
    FieldStruct sourceRecord{};
    FieldStruct targetRecord{};
    std::vector<int> flags{1, 1};
    std::array<int, 16> correspondence{};
    std::array<int*, 2> correspondenceRows{correspondence.data(), correspondence.data() + 8};
    std::vector<const int*> sourceRows;
    std::vector<const int*> targetRows;
};

using Texts = std::vector<std::string>;

Texts operator+(Texts first, const Texts& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

std::string tableText(const std::string& table)
{
    return "1 Allocation of " + table + " is not possible in MappingClass::interpolation() function.\n";
}

const Texts modelTexts(2, "Error in ModelClass file at line 84: impossible to allocate an integer table \n");
const Texts fieldsTexts(2, "Error in FieldsSetClass file at line 61: impossible to allocate fields. \n");
const Texts boxTexts{tableText("itsRefMeshBoxPerElt"),       tableText("itsRefMeshBoxPerElt[0]"),
                     tableText("itsRefMeshBoxPerElt[0][0]"), tableText("itsTargetMeshBoxPerElt"),
                     tableText("itsTargetMeshBoxPerElt[0]"), tableText("itsTargetMeshBoxPerElt[0][0]")};

Texts gridTexts(int lastLine)
{
    const std::string start = "Error in BucketSpaceClass file at line ";
    return {start + "307: impossible to allocate an int** \n",
            start + "315: impossible to allocate an int* \n",
            start + "328: impossible to allocate an int \n",
            start + "482: impossible to allocate an BucketClass** \n",
            start + "490: impossible to allocate an BucketClass* \n",
            start + "502: impossible to allocate a BucketClass \n",
            start + "992: impossible to allocate int \n",
            start + std::to_string(lastLine) + ": impossible to allocate int \n"};
}
} // namespace

TEST_F(MappingAllocationTest, EveryTableOfATransferHasItsText)
{
    const Texts averageTexts{
        "1 Allocation of itsValuesInterpoNode is not possible in FieldClass::interpoAtNodes() function.\n",
        "Error in ModelClass file at line 127: impossible to allocate itsEltNbPerNode \n"};
    const Texts nodeTexts{tableText("itsTargetMeshMatlIdPerNode"), tableText("itsTargetMeshMatlStatePerNode"),
                          tableText("itsTargetMeshMappingAtNode")};
    const Texts pointTexts(
        3, "1 Allocation of the target points is not possible in MappingClass::interpolation() function.\n");
    const Texts farTexts{
        "1 Allocation of itsRefMeshBaryPerElt is not possible in MappingClass::createBaryPerRefElt() function.\n",
        "1 Allocation of itsRefMeshBaryPerElt[0] is not possible in MappingClass::createBaryPerRefElt() function.\n",
        "1 Allocation of itsTargetNodesFarOutside is not possible in MappingClass:: interpolationAtPoint() function.\n",
        "1 Allocation of the open elements is not possible in MappingClass::nodeFieldsPropagation() function.\n"};
    EXPECT_EQ(outcomesOfFailedTables([this] { transfer(); }),
              modelTexts + fieldsTexts + boxTexts + averageTexts + nodeTexts + gridTexts(1026) + pointTexts + farTexts);
}

TEST_F(MappingAllocationTest, EveryTableOfANodeCorrespondenceHasItsText)
{
    const Texts nodeTexts{tableText("itsRefMeshMatlStatePerNode"), tableText("itsTargetMeshMatlStatePerNode"),
                          tableText("itsTargetMeshMappingAtNode")};
    EXPECT_EQ(outcomesOfFailedTables([this] { matchNodes(); }), modelTexts + boxTexts + nodeTexts + gridTexts(1103));
}

TEST_F(MappingAllocationTest, EveryTableOfAGaussPointCorrespondenceHasItsText)
{
    EXPECT_EQ(outcomesOfFailedTables([this] { matchGaussPoints(); }), modelTexts + boxTexts + gridTexts(1026));
}

TEST_F(MappingAllocationTest, MessageBuffersNameTheComputationThatNeedsThem)
{
    const Texts outcomes = outcomesOfFailedRequests([this] { transfer(); });
    for (const char* caller :
         {"MappingClass::checkInterpo()", "MappingClass::interpoTests()", "MappingClass::interpolation()",
          "FieldClass::interpoAtNodes()", "BucketSpaceClass::build()", "MappingClass::nodeFieldsPropagation()"})
    {
        const std::string text =
            std::string("Error in MappingStringUtilities file at line 30: impossible to allocate a string in ") +
            caller + "\n";
        EXPECT_NE(std::find(outcomes.begin(), outcomes.end(), text), outcomes.end()) << caller;
    }
}

TEST_F(MappingAllocationTest, WithEnoughMemoryTheTransferSucceeds)
{
    testing::internal::CaptureStdout();
    transfer();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "0 ");
    for (const float value : targetValues)
    {
        EXPECT_NEAR(value, 3.0F, 1e-5F);
    }
}

TEST_F(MappingAllocationTest, TheExceptionOfAnExhaustedHeapLeavesNothingBehind)
{
    testing::internal::CaptureStdout();
    const std::int64_t nbRequestsBefore = nbAllocationRequests();
    transfer();
    const std::int64_t nbRequests = nbAllocationRequests() - nbRequestsBefore;
    testing::internal::GetCapturedStdout();
    ASSERT_GT(nbRequests, 20);
    for (int n = 1; n <= nbRequests; ++n)
    {
        const std::int64_t before = nbLiveAllocations();
        bool isThrown = false;
        try
        {
            const AllocationFailure failure(n, AllocationFailure::Answer::exception);
            transfer();
        }
        catch (const std::bad_alloc&)
        {
            isThrown = true;
        }
        EXPECT_TRUE(isThrown) << n;
        EXPECT_EQ(nbLiveAllocations(), before) << n;
    }
}
