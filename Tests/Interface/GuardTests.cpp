// The layout of the host's arrays: the tests rely on it to catch strays, and no computation depends on it.
#include "GuardedArray.h"
#include "Scenes.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace
{
/// Lets an access meet the guards without the handlers of a sanitizer, which would turn the fault into a report.
template <typename Access> void access(const Access& touch)
{
    std::signal(SIGSEGV, SIG_DFL);
    touch();
    std::_Exit(0);
}

TEST(Guards, anInputCannotBeWritten)
{
    const std::vector<int> values = {1, 2, 3};
    const InputArray<int> input{std::span<const int>(values)};
    EXPECT_EQ(input.data()[2], 3);
    EXPECT_EXIT(access([&] { input.data()[2] = 4; }), testing::KilledBySignal(SIGSEGV), "");
}

TEST(Guards, nothingCanBeReadBehindAnArray)
{
    const std::vector<int> values = {1, 2, 3};
    const InputArray<int> input{std::span<const int>(values)};
    const OutputArray<double> output(5);
    EXPECT_EXIT(access([&] { std::printf("%d", input.data()[3]); }), testing::KilledBySignal(SIGSEGV), "");
    EXPECT_EXIT(access([&] { std::printf("%f", output.data()[5]); }), testing::KilledBySignal(SIGSEGV), "");
}

TEST(Guards, aWriteBesideAnOutputIsSeen)
{
    const OutputArray<float> output(3);
    output.data()[0] = 1.0F;
    EXPECT_FALSE(output.untouched(0));
    EXPECT_TRUE(output.untouched(1));
    EXPECT_TRUE(output.surroundingsUntouched());
    output.data()[-1] = 1.0F;
    EXPECT_FALSE(output.surroundingsUntouched());
}

/// Arrays that begin right behind a forbidden page, instead of ending right before one.
class ArraysAtTheStartOfTheirPages : public Host
{
protected:
    ArraysAtTheStartOfTheirPages() { GuardedBytes::placement = FlushWith::start; }
    ~ArraysAtTheStartOfTheirPages() override { GuardedBytes::placement = FlushWith::end; }

    /// The same call with arrays at the end of their pages.
    template <typename Call> static Outcome runAtTheEnd(const Call& call)
    {
        GuardedBytes::placement = FlushWith::end;
        const Outcome outcome = run(call);
        GuardedBytes::placement = FlushWith::start;
        return outcome;
    }

    template <typename Call> static void expectTheSame(const Call& call)
    {
        const Outcome here = run(call);
        const Outcome there = runAtTheEnd(call);
        EXPECT_EQ(here.code, there.code);
        EXPECT_EQ(here.message, there.message);
        EXPECT_EQ(here.transcript, there.transcript);
        EXPECT_EQ(here.files, there.files);
        EXPECT_EQ(here.fields, there.fields);
        EXPECT_EQ(here.nodeTable, there.nodeTable);
        EXPECT_EQ(here.elementsOfGaussPoints, there.elementsOfGaussPoints);
        EXPECT_EQ(here.pointsOfGaussPoints, there.pointsOfGaussPoints);
    }
};

TEST_F(ArraysAtTheStartOfTheirPages, serveTransfersInEveryMode)
{
    for (const int mode : {0, 1, 2})
    {
        Transfer transfer = transferOf(linear, sourceWithGap(), chainAcrossGap());
        transfer.sourceFields.push_back(
            {.location = atGaussPointsLocation, .values = constant(gaussPointsOf(transfer.source), 2.0)});
        transfer.targetFields = {Field{}, {.location = atGaussPointsLocation, .precision = doublePrecision}};
        transfer.mode = mode;
        expectTheSame(transfer);
    }
}

TEST_F(ArraysAtTheStartOfTheirPages, serveEveryElementKind)
{
    for (const int type : element::volumes)
    {
        expectTheSame(transferOf(linear, box(type, {0, 0, 0}, {4, 4, 4}, {2, 2, 2}), box(type, {1, 1, 1}, {3, 3, 3})));
    }
}

TEST_F(ArraysAtTheStartOfTheirPages, serveCloudsAndCorrespondences)
{
    Transfer toCloud = transferOf(linear, roomySource(), cloud({{1, 1, 1}, {50, 1, 1}}));
    toCloud.mode = 1;
    expectTheSame(toCloud);
    for (const Correspondence kind : {Correspondence::nodes, Correspondence::gaussPoints})
    {
        expectTheSame(Matching{.kind = kind, .source = roomySource(), .target = roomySource()});
        expectTheSame(
            Matching{.kind = kind, .source = roomySource(), .target = box(element::wedge, {0, 0, 0}, {4, 4, 4})});
    }
}
} // namespace
