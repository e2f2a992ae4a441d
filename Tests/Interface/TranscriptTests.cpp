// What the callback is told, and how a host cancels.
#include "Scenes.h"

namespace
{
class Transcript : public Host
{
protected:
    static Transfer toOneHexahedron() { return transferOf(linear, roomySource(), unitHexahedron({1, 1, 1})); }

    static Transfer toPoints(int nbPoints)
    {
        std::vector<Point> points;
        for (int i = 0; i < nbPoints; ++i)
        {
            points.push_back({1.0F + 2.0F * static_cast<float>(i) / static_cast<float>(nbPoints), 1.5F, 2.5F});
        }
        return transferOf(linear, roomySource(), cloud(points));
    }

    static Report exitNotice(const std::string& title) { return {0, title, "Mapping library exit.", 0}; }
};

TEST_F(Transcript, aMeshTransferOfFewPointsReportsEachPoint)
{
    const Outcome outcome = run(toOneHexahedron());
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.message, "FE 3D Mesh to FE 3D Mesh interpolation normal termination.");
    const std::string title = "FE 3D mesh to FE 3D mesh interpolation";
    const std::vector<Report> expected = {{0, title, "Pretreatment", 1},
                                          {5, title, "Computation", 1},
                                          {12, title, "Computation", 1},
                                          {25, title, "Computation", 1},
                                          {37, title, "Computation", 1},
                                          {50, title, "Computation", 1},
                                          {62, title, "Computation", 1},
                                          {75, title, "Computation", 1},
                                          {87, title, "Computation", 1},
                                          {100, title, "Computation", 1},
                                          {100, title, "Interpolation terminated successfully.", 1},
                                          {0, title, "Mapping library exit.", 0}};
    EXPECT_EQ(outcome.transcript, expected);
}

TEST_F(Transcript, aCloudTransferOfFewPointsReportsEachPoint)
{
    const Outcome outcome = run(toPoints(3));
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.message, "FE 3D Mesh to point cloud interpolation normal termination.");
    const std::string title = "FE 3D mesh to points cloud interpolation";
    const std::vector<Report> expected = {
        {0, title, "Pretreatment", 1},         {5, title, "Computation", 1},
        {33, title, "Computation", 1},         {66, title, "Computation", 1},
        {100, title, "Computation", 1},        {100, title, "Interpolation terminated successfully.", 1},
        {0, title, "Mapping library exit.", 0}};
    EXPECT_EQ(outcome.transcript, expected);
}

TEST_F(Transcript, twoHundredFiftyPointsAreReportedInPairs)
{
    const Outcome outcome = run(toPoints(250));
    ASSERT_EQ(outcome.transcript.size(), 2U + 125U + 2U);
    // 2 of 250 points are 0 %, 14 of 250 are 5 %, 16 of 250 are 6 %.
    EXPECT_EQ(outcome.transcript[2].progress, 5);
    EXPECT_EQ(outcome.transcript[8].progress, 5);
    EXPECT_EQ(outcome.transcript[9].progress, 6);
    EXPECT_EQ(outcome.transcript[126].progress, 100);
    EXPECT_EQ(outcome.transcript, successfulTranscript(cloudTitle, interpolationSuccess, 250));
}

TEST_F(Transcript, theStepFollowsTheNumberOfPoints)
{
    for (const int nbPoints : {1, 99, 100, 199, 200, 1000})
    {
        EXPECT_EQ(run(toPoints(nbPoints)).transcript, successfulTranscript(cloudTitle, interpolationSuccess, nbPoints))
            << nbPoints << " points";
    }
}

TEST_F(Transcript, theNodesOfALargerMeshAreReportedInPairs)
{
    const Mesh target = box(element::hexahedron, {1, 1, 1}, {3, 3, 3}, {4, 4, 9});
    ASSERT_EQ(target.nbNodes(), 250);
    const Outcome outcome = run(transferOf(linear, roomySource(), target));
    EXPECT_EQ(outcome.transcript, successfulTranscript(meshTitle, interpolationSuccess, 250));
}

