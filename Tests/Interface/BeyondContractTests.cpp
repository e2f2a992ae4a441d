// What the library does with requests that its contract does not cover: never a stray access, never an endless loop; a
// right result where that is easy, an error otherwise.
#include "HexahedronOnItself.h"
#include "Scenes.h"
#include "TemporaryDirectory.h"

#include <cstdio>
#include <limits>
#include <new>

#include <sys/resource.h>

namespace
{
constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float largest = std::numeric_limits<float>::max();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

class BeyondContract : public Host
{
protected:
    /// A cloud in the roomy source, in mode 1, with default -1.
    static Transfer toPoints(std::vector<Point> points)
    {
        Transfer transfer = transferOf(linear, roomySource(), cloud(std::move(points)));
        transfer.mode = 1;
        transfer.targetFields[0].defaultValue = -1.0F;
        return transfer;
    }

    static Outcome runWithTuning(const Transfer& transfer, const std::string& contents)
    {
        return run(transfer, {.files = {{"mappingInputs.txt", contents}}});
    }

private:
    WorkingDirectory itsDirectory; // calls write their log into the current directory
};

TEST_F(BeyondContract, moreThanNineComponentsAreAveragedAndTransferred)
{
    // Component c of every Gauss point is 10 + c, and so is its average everywhere.
    constexpr int nbComponents = 13;
    Transfer transfer = transferOf(linear, roomySource(), unitHexahedron({1, 1, 1}));
    transfer.sourceFields = {{.location = atGaussPointsLocation, .components = nbComponents}};
    for (std::size_t i = 0; i < gaussPointsOf(transfer.source) * nbComponents; ++i)
    {
        transfer.sourceFields[0].values.push_back(10.0 + static_cast<double>(i % nbComponents));
    }
    transfer.targetFields = {{.components = nbComponents}};
    const Outcome outcome = run(transfer);
    ASSERT_EQ(outcome.code, 0);
    for (std::size_t i = 0; i < outcome.fields[0].size(); ++i)
    {
        EXPECT_NEAR(outcome.fields[0][i], 10.0 + static_cast<double>(i % nbComponents), 1e-4) << i;
    }
}

TEST_F(BeyondContract, aNameWithoutAnEndIsNotReadBeyondItsRecord)
{
    HexahedronOnItself host;
    std::fill(std::begin(host.source.name), std::end(host.source.name), 'n');
    std::fill(std::begin(host.target.name), std::end(host.target.name), 'n');
    host.source.matlStateFlag = 0x6e6e6e6e; // "nnnn": the name would go on here
    EXPECT_TRUE(host.succeedsWith(libraryUnderTest()));
}

TEST_F(BeyondContract, fieldsWithoutComponentsAreNotWritten)
{
    for (const int nbComponents : {0, -1, -2147483647 - 1})
    {
        HexahedronOnItself host;
        host.source.nbComponents = nbComponents;
        host.transferToMesh(libraryUnderTest());
        EXPECT_EQ(host.code, 0);
        EXPECT_TRUE(std::ranges::all_of(host.targetValues, [](float value) { return value == 0.0F; }));
    }
}

TEST_F(BeyondContract, aNegativeNumberOfComponentsCannotBeAveraged)
{
    HexahedronOnItself host;
    host.source.location = atGaussPointsLocation;
    host.source.nbComponents = -1;
    host.transferToMesh(libraryUnderTest());
    EXPECT_EQ(host.code, 1);
    EXPECT_STREQ(host.message,
                 "Allocation of itsValuesInterpoNode is not possible in FieldClass::interpoAtNodes() function.\n");
}

TEST_F(BeyondContract, sourceFieldsWithoutTargetFieldAreLeftOut)
{
    Transfer transfer = transferOf(linear, roomySource(), unitHexahedron({1, 1, 1}));
    transfer.sourceFields.push_back(nodal(transfer.source, linear));
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 0);
    expectNear(outcome.fields[0], atNodes(transfer.target, linear), 1e-4);
}

TEST_F(BeyondContract, aTargetFieldAtAnUnknownLocationIsNeverComputed)
{
    Transfer transfer = transferOf(linear, roomySource(), unitHexahedron({1, 1, 1}));
    for (const int location : {0, 4, -1})
    {
        transfer.targetFields = {{.location = location}};
        const Outcome outcome = run(transfer);
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.message, "There is no target point where fields should be interpolated.\n");
        EXPECT_EQ(outcome.fields[0], constant(8, untouched));
    }
}

TEST_F(BeyondContract, aHugeCoordinateIsFarAndLeavesTheOtherPointsRight)
{
    // Buckets are doubled until the whole box is covered; the points near the source then share one.
    for (const float huge : {3e9F, 1e20F, -1e20F, 1e38F})
    {
        const Outcome outcome = run(toPoints({{1, 1, 1}, {huge, 1, 1}, {1, 1, huge}, {3, 2, 1}}));
        EXPECT_EQ(outcome.code, 0);
        expectNear(outcome.fields[0], {linear({1, 1, 1}), -1.0, -1.0, linear({3, 2, 1})}, 1e-4);
    }
}

