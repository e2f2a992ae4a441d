// Calls leave no memory behind.
#include "Scenes.h"

#include <malloc.h>

namespace
{
class Memory : public Host
{
protected:
    /// Bytes in use; 0 under tools that replace the allocator, which look for leaks themselves.
    static std::size_t bytesInUse()
    {
        const struct mallinfo2 info = mallinfo2();
        return info.uordblks + info.hblkhd;
    }

    /// Runs a call several times; the memory in use afterwards is what it was after the first.
    template <typename Call> static void expectSteady(int nbCalls, const Call& call)
    {
        call();
        const std::size_t before = bytesInUse();
        for (int i = 0; i < nbCalls; ++i)
        {
            call();
        }
        EXPECT_LE(bytesInUse(), before + 4096U);
    }
};

TEST_F(Memory, staysSteadyOverCallsWithLargeMeshes)
{
    Transfer transfer = transferOf(linear, box(element::hexahedron, {0, 0, 0}, {1, 1, 1}, {27, 27, 27}),
                                   box(element::tetrahedron, {0, 0, 0}, {1, 1, 1}, {15, 15, 15}));
    ASSERT_EQ(transfer.source.nbElts(), 19683);
    ASSERT_EQ(transfer.target.nbElts(), 20250);
    transfer.sourceFields.push_back(
        {.location = atGaussPointsLocation, .values = constant(gaussPointsOf(transfer.source), 2.0)});
    transfer.targetFields = {Field{}, atGaussPoints()};
    expectSteady(3, [&] { EXPECT_EQ(run(transfer).code, 0); });
}

TEST_F(Memory, staysSteadyOverHundredsOfCallsWhateverTheirOutcome)
{
    Transfer successful = transferOf(linear, sourceWithGap(), chainAcrossGap());
    successful.sourceFields.push_back(
        {.location = atGaussPointsLocation, .values = constant(gaussPointsOf(successful.source), 2.0)});
    successful.targetFields = {Field{}, atGaussPoints()};
    successful.mode = 1;
    Transfer propagating = successful;
    propagating.mode = 2;
    Transfer warned = successful;
    warned.mode = 2;
    warned.target.matlStates = {4};
    Transfer outside = successful;
    outside.mode = 0;
    Transfer notIncluded = successful;
    notIncluded.target = moved(successful.target, {50, 0, 0});
    Transfer refused = successful;
    refused.mode = 9;
    Transfer toCloud = transferOf(linear, roomySource(), cloud({{1, 1, 1}, {50, 1, 1}}));
    toCloud.mode = 1;
    const Matching nodes = {.kind = Correspondence::nodes, .source = roomySource(), .target = roomySource()};
    const Matching gaussPoints = {
        .kind = Correspondence::gaussPoints, .source = roomySource(), .target = roomySource()};
    Matching unmatched = nodes;
    unmatched.target = box(element::hexahedron, {0, 0, 0}, {4, 4, 4}, {3, 3, 3});

    expectSteady(25,
                 [&]
                 {
                     EXPECT_EQ(run(successful).code, 0);
                     EXPECT_EQ(run(propagating).code, 0);
                     EXPECT_EQ(run(warned).code, -1);
                     EXPECT_EQ(run(outside).code, 2);
                     EXPECT_EQ(run(notIncluded).code, 1);
                     EXPECT_EQ(run(refused).code, 1);
                     EXPECT_EQ(run(successful, {.cancelAt = 7}).code, -1);
                     EXPECT_EQ(run(toCloud).code, 0);
                     EXPECT_EQ(run(nodes).code, 0);
                     EXPECT_EQ(run(gaussPoints).code, 0);
                     EXPECT_EQ(run(unmatched).code, 1);
                 });
}
} // namespace
