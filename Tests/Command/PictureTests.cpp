// --picture of veltrane transfer and veltrane sample.
#include "CommandRunner.h"
#include "TestGrids.h"

#include <vtkCellType.h>
#include <vtkImageData.h>
#include <vtkNew.h>
#include <vtkPNGReader.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <functional>
#include <limits>
#include <sstream>

namespace
{

using testing::HasSubstr;

using PixelTest = std::function<bool(const std::array<double, 3>& colour)>;

/// How many pixels of a picture are of a colour, red, green and blue from 0 to 255; all or those from a column on.
long long countPixels(const std::filesystem::path& path, std::array<int, 2>& size, const PixelTest& isCounted,
                      int firstColumn = 0)
{
    vtkNew<vtkPNGReader> reader;
    reader->SetFileName(path.c_str());
    reader->Update();
    vtkImageData& image = *reader->GetOutput();
    size = {image.GetDimensions()[0], image.GetDimensions()[1]};
    long long count = 0;
    for (int row = 0; row < size[1]; ++row)
    {
        for (int column = firstColumn; column < size[0]; ++column)
        {
            const auto part = [&](int i) { return image.GetScalarComponentAsDouble(column, row, 0, i); };
            count += isCounted({part(0), part(1), part(2)}) ? 1 : 0;
        }
    }
    return count;
}

/// Those of the colour that marks what is outside.
long long countMarked(const std::filesystem::path& path, std::array<int, 2>& size)
{
    return countPixels(path, size,
                       [](const auto& colour) { return colour[0] > 200 && colour[1] < 50 && colour[2] < 50; });
}

/// Those that are not grey.
long long countColoured(const std::filesystem::path& path)
{
    std::array<int, 2> size{};
    return countPixels(path, size,
                       [](const auto& colour) { return std::ranges::max(colour) - std::ranges::min(colour) > 20; });
}

class Picture : public testing::Test
{
protected:
    Picture()
    {
        const auto source = makeGrid(VTK_HEXAHEDRON, 4);
        addDoubles(*source, "T", linear);
        writeGrid(*source, runner.file("source.vtu"));
    }

    CommandResult transfer(vtkUnstructuredGrid& target, std::vector<std::string> options = {}) const
    {
        writeGrid(target, runner.file("target.vtu"));
        options.insert(options.begin(),
                       {"transfer", "source.vtu", "target.vtu", "-o", "out.vtu", "--picture", "picture.png"});
        return runner.run(options);
    }

    CommandResult sample(const std::string& points, std::vector<std::string> options = {}) const
    {
        std::ofstream(runner.file("points.csv")) << "x,y,z\n" << points;
        options.insert(options.begin(),
                       {"sample", "source.vtu", "points.csv", "-o", "out.csv", "--picture", "picture.png"});
        return runner.run(options);
    }

    /// Of square cuts.
    void expectDrawnWithoutMarks(const CommandResult& result) const
    {
        ASSERT_EQ(result.status, 0) << result.errors;
        EXPECT_EQ(result.errors, "");
        EXPECT_THAT(result.progress, HasSubstr("drawing picture ...\n"));
        std::array<int, 2> size{};
        EXPECT_EQ(countMarked(runner.file("picture.png"), size), 0);
        EXPECT_EQ(size[0], 1600);
        EXPECT_GT(size[1], 700);
    }

