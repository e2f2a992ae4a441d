// veltrane transfer and veltrane sample on results in steps.
#include "CommandRunner.h"
#include "TestGrids.h"

#include <vtkCellArray.h>
#include <vtkCellType.h>
#include <vtkDoubleArray.h>
#include <vtkExodusIIWriter.h>
#include <vtkInformation.h>
#include <vtkInformationVector.h>
#include <vtkNew.h>
#include <vtkObjectFactory.h>
#include <vtkPointData.h>
#include <vtkPolyData.h>
#include <vtkStreamingDemandDrivenPipeline.h>
#include <vtkUnstructuredGridAlgorithm.h>
#include <vtkXMLPolyDataReader.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <array>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace
{

using testing::UnorderedElementsAre;

/// Makes grids of three times, with the time as the values of the field "T".
class ThreeSteps : public vtkUnstructuredGridAlgorithm
{
public:
    static ThreeSteps* New();
    vtkTypeMacro(ThreeSteps, vtkUnstructuredGridAlgorithm)

        static constexpr std::array<double, 3> times{0.5, 1, 2.5};

    static vtkSmartPointer<vtkUnstructuredGrid> gridAt(double time)
    {
        const auto grid = makeGrid(VTK_HEXAHEDRON, 2);
        addDoubles(*grid, "T", [=](const Point&) { return time; });
        return grid;
    }

protected:
    ThreeSteps() { this->SetNumberOfInputPorts(0); }

    int RequestInformation(vtkInformation*, vtkInformationVector**, vtkInformationVector* output) override
    {
        vtkInformation* information = output->GetInformationObject(0);
        information->Set(vtkStreamingDemandDrivenPipeline::TIME_STEPS(), times.data(), 3);
        const std::array<double, 2> range{times.front(), times.back()};
        information->Set(vtkStreamingDemandDrivenPipeline::TIME_RANGE(), range.data(), 2);
        return 1;
    }

    int RequestData(vtkInformation*, vtkInformationVector**, vtkInformationVector* output) override
    {
        vtkInformation* information = output->GetInformationObject(0);
        vtkInformationDoubleKey* key = vtkStreamingDemandDrivenPipeline::UPDATE_TIME_STEP();
        const double time = information->Has(key) != 0 ? information->Get(key) : times[0];
        auto* grid = vtkUnstructuredGrid::SafeDownCast(information->Get(vtkDataObject::DATA_OBJECT()));
        grid->ShallowCopy(gridAt(time));
        grid->GetInformation()->Set(vtkDataObject::DATA_TIME_STEP(), time);
        return 1;
    }
};

vtkStandardNewMacro(ThreeSteps);

class Series : public testing::Test
{
protected:
    Series()
    {
        std::string entries;
        for (const double time : ThreeSteps::times)
        {
            const std::string name = "step" + std::to_string(static_cast<int>(10 * time)) + ".vtu";
            writeGrid(*ThreeSteps::gridAt(time), runner.file(name));
            entries += "<DataSet timestep=\"" + std::to_string(time) + "\" file=\"" + name + "\"/>";
        }
        writeCollection("source.pvd", entries);
        writeGrid(*makeGrid(VTK_TETRA, 2), runner.file("target.vtu"));
    }

    void writeCollection(const std::string& name, const std::string& entries) const
    {
        std::ofstream(runner.file(name)) << "<VTKFile type=\"Collection\"><Collection>" << entries
                                         << "</Collection></VTKFile>\n";
    }

    void writeExodus(const std::string& name) const
    {
        vtkNew<ThreeSteps> steps;
        vtkNew<vtkExodusIIWriter> writer;
        writer->SetInputConnection(steps->GetOutputPort());
        writer->WriteAllTimeStepsOn();
        writer->SetFileName(runner.file(name).c_str());
        ASSERT_EQ(writer->Write(), 1);
    }

    CommandResult transfer(const std::string& source, const std::string& output,
                           std::vector<std::string> options = {}) const
    {
        options.insert(options.begin(), {"transfer", source, "target.vtu", "-o", output, "--quiet"});
        return runner.run(options);
    }

    void expectRefused(int status, const std::string& sentence, const std::string& output,
                       std::vector<std::string> options = {}) const
    {
        options.insert(options.begin(), {"transfer", "source.pvd", "target.vtu", "-o", output, "--quiet"});
        expectFailure(runner, status, sentence, options);
    }

    void expectTime(const std::string& file, double time) const
    {
        EXPECT_THAT(valuesOf(*readGrid(runner.file(file)), "T"), testing::Each(testing::DoubleNear(time, 1e-6)));
    }

    std::string textOf(const std::string& name) const { return contentsOf(runner.file(name)); }

    CommandRunner runner;
};

TEST_F(Series, CollectionsGiveCollections)
{
    const CommandResult result = transfer("source.pvd", "out.pvd", {"--jobs", "2"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output, "");
    const std::string collection = textOf("out.pvd");
    for (const char* entry : {"timestep=\"0.5\"", "file=\"out/out_0001.vtu\"", "timestep=\"1\"",
                              "file=\"out/out_0002.vtu\"", "timestep=\"2.5\"", "file=\"out/out_0003.vtu\""})
    {
        EXPECT_THAT(collection, testing::HasSubstr(entry));
    }
    expectTime("out/out_0001.vtu", 0.5);
    expectTime("out/out_0002.vtu", 1);
    expectTime("out/out_0003.vtu", 2.5);
    EXPECT_THAT(runner.directory().names(), UnorderedElementsAre("source.pvd", "step5.vtu", "step10.vtu", "step25.vtu",
                                                                 "target.vtu", "out", "out.pvd"));
    EXPECT_THAT(runner.temporaryNames(), testing::IsEmpty());
    // The output is a source like any other.
    ASSERT_EQ(transfer("out.pvd", "again.pvd").status, 0);
    expectTime("again/again_0003.vtu", 2.5);
}

TEST_F(Series, StepsCanBeChosen)
{
    ASSERT_EQ(transfer("source.pvd", "out.pvd", {"--steps", "3,1"}).status, 0);
    expectTime("out/out_0001.vtu", 2.5);
    expectTime("out/out_0002.vtu", 0.5);
    ASSERT_EQ(transfer("source.pvd", "last.vtu").status, 0);
    expectTime("last.vtu", 2.5);
    ASSERT_EQ(transfer("source.pvd", "second.vtu", {"--steps", "2"}).status, 0);
    expectTime("second.vtu", 1);
    ASSERT_EQ(transfer("source.pvd", "last.pvd", {"--steps", "last"}).status, 0);
    expectTime("last/last_0001.vtu", 2.5);
    ASSERT_EQ(transfer("source.pvd", "range.pvd", {"--steps", "2-3,1"}).status, 0);
    expectTime("range/range_0001.vtu", 1);
    expectTime("range/range_0002.vtu", 2.5);
    expectTime("range/range_0003.vtu", 0.5);
}

TEST_F(Series, ExodusFilesHaveSteps)
{
    writeExodus("source.e");
    ASSERT_EQ(transfer("source.e", "last.vtu").status, 0);
    expectTime("last.vtu", 2.5);
    ASSERT_EQ(transfer("source.e", "first.vtu", {"--steps", "1"}).status, 0);
    expectTime("first.vtu", 0.5);
    ASSERT_EQ(transfer("source.e", "out.pvd", {"--steps", "all"}).status, 0);
    expectTime("out/out_0002.vtu", 1);
    EXPECT_THAT(textOf("out.pvd"), testing::HasSubstr("timestep=\"2.5\""));
    EXPECT_THAT(runner.run({"info", "source.e"}).output, testing::HasSubstr("steps             3, times 0.5 to 2.5\n"));
}

class SampledSeries : public Series
{
protected:
    SampledSeries() { std::ofstream(runner.file("points.csv")) << "x,y,z\n0.25,0.5,0.125\n1,1,1\n"; }

    CommandResult sample(const std::string& source, const std::string& points, const std::string& output,
                         std::vector<std::string> options = {}) const
    {
        options.insert(options.begin(), {"sample", source, points, "-o", output, "--quiet"});
        return runner.run(options);
    }

    /// Of a part with two points.
    void expectPoints(const std::string& file, double time) const
    {
        vtkNew<vtkXMLPolyDataReader> reader;
        reader->SetFileName(runner.file(file).c_str());
        reader->Update();
        ASSERT_EQ(reader->GetOutput()->GetNumberOfVerts(), 2);
        vtkDataArray* values = reader->GetOutput()->GetPointData()->GetArray("T");
        ASSERT_NE(values, nullptr);
        EXPECT_NEAR(values->GetComponent(0, 0), time, 1e-6);
        EXPECT_NEAR(values->GetComponent(1, 0), time, 1e-6);
    }
};

TEST_F(SampledSeries, CollectionsGiveCollectionsOfPoints)
{
    const CommandResult result = sample("source.pvd", "points.csv", "out.pvd", {"--jobs", "2"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output, "");
    const std::string collection = textOf("out.pvd");
    for (const char* entry : {"timestep=\"0.5\"", "file=\"out/out_0001.vtp\"", "timestep=\"1\"",
                              "file=\"out/out_0002.vtp\"", "timestep=\"2.5\"", "file=\"out/out_0003.vtp\""})
    {
        EXPECT_THAT(collection, testing::HasSubstr(entry));
    }
    expectPoints("out/out_0001.vtp", 0.5);
    expectPoints("out/out_0002.vtp", 1);
    expectPoints("out/out_0003.vtp", 2.5);
    EXPECT_THAT(runner.temporaryNames(), testing::IsEmpty());
}

TEST_F(SampledSeries, PointsOfMeshesKeepTheirCells)
{
    ASSERT_EQ(sample("source.pvd", "target.vtu", "out.pvd", {"--steps", "3"}).status, 0);
    expectTime("out/out_0001.vtu", 2.5);
    EXPECT_EQ(readGrid(runner.file("out/out_0001.vtu"))->GetNumberOfCells(), 48);
}

TEST_F(SampledSeries, StepsCanBeChosen)
{
    ASSERT_EQ(sample("source.pvd", "points.csv", "last.vtp").status, 0);
    expectPoints("last.vtp", 2.5);
    ASSERT_EQ(sample("source.pvd", "points.csv", "second.csv", {"--steps", "2", "--report", "report.json"}).status, 0);
    EXPECT_THAT(textOf("second.csv"), testing::EndsWith("\n1,1,1,1,1\n"));
    EXPECT_THAT(textOf("report.json"), testing::HasSubstr("\"file\": \"step10.vtu\""));
    writeExodus("source.e");
    ASSERT_EQ(sample("source.e", "points.csv", "first.vtp", {"--steps", "1"}).status, 0);
    expectPoints("first.vtp", 0.5);
    ASSERT_EQ(sample("source.e", "points.csv", "exodus.pvd").status, 0);
    expectPoints("exodus/exodus_0003.vtp", 2.5);
}

TEST_F(SampledSeries, OptionsMustFit)
{
    const auto expect =
        [&](int status, const std::string& sentence, const std::string& output, std::vector<std::string> options)
    {
        options.insert(options.begin(), {"sample", "source.pvd", "points.csv", "-o", output, "--quiet"});
        expectFailure(runner, status, sentence, options);
    };
    expect(64, "the output of 3 steps must be a collection, named .pvd", "out.vtp", {"--steps", "all"});
    expect(64, "--steps: the source has 3 steps; there is no step 4", "out.pvd", {"--steps", "4"});
    expect(64, "--jobs has an effect only if the output is a collection, named .pvd", "out.csv", {"--jobs", "2"});
    expect(64, "--log is of single steps, not of a collection", "out.pvd", {"--log", "log.txt"});
    expect(73, "there is no directory 'nowhere' for the output", "out.pvd", {"--report", "nowhere/report.html"});
    expect(64, "the file 'p.jpg' of --picture is not named .png", "out.pvd", {"--picture", "p.jpg"});
    std::filesystem::remove(runner.file("step10.vtu"));
    expect(66, "there is no file 'step10.vtu'", "out.pvd", {});
}

TEST_F(Series, InfoTellsOfCollections)
{
    const CommandResult result = runner.run({"info", "source.pvd"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output, "collection        source.pvd\n"
                             "steps             3, times 0.5 to 2.5\n"
                             "meshes            the same in all steps\n"
                             "arrays            the same in all steps\n"
                             "file        step  time\n"
                             "step5.vtu      1   0.5\n"
                             "step10.vtu     2     1\n"
                             "step25.vtu     3   2.5\n"
                             "\n"
                             "file              step5.vtu\n"
                             "format            VTK unstructured grid\n"
                             "points            27\n"
                             "cells             8 hexahedra\n"
                             "box               x = 0 to 1\n"
                             "                  y = 0 to 1\n"
                             "                  z = 0 to 1\n"
                             "array      of    type  components  min  max\n"
                             "T      points  double           1  0.5  0.5\n");
}

TEST_F(Series, InfoComparesTheStepsWithTheFirst)
{
    const auto expectDifferences = [&](const std::string& meshes, const std::string& arrays)
    {
        EXPECT_THAT(runner.run({"info", "source.pvd"}).output,
                    testing::HasSubstr("meshes            " + meshes + "\narrays            " + arrays + "\n"));
    };
    const std::string same = "the same in all steps";
    const auto write = [&](const std::string& name, int n, double to, const std::string& array)
    {
        const auto grid = makeGrid(VTK_HEXAHEDRON, n, 0, to);
        addDoubles(*grid, array, linear);
        writeGrid(*grid, runner.file(name));
    };
    write("step10.vtu", 2, 1, "U");
    expectDifferences(same, "not as in step 1: step 2");
    write("step10.vtu", 3, 1, "T");
    expectDifferences("not as in step 1: step 2", same);
    write("step25.vtu", 2, 1.001, "T");
    expectDifferences("not as in step 1: step 2 and 1 other", same);
    const auto turned = ThreeSteps::gridAt(1);
    turned->GetCells()->ReverseCellAtId(3);
    writeGrid(*turned, runner.file("step10.vtu"));
    write("step25.vtu", 2, 1, "T");
    expectDifferences("not as in step 1: step 2", same);
    std::filesystem::remove(runner.file("step25.vtu"));
    expectFailure(runner, 66, "there is no file 'step25.vtu'", {"info", "source.pvd"});
}

TEST_F(Series, OptionsMustFit)
{
    expectRefused(64, "the output of 3 steps must be a collection, named .pvd", "out.vtu", {"--steps", "all"});
    for (const char* steps : {"some", "0", "1;2", "1,,2", "3-2", "1-", "-2", "1-2-3"})
    {
        expectRefused(64,
                      std::string("--steps ") + steps +
                          " is not all, last or numbers from 1, such as 3 or 3-5, separated by commas",
                      "out.pvd", {"--steps", steps});
    }
    expectRefused(64, "--steps: the source has 3 steps; there is no step 4", "out.pvd", {"--steps", "4"});
    expectRefused(64, "--steps 3,1,3 names step 3 twice", "out.pvd", {"--steps", "3,1,3"});
    expectRefused(64, "--steps 2,1-3 names step 2 twice", "out.pvd", {"--steps", "2,1-3"});
    expectRefused(64, "--steps: the source has 3 steps; there is no step 4", "out.pvd", {"--steps", "2-9"});
    expectRefused(64, "--jobs has an effect only if the output is a collection, named .pvd", "out.vtu",
                  {"--jobs", "2"});
    expectRefused(64, "--log is of single steps, not of a collection", "out.pvd", {"--log", "log.txt"});
    expectRefused(73, "the output 'source.pvd' is the input 'source.pvd' itself", "source.pvd");
    expectRefused(73, "there is no directory 'nowhere' for the output", "nowhere/out.pvd");
}

TEST_F(Series, CollectionsMustHoldTogether)
{
    writeCollection("source.pvd", "");
    expectRefused(65, "'source.pvd' has no steps", "out.pvd");
    writeCollection("source.pvd", "<DataSet timestep=\"1\"/>");
    expectRefused(65, "cannot read 'source.pvd': entry 1 names no file", "out.pvd");
    writeCollection("source.pvd",
                    "<DataSet timestep=\"1\" file=\"step5.vtu\"/><DataSet timestep=\"1\" file=\"step10.vtu\"/>");
    expectRefused(65, "'source.pvd' has several files of the time 1; a .pvtu file can name them as the pieces of one",
                  "out.pvd");
    for (const std::string time : {"late", "nan"})
    {
        writeCollection("source.pvd",
                        "<DataSet file=\"step5.vtu\"/><DataSet timestep=\"" + time + "\" file=\"step10.vtu\"/>");
        expectRefused(65, "cannot read 'source.pvd': the time '" + time + "' of entry 2 is not a number", "out.pvd");
    }
    std::ofstream(runner.file("source.pvd")) << "<VTKFile type=\"UnstructuredGrid\"/>\n";
    expectRefused(65, "cannot read 'source.pvd': it is not a collection of files", "out.pvd");
}

TEST_F(Series, AFailingStepLeavesNothingBehind)
{
    std::filesystem::remove(runner.file("step10.vtu"));
    expectRefused(66, "there is no file 'step10.vtu'", "out.pvd");
    expectRefused(66, "there is no file 'step10.vtu'", "out.pvd", {"--jobs", "3"});
}

/// The names in the directory of the parts.
std::set<std::string> namesIn(const std::filesystem::path& directory)
{
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(directory))
    {
        names.insert(entry.path().filename().string());
    }
    return names;
}

TEST_F(Series, PartsOfAnEarlierLongerRunGoWithTheirCollection)
{
    ASSERT_EQ(transfer("source.pvd", "out.pvd").status, 0);
    for (const char* name : {"out/notes.txt", "out/out_0004.vtu", "out/out_5.vtu", "out_0006.vtu", "out/out_0007.txt"})
    {
        std::ofstream(runner.file(name)) << "not of this series\n";
    }
    std::filesystem::create_symlink("notes.txt", runner.file("out/out_0008.vtu"));
    const auto entry = [](int time, const std::string& file)
    { return "<DataSet timestep=\"" + std::to_string(time) + "\" file=\"" + file + "\"/>"; };
    writeCollection("out.pvd", entry(1, "out/out_0001.vtu") + entry(2, "out/out_0002.vtu") +
                                   entry(3, "./out/../out/out_0003.vtu") + entry(5, "out/out_5.vtu") +
                                   entry(6, "out_0006.vtu") + entry(7, "out/out_0007.txt") +
                                   entry(8, "out/out_0008.vtu") + entry(9, "out/notes.txt"));
    ASSERT_EQ(transfer("source.pvd", "out.pvd", {"--steps", "3"}).status, 0);
    EXPECT_THAT(namesIn(runner.file("out")), UnorderedElementsAre("out_0001.vtu", "notes.txt", "out_0004.vtu",
                                                                  "out_5.vtu", "out_0007.txt", "out_0008.vtu"));
    EXPECT_TRUE(std::filesystem::exists(runner.file("out_0006.vtu")));
    expectTime("out/out_0001.vtu", 2.5);
}

TEST_F(Series, PartsOfAnEarlierRunStayIfTheNewOneFailsOrReadsThem)
{
    ASSERT_EQ(transfer("source.pvd", "out.pvd").status, 0);
    const std::set<std::string> all = namesIn(runner.file("out"));
    expectRefused(64, "--steps: the source has 3 steps; there is no step 4", "out.pvd", {"--steps", "4"});
    EXPECT_EQ(namesIn(runner.file("out")), all);
    writeCollection("other.pvd", "<DataSet timestep=\"4\" file=\"out/out_0003.vtu\"/>");
    ASSERT_EQ(runner.run({"transfer", "other.pvd", "out/out_0002.vtu", "-o", "out.pvd", "--quiet", "--replace"}).status,
              0);
    EXPECT_EQ(namesIn(runner.file("out")), all);
    expectTime("out/out_0001.vtu", 2.5);
}

TEST_F(Series, PartsDoNotTakeThePlacesOfInputs)
{
    ASSERT_EQ(transfer("source.pvd", "out.pvd").status, 0);
    writeCollection("other.pvd", "<DataSet timestep=\"1\" file=\"step5.vtu\"/>"
                                 "<DataSet timestep=\"2\" file=\"out/out_0002.vtu\"/>");
    expectFailure(runner, 73, "the output 'out/out_0002.vtu' is an input itself",
                  {"transfer", "other.pvd", "target.vtu", "-o", "out.pvd"});
    expectFailure(runner, 73, "the output 'out/out_0001.vtu' is an input itself",
                  {"transfer", "source.pvd", "out/out_0001.vtu", "-o", "out.pvd"});
    expectTime("out/out_0002.vtu", 1);
}

TEST_F(Series, AStepThatIsKilledIsToldOf)
{
    const TemporaryDirectory streams;
    // A file that is too large ends the process that writes it.
    const std::string command = "cd '" + runner.directory().path().string() + "' && ulimit -c 0 && ulimit -f 1 && '" +
                                VELTRANE_COMMAND + "' transfer source.pvd target.vtu -o out.pvd --quiet 2>'" +
                                (streams / "errors").string() + "'";
    const std::set<std::string> before = runner.directory().names();
    const int status = std::system(command.c_str());
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 1);
    EXPECT_EQ(contentsOf(streams / "errors"),
              "veltrane: the process of a step has been ended by a signal: File size limit exceeded\n");
    EXPECT_EQ(runner.directory().names(), before);
}

TEST_F(Series, WarnsOnceOfWhatAllStepsHave)
{
    for (const double time : ThreeSteps::times)
    {
        const auto grid = ThreeSteps::gridAt(time);
        grid->GetPointData()->GetArray("T")->SetComponent(static_cast<vtkIdType>(time), 0, std::nan(""));
        addDoubles(*grid, "U", linear);
        writeGrid(*grid, runner.file("step" + std::to_string(static_cast<int>(10 * time)) + ".vtu"));
    }
    for (const char* jobs : {"1", "3"})
    {
        const CommandResult result = transfer("source.pvd", "out.pvd", {"--jobs", jobs});
        EXPECT_EQ(result.status, 0);
        EXPECT_THAT(result.errors,
                    testing::MatchesRegex("veltrane: warning: 'step[0-9]+.vtu': field 'T' has 1 value beyond finite "
                                          "single-precision numbers; the first is nan at point [0-2], counted from 0\n"
                                          "veltrane: warning: there were 2 more such warnings of other steps\n"));
    }
}

TEST_F(Series, EachStepHasTheMaterialsOfItsOwnSource)
{
    const auto numbered = [](vtkUnstructuredGrid& grid, const std::vector<std::string>& arrays)
    {
        for (const std::string& array : arrays)
        {
            const int first = array == "part" ? 1 : 5;
            addCellNumbers(grid, array, [=](vtkIdType cell) { return first + static_cast<int>(cell % 2); });
        }
    };
    const auto target = makeGrid(VTK_TETRA, 2);
    numbered(*target, {"material", "part"});
    writeGrid(*target, runner.file("target.vtu"));
    const std::array<std::vector<std::string>, 3> arrays{{{"part"}, {}, {"material", "part"}}};
    const std::array<std::string, 3> steps{"step5.vtu", "step10.vtu", "step25.vtu"};
    for (std::size_t i = 0; i < steps.size(); ++i)
    {
        const auto grid = ThreeSteps::gridAt(1);
        numbered(*grid, arrays[i]);
        addDoubles(*grid, "T", linear);
        writeGrid(*grid, runner.file(steps[i]));
    }
    const std::vector<std::string> options{"--outside", "default"};
    ASSERT_EQ(transfer("source.pvd", "out.pvd", options).status, 0);
    for (std::size_t i = 0; i < steps.size(); ++i)
    {
        ASSERT_EQ(transfer(steps[i], "single.vtu", options).status, 0);
        EXPECT_TRUE(textOf("single.vtu") == textOf("out/out_000" + std::to_string(i + 1) + ".vtu")) << steps[i];
    }
}

TEST_F(Series, HasTheStatusOfItsWorstStep)
{
    // A target in two pieces, of which the source of one step has the first only.
    GridBuilder builder;
    builder.addGrid(VTK_TETRA, 1, 0, 1);
    builder.startBlock();
    builder.addGrid(VTK_TETRA, 1, 3, 4);
    writeGrid(*builder.grid(), runner.file("target.vtu"));
    const auto whole = makeGrid(VTK_HEXAHEDRON, 4, 0, 4);
    addDoubles(*whole, "T", linear);
    writeGrid(*whole, runner.file("step5.vtu"));
    writeGrid(*whole, runner.file("step25.vtu"));
    constexpr int warning = 3;
    for (const char* order : {"1,2,3", "2,1,3", "1,3,2"})
    {
        EXPECT_EQ(transfer("source.pvd", "out.pvd", {"--outside", "propagate", "--steps", order}).status, warning);
    }
    EXPECT_EQ(transfer("source.pvd", "out.pvd", {"--outside", "propagate", "--steps", "1,3"}).status, 0);
}

TEST_F(Series, TheTargetIsReadOnce)
{
    const auto target = makeGrid(VTK_TETRA, 2);
    target->InsertNextCell(VTK_PENTAGONAL_PRISM, 10, std::array<vtkIdType, 10>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}.data());
    writeGrid(*target, runner.file("target.vtu"));
    const CommandResult result = transfer("source.pvd", "out.pvd", {"--gauss", "--skip-unsupported"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors,
              "veltrane: warning: left out cells of 'target.vtu' that cannot be used: 1 pentagonal prism\n");
}

TEST_F(Series, CtrlCCancelsAllSteps)
{
    const auto source = makeGrid(VTK_TETRA, 12);
    addDoubles(*source, "T", linear);
    for (const char* name : {"step5.vtu", "step10.vtu", "step25.vtu"})
    {
        writeGrid(*source, runner.file(name));
    }
    writeGrid(*makeGrid(VTK_TETRA, 30), runner.file("target.vtu"));
    const std::set<std::string> before = runner.directory().names();
    const CommandResult result = runner.runAndInterrupt(
        {"transfer", "source.pvd", "target.vtu", "-o", "out.pvd", "--jobs", "2"}, SIGINT, "step 2");
    EXPECT_EQ(result.status, 130);
    EXPECT_THAT(result.errors, testing::EndsWith("veltrane: cancelled\r\n"));
    EXPECT_EQ(runner.directory().names(), before);
}

} // namespace
