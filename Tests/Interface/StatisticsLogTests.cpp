// The report that a finished transfer leaves in the working directory.
#include "Scenes.h"

namespace
{
class StatisticsLog : public Host
{
protected:
    static Transfer simple()
    {
        // The source is one hexahedron of side 8, so the buckets are 8.16 wide and one holds the whole target.
        const Mesh target = single(element::tetrahedron, {{1, 1, 1}, {5, 1, 1}, {1, 5, 1}, {1, 1, 5}});
        return transferOf(linear, box(element::hexahedron, {0, 0, 0}, {8, 8, 8}), target);
    }
};

TEST_F(StatisticsLog, ofAMeshTransferHasTwelveLines)
{
    Transfer transfer = simple();
    transfer.sourceFields = {transfer.sourceFields[0], transfer.sourceFields[0]};
    transfer.targetFields = {Field{}, atGaussPoints()};
    // Four nodes and one Gauss point, each found after one iteration.
    EXPECT_EQ(run(transfer).log(),
              "Total number of buckets = 1\n\n"
              "number of target points where interpolation was done = 5\n\n"
              "Average number of iterations for calculating reference coordinates at each target point = 1.000000\n\n\n"
              "Total number of used buckets (buckets containing at least one target point and one source element) = "
              "1\n\n"
              "Total number of unused buckets (buckets containing no target point or no source element) = 0\n\n"
              "Average number of elements per used bucket = 1.000000\n\n\n"
              "Total number of target nodes outside the source mesh = 0\n\n"
              "Number of target nodes outside the source mesh but close enough for interpolation = 0\n\n"
              "Number of target nodes far from the source mesh for which fields are set to the default value or are "
              "propagated = 0\n\n\n"
              "Total number of target gauss points outside the source mesh = 0\n\n"
              "Number of target gauss points outside the source mesh but close enough for interpolation = 0\n\n"
              "Number of target gauss points far from the source mesh (set to zero) = 0\n\n\n");
}

TEST_F(StatisticsLog, ofACloudTransferHasSixLines)
{
    Transfer transfer = simple();
    transfer.target = cloud({{1, 1, 1}, {5, 5, 5}, {20, 1, 1}});
    transfer.mode = 1;
    // The cloud is 19 long along x: 19.38 / 8.16 = 2.4, three buckets. The element reaches 8.08, inside the first; the
    // point at 20 lies in the third, which stays empty, as the element widened by a tenth only reaches 8.9.
    EXPECT_EQ(run(transfer).log(),
              "Total number of buckets = 3\n\n"
              "number of target points where interpolation was done = 2\n\n"
              "Average number of iterations for calculating reference coordinates at each target point = 1.000000\n\n\n"
              "Total number of used buckets (buckets containing at least one target point and one source element) = "
              "1\n\n"
              "Total number of unused buckets (buckets containing no target point or no source element) = 2\n\n"
              "Average number of elements per used bucket = 1.000000\n\n\n");
}

TEST_F(StatisticsLog, countsBucketsAndTheElementsInThem)
{
    // Unit hexahedra and buckets of 1.02 from 0.705 on: along each axis there are five buckets, and the box of every
    // element (from i - 0.01 to i + 1.01) reaches two of them but for the outermost: each bucket holds two per axis.
    const Transfer transfer = transferOf(linear, box(element::hexahedron, {0, 0, 0}, {6, 6, 6}, {6, 6, 6}),
                                         box(element::hexahedron, {0.75F, 0.75F, 0.75F}, {5.25F, 5.25F, 5.25F}));
    const std::string log = run(transfer).log();
    EXPECT_EQ(log.find("Total number of buckets = 125\n\n"), 0U) << log;
    EXPECT_NE(log.find("source element) = 125\n\n"), std::string::npos) << log;
    EXPECT_NE(log.find("no source element) = 0\n\n"), std::string::npos) << log;
    EXPECT_NE(log.find("Average number of elements per used bucket = 8.000000\n\n\n"), std::string::npos) << log;
}

TEST_F(StatisticsLog, bucketsThatNoTargetEntityTouchesAreUnused)
{
    // Eight buckets from 0.26 on, 1.02 wide; two small target elements in opposite corners touch one each. The source
    // elements next to a corner that reach its bucket: along each axis those of 0 to 1 and 1 to 2 at the lower end
    // (the bucket ends at 1.28), and that of 1 to 2 only at the upper end.
    const Mesh target = joined(box(element::hexahedron, {0.275F, 0.275F, 0.275F}, {0.375F, 0.375F, 0.375F}),
                               box(element::hexahedron, {1.675F, 1.675F, 1.675F}, {1.775F, 1.775F, 1.775F}));
    Transfer transfer = transferOf(linear, box(element::hexahedron, {0, 0, 0}, {2, 2, 2}, {2, 2, 2}), target);
    transfer.flags = {1, 1};
    const std::string log = run(transfer).log();
    EXPECT_EQ(log.find("Total number of buckets = 8\n\n"
                       "number of target points where interpolation was done = 16\n\n"),
              0U)
        << log;
    EXPECT_NE(log.find("source element) = 2\n\n"), std::string::npos) << log;
    EXPECT_NE(log.find("no source element) = 6\n\n"), std::string::npos) << log;
    EXPECT_NE(log.find("Average number of elements per used bucket = 4.500000\n\n\n"), std::string::npos) << log;
}

TEST_F(StatisticsLog, averagesTheIterations)
{
    // The iteration starts at xi = 0.25, and is that for the square root of 1 - x: from 0.75 it is there at once for
    // x = 0.4375, but counts one step; for x = 0.51 the first step is off by ((0.75^2 - 0.49) / 1.5)^2 = 0.0023, more
    // than the tolerance of 0.00102, and the second by less than 0.00001.
    const auto mean = [](const std::string& log)
    {
        const std::string before = "at each target point = ";
        const std::size_t begin = log.find(before) + before.size();
        return log.substr(begin, log.find('\n', begin) - begin);
    };
    Transfer transfer;
    transfer.source = bentElement();
    transfer.sourceFields = {{.values = xiInBentElement()}};
    transfer.target = cloud({{0.4375F, 0.2F, 0.1F}});
    EXPECT_EQ(mean(run(transfer).log()), "1.000000");
    transfer.target = cloud({{0.51F, 0.2F, 0.1F}});
    EXPECT_EQ(mean(run(transfer).log()), "2.000000");
    transfer.target = cloud({{0.51F, 0.2F, 0.1F}, {0.4375F, 0.2F, 0.1F}, {0.51F, 0.1F, 0.2F}, {0.51F, 0.3F, 0.1F}});
    EXPECT_EQ(mean(run(transfer).log()), "1.750000");
    // With a tolerance of 0 there are no iterations at all.
    EXPECT_EQ(mean(run(transfer, {.files = {{"mappingInputs.txt", "0.1 0"}}}).log()), "0.000000");
}

TEST_F(StatisticsLog, aTargetWithoutThicknessHasOneBucketAcross)
{
    Transfer transfer =
        transferOf(linear, box(element::hexahedron, {0, 0, 0}, {6, 6, 6}, {6, 6, 6}),
                   single(element::quadrilateral,
                          {{0.75F, 0.75F, 2.5F}, {5.25F, 0.75F, 2.5F}, {5.25F, 5.25F, 2.5F}, {0.75F, 5.25F, 2.5F}}));
    EXPECT_EQ(run(transfer).log().find("Total number of buckets = 25\n\n"), 0U);
}

TEST_F(StatisticsLog, countsPointsOutsideNearAndFar)
{
    Transfer transfer = transferOf(linear, sourceWithGap(), chainAcrossGap());
    transfer.sourceFields = {transfer.sourceFields[0], transfer.sourceFields[0]};
    transfer.targetFields = {Field{}, atGaussPoints()};
    // Planes of four nodes: two near, three far. Of the Gauss points of the second and the seventh element half lie in
    // the gap within reach; all of the four elements between them are far.
    const std::string counts = "Total number of target nodes outside the source mesh = 20\n\n"
                               "Number of target nodes outside the source mesh but close enough for interpolation = "
                               "8\n\n"
                               "Number of target nodes far from the source mesh for which fields are set to the "
                               "default value or are propagated = 12\n\n\n"
                               "Total number of target gauss points outside the source mesh = 40\n\n"
                               "Number of target gauss points outside the source mesh but close enough for "
                               "interpolation = 8\n\n"
                               "Number of target gauss points far from the source mesh (set to zero) = 32\n\n\n";
    for (const int mode : {1, 2})
    {
        transfer.mode = mode;
        const Outcome outcome = run(transfer);
        EXPECT_EQ(outcome.code, 0);
        const std::string& log = outcome.log();
        EXPECT_EQ(log.find(counts), log.size() - counts.size()) << log;
        EXPECT_NE(log.find("interpolation was done = " + std::to_string(24 + 32) + "\n\n"), std::string::npos) << log;
        EXPECT_NE(log.find("at each target point = 1.000000\n\n\n"), std::string::npos) << log;
    }
}

TEST_F(StatisticsLog, whatCannotBeAveragedIsNotANumber)
{
    Transfer transfer = transferOf(linear, unitHexahedron({0, 0, 0}), cloud({{30, 1, 1}, {39.5F, 1, 1}}));
    transfer.mode = 1;
    std::string log = run(transfer).log();
    // The sign of a not-a-number is the processor's affair.
    for (std::size_t sign = log.find("-nan"); sign != std::string::npos; sign = log.find("-nan"))
    {
        log.erase(sign, 1);
    }
    // 9.69 / 1.02 = 9.5, ten buckets. No point was found, and no bucket holds an element.
    EXPECT_EQ(log, "Total number of buckets = 10\n\n"
                   "number of target points where interpolation was done = 0\n\n"
                   "Average number of iterations for calculating reference coordinates at each target point = "
                   "nan\n\n\n"
                   "Total number of used buckets (buckets containing at least one target point and one source "
                   "element) = 0\n\n"
                   "Total number of unused buckets (buckets containing no target point or no source element) = "
                   "10\n\n"
                   "Average number of elements per used bucket = nan\n\n\n");
}

TEST_F(StatisticsLog, ofAnEarlierCallIsReplaced)
{
    const std::string old(100000, 'x');
    EXPECT_EQ(run(simple(), {.files = {{"interpoLog.txt", old}}}).log(), run(simple()).log());
}

TEST_F(StatisticsLog, ofAnEarlierCallIsGoneAfterAFailure)
{
    const std::map<std::string, std::string> files = {{"interpoLog.txt", "old"}};
    Transfer outside = simple();
    outside.target.matlStates = {4};
    EXPECT_EQ(run(outside, {.files = files}).code, 2);
    EXPECT_FALSE(run(outside, {.files = files}).hasLog());

    Transfer notIncluded = simple();
    notIncluded.target = moved(notIncluded.target, {50, 0, 0});
    EXPECT_EQ(run(notIncluded, {.files = files}).code, 1);
    EXPECT_FALSE(run(notIncluded, {.files = files}).hasLog());

    Transfer refused = simple();
    refused.mode = 3;
    EXPECT_EQ(run(refused, {.files = files}).code, 1);
    EXPECT_FALSE(run(refused, {.files = files}).hasLog());
}

TEST_F(StatisticsLog, thatCannotBeOpenedIsReportedAndChangesNothingElse)
{
    // A directory of that name that is not empty can neither be removed nor opened.
    const Outcome outcome = run(
        simple(), {.files = {{"interpoLog.txt/occupant", ""}}, .printed = "Error: impossible to open interpoLog.txt"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.message, meshTermination);
    expectNear(outcome.fields[0], atNodes(simple().target, linear), 1e-4);
    EXPECT_TRUE(outcome.files.contains("interpoLog.txt/occupant"));
}

TEST_F(StatisticsLog, isTheOnlyFileThatACallLeaves)
{
    EXPECT_EQ(run(simple()).files.size(), 1U);
    Transfer refused = simple();
    refused.mode = 3;
    EXPECT_TRUE(run(refused).files.empty());
}
} // namespace