    CommandRunner runner;
};

TEST_F(Picture, ShowsSourceAndTargetSideBySide)
{
    const CommandResult result = transfer(*makeGrid(VTK_TETRA, 3, 0.1, 0.9));
    expectDrawnWithoutMarks(result);
}

/// The cut is across x, through the peak in a corner; the target's upper 0.04 of 0.94 and its right 0.04 are outside
/// the source: of 736 by 736 pixels for 1.04 by 1.04 some 37000, and half of these are marked.
TEST_F(Picture, MarksWhereTheTargetIsOutside)
{
    std::array<int, 2> size{};
    ASSERT_EQ(transfer(*makeGrid(VTK_TETRA, 3, 0.1, 1.04), {"--mode", "1", "--picture-plane", "x=0.5"}).status, 0);
    const long long marked = countMarked(runner.file("picture.png"), size);
    EXPECT_GT(marked, 10000);
    EXPECT_LT(marked, 30000);
}

/// Two squares of 736 by 736 pixels, and a bar.
TEST_F(Picture, IsGreyWithoutAScaleIfThereAreNoValues)
{
    const auto target = makeGrid(VTK_TETRA, 3);
    ASSERT_EQ(transfer(*target).status, 0);
    EXPECT_GT(countColoured(runner.file("picture.png")), 2 * 736 * 736 * 9 / 10);

    const auto source = makeGrid(VTK_HEXAHEDRON, 4);
    addDoubles(*source, "nothing", [](const Point&) { return std::numeric_limits<double>::quiet_NaN(); });
    writeGrid(*source, runner.file("source.vtu"));
    const CommandResult result = transfer(*target);
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(countColoured(runner.file("picture.png")), 0);
}

/// Values from -2 to 8 in a range from 100 to 200 are all of one colour, the lowest, which is dark.
TEST_F(Picture, HasTheRangeThatIsAskedFor)
{
    const auto isYellow = [](const auto& colour) { return colour[0] > 200 && colour[1] > 200 && colour[2] < 100; };
    std::array<int, 2> size{};
    ASSERT_EQ(transfer(*makeGrid(VTK_TETRA, 3)).status, 0);
    const long long asIs = countPixels(runner.file("picture.png"), size, isYellow);
    ASSERT_EQ(transfer(*makeGrid(VTK_TETRA, 3), {"--picture-range", "100,200"}).status, 0);
    const long long inRange = countPixels(runner.file("picture.png"), size, isYellow);
    EXPECT_GT(asIs, inRange + 10000);
    EXPECT_LT(inRange, 1472 * 22 / 4); // of the bar
}

/// The value is z, so that a cut across z is of one colour but for the bar, and one across x of all.
TEST_F(Picture, IsCutWhereThatIsAskedFor)
{
    const auto source = makeGrid(VTK_HEXAHEDRON, 4);
    addDoubles(*source, "T", [](const Point& p) { return p[2]; });
    writeGrid(*source, runner.file("source.vtu"));
    const auto isYellow = [](const auto& colour) { return colour[0] > 200 && colour[1] > 200 && colour[2] < 100; };
    const auto countAt = [&](const std::string& plane)
    {
        std::array<int, 2> size{};
        EXPECT_EQ(transfer(*makeGrid(VTK_TETRA, 3), {"--picture-plane", plane, "--picture-range", "0,1"}).status, 0);
        return countPixels(runner.file("picture.png"), size, isYellow);
    };
    EXPECT_LT(countAt("z=0.2"), 1472 * 22 / 4);
    EXPECT_GT(countAt("x=0.2"), 736 * 736 / 10);
    EXPECT_GT(countAt("z=0.99"), 736 * 736);
}

TEST_F(Picture, ShowsTheFieldAndTheComponentThatIsAskedFor)
{
    const auto source = makeGrid(VTK_HEXAHEDRON, 4);
    addDoubles(*source, "T", linear);
    addFloats(
        *source, "u",
        {[](const Point&) { return 1.0; }, [](const Point& p) { return p[1]; }, [](const Point&) { return 3.0; }});
    writeGrid(*source, runner.file("source.vtu"));
    const auto picture = [&](const std::string& field)
    {
        EXPECT_EQ(transfer(*makeGrid(VTK_TETRA, 3), {"--picture-field", field}).status, 0);
        std::ifstream stream(runner.file("picture.png"), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(stream), {});
    };
    const std::string ofScalar = picture("T");
    EXPECT_TRUE(ofScalar != picture("u"));
    EXPECT_TRUE(picture("u") != picture("u:y"));
    EXPECT_TRUE(picture("u:2") == picture("u:y"));
}

TEST_F(Picture, RefusesWhatCannotBeDrawn)
{
    writeGrid(*makeGrid(VTK_TETRA, 2), runner.file("target.vtu"));
    const auto expect = [&](const std::string& sentence, const std::vector<std::string>& options)
    {
        std::vector<std::string> words{"transfer", "source.vtu", "target.vtu", "-o", "out.vtu"};
        words.insert(words.end(), options.begin(), options.end());
        expectFailure(runner, 64, sentence, words);
    };
    const auto with = [&](const std::string& option, const std::string& value) {
        return std::vector<std::string>{"--picture", "p.png", option, value};
    };
    expect("--picture-plane w=3 is not an axis and a number, such as x=0.3", with("--picture-plane", "w=3"));
    expect("--picture-plane x=high is not an axis and a number, such as x=0.3", with("--picture-plane", "x=high"));
    expect("--picture-range 3 is not two numbers, the smaller first, such as 0,120", with("--picture-range", "3"));
    expect("--picture-range 3,3 is not two numbers, the smaller first, such as 0,120", with("--picture-range", "3,3"));
    expect("--picture-field S is none of the fields at nodes that are transferred", with("--picture-field", "S"));
    expect("--picture-field T:2: 'T' has the components 1 to 1", with("--picture-field", "T:2"));
    expect(
        "--picture-plane, --picture-field and --picture-range have an effect only with --picture or a page of --report",
        {"--picture-field", "T"});
    const CommandResult beside = runner.run(
        {"transfer", "source.vtu", "target.vtu", "-o", "out.vtu", "--picture", "p.png", "--picture-plane", "x=3"});
    EXPECT_EQ(beside.status, 64);
    EXPECT_THAT(beside.errors, HasSubstr("the plane x = 3 meets neither the source nor the target"));
    EXPECT_FALSE(std::filesystem::exists(runner.file("out.vtu")));
}

TEST_F(Picture, IsDrawnOfTargetsOfSurfaces)
{
    const CommandResult result = transfer(*makeGrid(VTK_QUAD, 3, 0.1, 0.9));
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_TRUE(std::filesystem::exists(runner.file("picture.png")));
}

/// The colours fill one square, the one of the source, and the bar; a dot is of some 200 pixels.
TEST_F(Picture, ShowsPointsBesideTheSource)
{
    const CommandResult result = sample("0.25,0.5,0.5\n");
    expectDrawnWithoutMarks(result);
    const long long withOne = countColoured(runner.file("picture.png"));
    EXPECT_GT(withOne, 690 * 690 * 9 / 10);
    ASSERT_EQ(sample("0.25,0.5,0.5\n0.25,0.75,0.75\n0.25,0.25,0.75\n").status, 0);
    const long long withThree = countColoured(runner.file("picture.png"));
    EXPECT_GT(withThree, withOne + 2 * 100);
    EXPECT_LT(withThree, withOne + 2 * 300);
}

/// The ring of a point, and the one that explains it, are of some 130 pixels each.
TEST_F(Picture, MarksPointsWithoutAValueFromTheSource)
{
    const CommandResult result = sample("0.25,0.5,0.5\n0.25,0.5,1.03125\n", {"--outside", "default"});
    ASSERT_EQ(result.status, 0) << result.errors;
    std::array<int, 2> size{};
    const long long marked = countMarked(runner.file("picture.png"), size);
    EXPECT_GT(marked, 2 * 60);
    EXPECT_LT(marked, 2 * 180);
}

TEST_F(Picture, IsGreyIfThePointsHaveNoValues)
{
    const auto source = makeGrid(VTK_HEXAHEDRON, 4);
    addDoubles(*source, "nothing", [](const Point&) { return std::numeric_limits<double>::quiet_NaN(); });
    writeGrid(*source, runner.file("source.vtu"));
    const CommandResult result = sample("0.25,0.5,0.5\n0.5,0.5,0.25\n");
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(countColoured(runner.file("picture.png")), 0);
}

TEST_F(Picture, IsDrawnOfManyPointsAndOfVectors)
{
    const auto source = makeGrid(VTK_HEXAHEDRON, 4);
    addFloats(*source, "u",
              {[](const Point& p) { return p[0]; }, [](const Point& p) { return p[1]; },
               [](const Point& p) { return p[2]; }});
    writeGrid(*source, runner.file("source.vtu"));
    std::ostringstream points;
    constexpr int perSide = 46; // 97336 in all
    for (int i = 0; i < perSide * perSide * perSide; ++i)
    {
        points << (i % perSide + 0.5) / perSide << ',' << (i / perSide % perSide + 0.5) / perSide << ','
               << (i / perSide / perSide + 0.5) / perSide << '\n';
    }
    const CommandResult result = sample(points.str());
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_GT(countColoured(runner.file("picture.png")), 640 * 640 * 5 / 4); // of the points, too
}

TEST_F(Picture, MustHaveAPlaceOfItsOwn)
{
    writeGrid(*makeGrid(VTK_TETRA, 2), runner.file("target.vtu"));
    expectFailure(runner, 64, "the file 'picture.jpg' of --picture is not named .png",
                  {"transfer", "source.vtu", "target.vtu", "-o", "out.vtu", "--picture", "picture.jpg"});
    expectFailure(runner, 73, "there is no directory 'nowhere' for the output",
                  {"transfer", "source.vtu", "target.vtu", "-o", "out.vtu", "--picture", "nowhere/p.png"});
}

} // namespace