TEST_F(Transcript, progressIsNeverBelowFiveAfterTheComputationHasBegun)
{
    const Outcome outcome = run(toPoints(1000));
    for (std::size_t i = 1; i + 1 < outcome.transcript.size(); ++i)
    {
        EXPECT_GE(outcome.transcript[i].progress, 5);
    }
}

TEST_F(Transcript, nodesAndGaussPointsAreCountedTogether)
{
    Transfer transfer = toOneHexahedron();
    transfer.sourceFields.push_back(transfer.sourceFields[0]);
    transfer.targetFields = {Field{}, atGaussPoints()};
    EXPECT_EQ(run(transfer).transcript, successfulTranscript(meshTitle, interpolationSuccess, 8 + 8));
}

TEST_F(Transcript, onlyPointsOfSelectedMaterialsAreCounted)
{
    Transfer transfer = toPoints(7);
    transfer.target = withMaterials(transfer.target, {0, 1, 0, 2, 0, 3, 0}, {1, 1, 1, 1});
    // Only 1 selects; 2 and -1 do not.
    transfer.flags = {1, 0, 2, -1};
    EXPECT_EQ(run(transfer).transcript, successfulTranscript(cloudTitle, interpolationSuccess, 4));
}

TEST_F(Transcript, withoutACallbackTheTransferRunsToItsEnd)
{
    for (const Transfer& transfer : {toOneHexahedron(), toPoints(3)})
    {
        const Outcome heard = run(transfer);
        const Outcome unheard = run(transfer, {.withCallback = false});
        EXPECT_EQ(unheard.code, 0);
        EXPECT_EQ(unheard.message, heard.message);
        EXPECT_EQ(unheard.fields, heard.fields);
        EXPECT_EQ(unheard.files, heard.files);
        EXPECT_TRUE(unheard.transcript.empty());
    }
}

TEST_F(Transcript, anyAnswerButZeroLetsTheTransferGoOn)
{
    for (const int answer : {-1, 2, 256, 65536})
    {
        EXPECT_EQ(run(toOneHexahedron(), {.answer = answer}).transcript,
                  successfulTranscript(meshTitle, interpolationSuccess, 8));
    }
}

TEST_F(Transcript, theAnswerToTheReportOfSuccessIsIgnored)
{
    const int lastReport = 2 + 8 + 1;
    const Outcome outcome = run(toOneHexahedron(), {.cancelAt = lastReport});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.message, meshTermination);
    EXPECT_EQ(outcome.transcript, successfulTranscript(meshTitle, interpolationSuccess, 8));
    EXPECT_TRUE(outcome.hasLog());
}

TEST_F(Transcript, aFailureInThePreparationIsFollowedByTheExitNotice)
{
    const Transfer transfer = transferOf(linear, unitHexahedron({0, 0, 0}), unitHexahedron({5, 5, 5}));
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.transcript, (std::vector<Report>{{0, meshTitle, "Pretreatment", 1}, exitNotice(meshTitle)}));
}

TEST_F(Transcript, aRefusedRequestIsFollowedByAnExitNoticeWithoutTitle)
{
    Transfer transfer = toOneHexahedron();
    transfer.mode = 3;
    EXPECT_EQ(run(transfer).transcript, (std::vector<Report>{exitNotice("")}));
    transfer = toPoints(2);
    transfer.mode = 2;
    EXPECT_EQ(run(transfer).transcript, (std::vector<Report>{exitNotice("")}));
}

TEST_F(Transcript, aPointOutsideTheSourceEndsTheReports)
{
    Transfer transfer = toPoints(4);
    transfer.target.nodes[2] = {50, 50, 50};
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.transcript, (std::vector<Report>{{0, cloudTitle, "Pretreatment", 1},
                                                       {5, cloudTitle, "Computation", 1},
                                                       {25, cloudTitle, "Computation", 1},
                                                       {50, cloudTitle, "Computation", 1},
                                                       exitNotice(cloudTitle)}));
}

