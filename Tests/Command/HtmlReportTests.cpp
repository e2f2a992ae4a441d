// --report FILE.html: what is on the page, and what a browser makes of it.
#include "CommandRunner.h"
#include "TestGrids.h"

#include "Html.h"
#include "Markup.h"

#include <vtkCellType.h>
#include <vtkImageData.h>
#include <vtkNew.h>
#include <vtkPNGReader.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <regex>

namespace
{

using testing::HasSubstr;
using testing::Not;

std::string contentOf(const std::filesystem::path& path)
{
    std::ifstream stream(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

std::ptrdiff_t countOf(const std::string& words, const std::string& pattern)
{
    const std::regex expression(pattern);
    return std::distance(std::sregex_iterator(words.begin(), words.end(), expression), std::sregex_iterator());
}

/// Runs Debian's Chromium without a window.
std::string browse(const CommandRunner& runner, const std::string& options, const std::string& page)
{
    const std::string output = runner.file("browser.txt").string();
    const std::string command = "chromium --headless --no-sandbox --disable-gpu --disable-dev-shm-usage "
                                "--user-data-dir='" +
                                runner.file("profile").string() + "' --window-size=1200,1000 " + options + " 'file://" +
                                runner.file(page).string() + "' > '" + output + "' 2>/dev/null";
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
    return contentOf(output);
}

/// The mean of a screenshot's red, green and blue, from 0 to 255.
double brightnessOf(const std::filesystem::path& path)
{
    vtkNew<vtkPNGReader> reader;
    reader->SetFileName(path.c_str());
    reader->Update();
    vtkImageData& image = *reader->GetOutput();
    double sum = 0;
    const auto [columns, rows] = std::array{image.GetDimensions()[0], image.GetDimensions()[1]};
    for (int row = 0; row < rows; ++row)
    {
        for (int column = 0; column < columns; ++column)
        {
            for (int i = 0; i < 3; ++i)
            {
                sum += image.GetScalarComponentAsDouble(column, row, 0, i);
            }
        }
    }
    return sum / (3.0 * columns * rows);
}

class HtmlReport : public testing::Test
{
protected:
    HtmlReport()
    {
        const auto source = makeGrid(VTK_HEXAHEDRON, 6);
        addDoubles(*source, "T", [](const Point& p) { return p[0] * p[0] + p[1]; });
        addFloats(*source, "velocity",
                  {[](const Point& p) { return p[0]; }, [](const Point& p) { return p[1]; },
                   [](const Point& p) { return p[2]; }});
        writeGrid(*source, runner.file("source.vtu"));
        writeGrid(*makeGrid(VTK_TETRA, 4), runner.file("target.vtu"));
    }

    CommandResult transfer(std::vector<std::string> options = {}) const
    {
        options.insert(options.begin(),
                       {"transfer", "source.vtu", "target.vtu", "-o", "out.vtu", "--report", "report.html"});
        return runner.run(options);
    }

    std::string page() const { return contentOf(runner.file("report.html")); }

    CommandRunner runner;
};

TEST_F(HtmlReport, BeginsWithTheVerdictAndHasAllParts)
{
    const CommandResult result = transfer();
    ASSERT_EQ(result.status, 0) << result.errors;
    const std::string page = this->page();
    EXPECT_LT(page.size(), 5'000'000U);
    EXPECT_EQ(countOf(page, "<h1 class=\"good\"><b>good</b>: none of 125 nodes is far from the source; mapped back, "),
              1);
    EXPECT_LT(page.find("<h1"), page.find("<h2"));
    for (const char* heading :
         {"Cuts", "Rules", "Places", "Values", "Mapped back", "Integrals", "Search and times", "To repeat it"})
    {
        EXPECT_THAT(page, HasSubstr(std::string("<h2>") + heading + "</h2>"));
    }
    EXPECT_THAT(page, HasSubstr("veltrane transfer source.vtu target.vtu -o out.vtu --report report.html"));
    EXPECT_EQ(countOf(page, "<code>[0-9a-f]{64}</code>"), 2);
}

/// The worst places, at most ten, have coordinates and cells.
TEST_F(HtmlReport, TellsTheWorstPlaces)
{
    ASSERT_EQ(transfer({"--field", "T"}).status, 0);
    const std::string page = this->page();
    const std::size_t begin = page.find("Where T differs most</caption>");
    ASSERT_NE(begin, std::string::npos);
    const std::string table = page.substr(begin, page.find("</table>", begin) - begin);
    EXPECT_EQ(countOf(table, "<tr><th scope=\"row\">"), 10);
    EXPECT_EQ(countOf(table, "<td class=\"n\">"), 70);
}

TEST_F(HtmlReport, NeedsNoOtherFile)
{
    ASSERT_EQ(transfer().status, 0);
    const std::string page = this->page();
    EXPECT_EQ(countOf(page, "src=|<link|@import|url\\((?!#)|href=\"(?!#)"), 0);
}

TEST_F(HtmlReport, CanBeReadByAScreenReader)
{
    ASSERT_EQ(transfer().status, 0);
    const std::string page = this->page();
    EXPECT_THAT(page, HasSubstr("<html lang=\"en\">"));
    EXPECT_EQ(countOf(page, "<h1"), 1);
    EXPECT_GT(countOf(page, "<svg "), 4);
    EXPECT_EQ(countOf(page, "<svg "), countOf(page, "<svg role=\"img\" [^>]*aria-label=\"[^\"]"));
    EXPECT_EQ(countOf(page, "<table>"), countOf(page, "<table><caption>"));
    EXPECT_EQ(countOf(page, "<thead><tr><th scope=\"col\""), countOf(page, "<table>"));
    EXPECT_EQ(countOf(page, "<select "), countOf(page, "<label>[A-Z][a-z]+ <select "));
    const std::regex names(" id=\"([^\"]*)\"");
    std::set<std::string> seen;
    for (auto found = std::sregex_iterator(page.begin(), page.end(), names); found != std::sregex_iterator(); ++found)
    {
        EXPECT_TRUE(seen.insert((*found)[1]).second) << (*found)[1] << " is twice on the page";
    }
}

TEST_F(HtmlReport, HasThePageThatABrowserShowsInLightAndDark)
{
    ASSERT_EQ(transfer().status, 0);
    const std::string shown = browse(runner, "--dump-dom", "report.html");
    // One cut of eight, and one field of two.
    EXPECT_EQ(countOf(shown, "<figure data-of=\"cuts\" data-cut=\"[0-9]+\">"), 1);
    EXPECT_EQ(countOf(shown, "<figure data-of=\"cuts\" data-cut=\"[0-9]+\" hidden=\"\">"), 7);
    EXPECT_EQ(countOf(shown, "<div data-of=\"validation\" data-field=\"[0-9]+\">"), 1);
    EXPECT_EQ(countOf(shown, "<fieldset class=\"choice\" data-choice=\"[a-z]+\">"), 2);
    const auto screenshot = [&](const std::string& name, const std::string& option)
    {
        const std::filesystem::path file = runner.file(name);
        browse(runner, option + " --screenshot='" + file.string() + "'", "report.html");
        return brightnessOf(file);
    };
    EXPECT_GT(screenshot("light.png", "--blink-settings=preferredColorScheme=1"), 200);
    EXPECT_LT(screenshot("dark.png", "--blink-settings=preferredColorScheme=0"), 100);
}

TEST_F(HtmlReport, OfPointsShowsThemInTheSource)
{
    std::ofstream(runner.file("points.csv")) << "x,y,z\n0.5,0.5,0.5\n2,2,2\n";
    const CommandResult result = runner.run(
        {"sample", "source.vtu", "points.csv", "-o", "out.csv", "--outside", "default", "--report", "report.html"});
    ASSERT_EQ(result.status, 0) << result.errors;
    const std::string page = this->page();
    EXPECT_THAT(page,
                HasSubstr("<h1 class=\"doubtful\"><b>doubtful</b>: 1 of 2 points (50 %) are far from the source"));
    EXPECT_THAT(page, HasSubstr("through the largest value"));
    EXPECT_THAT(page, Not(HasSubstr("<h2>Mapped back</h2>")));
}

TEST_F(HtmlReport, OfSurfacesIsNotValidated)
{
    writeGrid(*makeGrid(VTK_QUAD, 4), runner.file("target.vtu"));
    const CommandResult result = transfer();
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(page(), HasSubstr("not validated"));
}

TEST_F(HtmlReport, ShowsTheCutThatIsAskedFor)
{
    ASSERT_EQ(transfer({"--picture-plane", "y=0.4", "--picture-field", "velocity:z"}).status, 0);
    EXPECT_THAT(page(), HasSubstr("velocity z, y = 0.4</option>"));
}

TEST(Markup, KeepsWhatHtmlWouldTakeForItsOwn)
{
    EXPECT_EQ(veltrane::escaped("a<b & \"c\">"), "a&lt;b &amp; &quot;c&quot;&gt;");
    EXPECT_EQ(veltrane::escaped("Gr\xC3\xB6\xC3\x9F"
                                "e"),
              "Gr\xC3\xB6\xC3\x9F"
              "e");
    EXPECT_EQ(veltrane::escaped("Gr\xF6"
                                "e\x01"),
              "Gr?e?");
}

TEST(Markup, GivesGraphicsNamesOfTheirOwnAndShortNumbers)
{
    const std::string file =
        "<?xml?>\n<svg width=\"9pt\">\n<clipPath id=\"clip1\"/><g clip-path=\"url(#clip1)\">"
        "<path style=\"stroke:rgb(10%,10%,10%);\" d=\"M 1.234375 2 L 30.0012 4.5 \"/></g>\n</svg>\n";
    EXPECT_EQ(veltrane::embedded(file, "a"), "\n<clipPath id=\"a-clip1\"/><g clip-path=\"url(#a-clip1)\">"
                                             "<path style=\"stroke:currentColor;\" d=\"M 1.2 2 L 30 4.5 \"/></g>\n");
}

TEST(HtmlHistogram, HasABarAndARowForEachInterval)
{
    const std::string figure = veltrane::htmlHistogram("Distances", "distance", {{0, 1, 2}, {3, 0}});
    EXPECT_EQ(countOf(figure, "<rect "), 2);
    EXPECT_THAT(figure, HasSubstr("<th scope=\"row\">0 to 1</th><td class=\"n\">3</td>"));
    EXPECT_EQ(veltrane::htmlHistogram("Distances", "distance", {}), "");
}

} // namespace