TEST_F(BeyondContract, aBoxOfInfiniteExtentHoldsNoPoint)
{
    for (const float value : {infinity, -infinity})
    {
        EXPECT_EQ(run(toPoints({{1, 1, 1}, {value, 1, 1}})).fields[0], constant(2, -1.0));
    }
    // The extent of finite coordinates is infinite, too.
    EXPECT_EQ(run(toPoints({{1, 1, 1}, {largest, 1, 1}, {-largest, 1, 1}})).fields[0], constant(3, -1.0));
}

TEST_F(BeyondContract, aPointThatIsNotANumberIsFar)
{
    const Outcome behindOthers = run(toPoints({{1, 1, 1}, {3, 2, 1}, {notANumber, 1, 1}}));
    EXPECT_EQ(behindOthers.code, 0);
    expectNear(behindOthers.fields[0], {linear({1, 1, 1}), linear({3, 2, 1}), -1.0}, 1e-4);
    // As the first of all it is the beginning of the grid's box, which then has no place either.
    const Outcome first = run(toPoints({{notANumber, 1, 1}, {1, 1, 1}}));
    EXPECT_EQ(first.code, 0);
    EXPECT_EQ(first.fields[0], constant(2, -1.0));
}

TEST_F(BeyondContract, aSourceNodeThatIsNotANumberSpoilsItsElementsOnly)
{
    // The node at the corner of the first of eight elements.
    Transfer transfer = toPoints({{3, 3, 3}, {0.5F, 0.5F, 0.5F}});
    transfer.source.nodes[0] = {notANumber, notANumber, notANumber};
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 0);
    // The mean size of the boxes is no number: one bucket of no use, in which no point lies.
    EXPECT_EQ(outcome.fields[0], constant(2, -1.0));
}

TEST_F(BeyondContract, aTargetNodeThatIsNotANumberHasNoPartner)
{
    for (const Correspondence kind : {Correspondence::nodes, Correspondence::gaussPoints})
    {
        Matching matching = {.kind = kind, .source = roomySource(), .target = unitHexahedron({1, 1, 1})};
        matching.target.nodes[7] = {notANumber, 1, 1};
        EXPECT_EQ(run(matching).code, 1);
        matching.target.nodes[7] = {1, infinity, 1};
        EXPECT_EQ(run(matching).code, 1);
        matching.target.nodes[7] = {1, 2, largest};
        EXPECT_EQ(run(matching).code, 1);
    }
}

TEST_F(BeyondContract, aGaussPointOutsideTheGridHasNoNearestElement)
{
    // All corners of a quadratic tetrahedron at x = 1, all middles of its edges at x = 2: its first Gauss point, where
    // a corner weighs -1/8 and a middle 1/4, lies at x = -4/8 + 6 * 2/4 = 2.5, half a unit beyond its own nodes.
    // Source elements, and so the buckets, are a quarter wide.
    Mesh target = referenceElement(element::quadraticTetrahedron, 1.0F, {1, 1, 1});
    for (std::size_t node = 0; node < target.nodes.size(); ++node)
    {
        target.nodes[node][0] = node < 4 ? 1.0F : 2.0F;
    }
    Transfer transfer = transferOf(linear, box(element::hexahedron, {0, 0, 0}, {4, 4, 4}, {16, 16, 16}), target);
    transfer.targetFields = {atGaussPoints()};
    EXPECT_EQ(run(transfer).code, 2);
    transfer.mode = 1;
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.fields[0][0], 0.0);
}

TEST_F(BeyondContract, aSourceWithoutElementsHoldsNoMesh)
{
    HexahedronOnItself host;
    host.nbSourceElts = 0;
    const auto expectNotIncluded = [&]
    {
        EXPECT_EQ(host.code, 1);
        EXPECT_STREQ(host.message, "Error: the target mesh is not included in the source mesh.\n");
    };
    host.transferToMesh(libraryUnderTest());
    expectNotIncluded();
    host.matchNodes(libraryUnderTest());
    expectNotIncluded();
    host.matchGaussPoints(libraryUnderTest());
    expectNotIncluded();
    host.transferToPoints(libraryUnderTest());
    EXPECT_EQ(host.code, 2);
}

TEST_F(BeyondContract, aTargetWithoutElementsOrPointsHasNothingSelected)
{
    HexahedronOnItself host;
    host.nbTargetElts = 0;
    host.nbTargetNodes = 0;
    const auto expectNothingSelected = [&]
    {
        EXPECT_EQ(host.code, 1);
        EXPECT_STREQ(host.message, "Error: please select at least one domain in the target model.\n");
    };
    host.transferToMesh(libraryUnderTest());
    expectNothingSelected();
    host.transferToPoints(libraryUnderTest());
    expectNothingSelected();
    host.matchNodes(libraryUnderTest());
    expectNothingSelected();
    host.matchGaussPoints(libraryUnderTest());
    expectNothingSelected();
}