class Cancellation : public Transcript
{
protected:
    static void expectCancelled(const Outcome& outcome, const std::string& title, int nbPoints, int k)
    {
        EXPECT_EQ(outcome.code, -1);
        EXPECT_EQ(outcome.message, "Interpolation cancelled.\n");
        EXPECT_EQ(outcome.transcript, cancelledTranscript(title, interpolationCancelled, nbPoints, k));
        EXPECT_FALSE(outcome.hasLog());
    }
};

TEST_F(Cancellation, atTheFirstReportLeavesEverythingUntouched)
{
    const Outcome onMesh = run(toOneHexahedron(), {.cancelAt = 1});
    expectCancelled(onMesh, meshTitle, 8, 1);
    EXPECT_EQ(onMesh.transcript, (std::vector<Report>{{0, meshTitle, "Pretreatment", 1},
                                                      {0, meshTitle, "Interpolation cancelled.\n", 0},
                                                      {0, meshTitle, "Mapping library exit.", 0}}));
    EXPECT_EQ(onMesh.fields[0], constant(8, untouched));

    const Outcome onCloud = run(toPoints(3), {.cancelAt = 1});
    expectCancelled(onCloud, cloudTitle, 3, 1);
    EXPECT_EQ(onCloud.fields[0], constant(3, untouched));
}

TEST_F(Cancellation, beforeTheFirstPointLeavesEverythingUntouched)
{
    const Outcome onMesh = run(toOneHexahedron(), {.cancelAt = 2});
    expectCancelled(onMesh, meshTitle, 8, 2);
    EXPECT_EQ(onMesh.fields[0], constant(8, untouched));

    const Outcome onCloud = run(toPoints(3), {.cancelAt = 2});
    expectCancelled(onCloud, cloudTitle, 3, 2);
    EXPECT_EQ(onCloud.fields[0], constant(3, untouched));
}

TEST_F(Cancellation, afterSomeNodesKeepsTheirValues)
{
    const Transfer transfer = toOneHexahedron();
    const Outcome outcome = run(transfer, {.cancelAt = 2 + 3});
    expectCancelled(outcome, meshTitle, 8, 2 + 3);
    std::vector<double> expected = atNodes(transfer.target, linear);
    std::fill(expected.begin() + 3, expected.end(), untouched);
    expectNear(outcome.fields[0], expected, 1e-5);
}

TEST_F(Cancellation, afterSomeGaussPointsKeepsTheirValues)
{
    Transfer transfer = toOneHexahedron();
    transfer.sourceFields = {nodal(transfer.source, [](const Point&) { return 2.5; }), transfer.sourceFields[0]};
    transfer.targetFields = {atGaussPoints(), Field{}};
    const Outcome outcome = run(transfer, {.cancelAt = 2 + 8 + 5});
    expectCancelled(outcome, meshTitle, 16, 2 + 8 + 5);
    expectNear(outcome.fields[0], {2.5, 2.5, 2.5, 2.5, 2.5, untouched, untouched, untouched}, 1e-5);
    expectNear(outcome.fields[1], atNodes(transfer.target, linear), 1e-5);
}

TEST_F(Cancellation, afterTheLastPointIsStillACancellation)
{
    const Transfer transfer = toPoints(3);
    const Outcome outcome = run(transfer, {.cancelAt = 2 + 3});
    expectCancelled(outcome, cloudTitle, 3, 2 + 3);
    expectNear(outcome.fields[0], atNodes(transfer.target, linear), 1e-5);
}

TEST_F(Cancellation, beforeTheFarNodesAreFilledLeavesThemUntouched)
{
    Transfer transfer = toOneHexahedron();
    transfer.mode = 1;
    transfer.target.matlStates = {4};
    const Outcome outcome = run(transfer, {.cancelAt = 2 + 8});
    expectCancelled(outcome, meshTitle, 8, 2 + 8);
    EXPECT_EQ(outcome.fields[0], constant(8, untouched));
}

TEST_F(Cancellation, removesTheLogOfAnEarlierCall)
{
    EXPECT_FALSE(run(toOneHexahedron(), {.files = {{"interpoLog.txt", "old"}}, .cancelAt = 4}).hasLog());
}
} // namespace