TEST_F(BeyondContract, aNegativeNumberOfElementsOrNodesIsARequestForMemoryThatCannotBeMet)
{
    for (const int count : {-1, -2147483647 - 1})
    {
        HexahedronOnItself source;
        source.nbSourceElts = count;
        source.transferToMesh(libraryUnderTest());
        EXPECT_EQ(source.code, 1);
        EXPECT_STREQ(source.message,
                     "Allocation of itsRefMeshBoxPerElt is not possible in MappingClass::interpolation() "
                     "function.\n");
        HexahedronOnItself target;
        target.nbTargetElts = count;
        target.matchGaussPoints(libraryUnderTest());
        EXPECT_EQ(target.code, 1);
        EXPECT_STREQ(target.message, "Allocation of itsTargetMeshBoxPerElt is not possible in "
                                     "MappingClass::interpolation() function.\n");
        HexahedronOnItself points;
        points.nbTargetNodes = count;
        points.transferToPoints(libraryUnderTest());
        EXPECT_EQ(points.code, 1);
        EXPECT_STREQ(points.message, "Allocation of itsTargetMeshMatlIdPerNode is not possible in "
                                     "MappingClass::interpolation() function.\n");
        HexahedronOnItself nodes;
        nodes.nbSourceNodes = count;
        nodes.matchNodes(libraryUnderTest());
        EXPECT_EQ(nodes.code, 1);
        EXPECT_STREQ(nodes.message, "Allocation of itsRefMeshMatlStatePerNode is not possible in "
                                    "MappingClass::interpolation() function.\n");
    }
}

TEST_F(BeyondContract, aNegativeNumberOfMaterialsEndsTheProcess)
{
    HexahedronOnItself host;
    host.nbTargetMatls = -1;
    EXPECT_EXIT(host.matchNodes(libraryUnderTest()), testing::ExitedWithCode(0), "");
}

TEST_F(BeyondContract, absurdSettingsDoNotKeepTheCallFromEnding)
{
    const Transfer transfer = toPoints({{1, 1, 1}, {3, 2, 1}, {50, 1, 1}});
    for (const char* factor : {"nan", "inf", "-inf", "-1", "0", "1e38", "-1e38", "1e-45"})
    {
        for (const char* tolerance : {"nan", "inf", "-inf", "-1", "0", "1e38", "1e-45"})
        {
            for (const char* limit : {"0", "1", "-9223372036854775808", "20"})
            {
                const Outcome outcome = runWithTuning(transfer, std::string(factor) + ' ' + tolerance + ' ' + limit);
                EXPECT_EQ(outcome.code, 0) << factor << ' ' << tolerance << ' ' << limit;
                // No setting brings a point into an element whose box does not hold it.
                EXPECT_EQ(outcome.fields[0][2], -1.0) << factor << ' ' << tolerance << ' ' << limit;
            }
        }
    }
}

TEST_F(BeyondContract, widenedElementsOfNoSizeChangeNothingForPointsInside)
{
    const Transfer transfer = toPoints({{1, 1, 1}, {3, 2, 1}});
    for (const char* factor : {"nan", "inf", "-inf", "-5", "1e38"})
    {
        expectNear(runWithTuning(transfer, factor).fields[0], {linear({1, 1, 1}), linear({3, 2, 1})}, 1e-4);
    }
}

TEST_F(BeyondContract, aLimitThatAllowsMoreBucketsThanMemoryHoldsIsAnExhaustedHeap)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer's allocator ends the process";
#endif
    // Elements of size 2 under a box of 1e9 by 1e9 by 1e9: 5e8 buckets along each axis. Their size is doubled until
    // the product is a number of 64 bits, which is still beyond any memory.
    Transfer transfer = toPoints({{1, 1, 1}, {1e9F, 1e9F, 1e9F}});
    const Ending ending = runToTheEnd(transfer, {.files = {{"mappingInputs.txt", "0.1 0.001 9223372036854775807"}},
                                                 .around = [](const std::function<void()>& call)
                                                 {
                                                     const rlimit limit = {rlim_t{1} << 33, rlim_t{1} << 33};
                                                     setrlimit(RLIMIT_AS, &limit);
                                                     try
                                                     {
                                                         call();
                                                     }
                                                     catch (const std::bad_alloc&)
                                                     {
                                                         std::puts("no memory");
                                                     }
                                                 }});
    EXPECT_TRUE(ending.returned);
    EXPECT_EQ(ending.printed, "no memory\n");
    EXPECT_TRUE(ending.outputsUntouched);
}
} // namespace
