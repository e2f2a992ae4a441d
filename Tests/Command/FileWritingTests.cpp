// Files as the command writes them: compressed or not, by any number of threads, of any size, on a full disk.
#include "BlockLayout.h"
#include "BlockWriter.h"
#include "CommandRunner.h"
#include "DataSetWriter.h"
#include "TestGrids.h"
#include "ThreadWorkers.h"
#include "VtuFile.h"
#include "VtuWriter.h"

#include <vtkCellArray.h>
#include <vtkCellData.h>
#include <vtkCellType.h>
#include <vtkFieldData.h>
#include <vtkIdTypeArray.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkShortArray.h>
#include <vtkStringArray.h>
#include <vtkUnsignedCharArray.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <fstream>

namespace
{
using namespace veltrane;
using testing::HasSubstr;
using testing::Not;

/// Of everything that a file may hold, and larger than a block.
vtkSmartPointer<vtkUnstructuredGrid> richGrid()
{
    auto grid = makeGrid(VTK_HEXAHEDRON, 20);
    addDoubles(*grid, "T & \"<t>\"", linear);
    addFloats(*grid, "u", {linear, [](const Point& p) { return std::sin(40 * p[0]); }, linear});
    grid->GetPointData()->GetArray("u")->SetComponentName(1, "the second");
    grid->GetPointData()->SetActiveVectors("u");
    addCellNumbers(*grid, "part", [](vtkIdType cell) { return static_cast<int>(cell % 7); });
    vtkNew<vtkIdTypeArray> numbers;
    numbers->SetName("numbers");
    vtkNew<vtkShortArray> shorts;
    shorts->SetName("shorts");
    vtkNew<vtkUnsignedCharArray> flags;
    flags->SetName("flags");
    for (vtkIdType cell = 0; cell < grid->GetNumberOfCells(); ++cell)
    {
        numbers->InsertNextValue(cell * cell);
        shorts->InsertNextValue(static_cast<short>(-cell));
        flags->InsertNextValue(static_cast<unsigned char>(cell));
    }
    grid->GetCellData()->AddArray(numbers);
    grid->GetCellData()->AddArray(shorts);
    grid->GetCellData()->AddArray(flags);
    vtkNew<vtkStringArray> names;
    names->SetName("names");
    names->InsertNextValue("steel");
    names->InsertNextValue("");
    names->InsertNextValue("copper");
    grid->GetFieldData()->AddArray(names);
    vtkNew<vtkIdTypeArray> none;
    none->SetName("none");
    grid->GetFieldData()->AddArray(none);
    return grid;
}

void expectSame(vtkAbstractArray* expected, vtkAbstractArray* actual, const std::string& name)
{
    ASSERT_NE(actual, nullptr) << name;
    EXPECT_EQ(actual->GetDataType(), expected->GetDataType()) << name;
    EXPECT_EQ(actual->GetNumberOfComponents(), expected->GetNumberOfComponents()) << name;
    ASSERT_EQ(actual->GetNumberOfTuples(), expected->GetNumberOfTuples()) << name;
    for (vtkIdType i = 0; i < expected->GetNumberOfValues(); ++i)
    {
        ASSERT_EQ(actual->GetVariantValue(i), expected->GetVariantValue(i)) << name << " " << i;
    }
}

void expectSame(vtkFieldData& expected, vtkFieldData& actual)
{
    ASSERT_EQ(actual.GetNumberOfArrays(), expected.GetNumberOfArrays());
    for (int i = 0; i < expected.GetNumberOfArrays(); ++i)
    {
        expectSame(expected.GetAbstractArray(i), actual.GetAbstractArray(i), expected.GetAbstractArray(i)->GetName());
    }
}

void expectSame(vtkUnstructuredGrid& expected, vtkUnstructuredGrid& actual)
{
    expectSame(expected.GetPoints()->GetData(), actual.GetPoints()->GetData(), "points");
    expectSame(expected.GetCells()->GetConnectivityArray(), actual.GetCells()->GetConnectivityArray(), "connectivity");
    expectSame(expected.GetCells()->GetOffsetsArray(), actual.GetCells()->GetOffsetsArray(), "offsets");
    expectSame(expected.GetCellTypesArray(), actual.GetCellTypesArray(), "types");
    expectSame(*expected.GetPointData(), *actual.GetPointData());
    expectSame(*expected.GetCellData(), *actual.GetCellData());
    expectSame(*expected.GetFieldData(), *actual.GetFieldData());
}

class WrittenGrid : public testing::TestWithParam<Compression>
{
protected:
    TemporaryDirectory directory;
    std::filesystem::path file = directory / "grid.vtu";
};

TEST_P(WrittenGrid, IsReadBackByVtkAsItWas)
{
    const auto grid = richGrid();
    writeDataSet(*grid, file, {.compression = GetParam()});
    const auto read = readGrid(file);
    expectSame(*grid, *read);
    EXPECT_STREQ(read->GetPointData()->GetArray("u")->GetComponentName(1), "the second");
    ASSERT_NE(read->GetPointData()->GetVectors(), nullptr);
    EXPECT_STREQ(read->GetPointData()->GetVectors()->GetName(), "u");
}

TEST_P(WrittenGrid, GivesTheSameBytesOnAnyNumberOfThreads)
{
    const auto grid = richGrid();
    writeDataSet(*grid, file, {.compression = GetParam(), .threads = 1});
    const std::string expected = contentsOf(file);
    for (const int threads : {2, 3, 8})
    {
        writeDataSet(*grid, file, {.compression = GetParam(), .threads = threads});
        EXPECT_TRUE(contentsOf(file) == expected) << threads;
    }
}

TEST_P(WrittenGrid, LeavesTheNumberOfComponentsOutWhereItIsOne)
{
    writeDataSet(*richGrid(), file, {.compression = GetParam()});
    const std::string contents = contentsOf(file);
    EXPECT_THAT(contents, HasSubstr("Name=\"T &amp; &quot;&lt;t&gt;&quot;\" format"));
    EXPECT_THAT(contents, HasSubstr("Name=\"u\" NumberOfComponents=\"3\""));
    EXPECT_THAT(contents, Not(HasSubstr("NumberOfComponents=\"1\"")));
}

INSTANTIATE_TEST_SUITE_P(Compressions, WrittenGrid,
                         testing::Values(Compression::none, Compression::fast, Compression::small));

TEST(BlockLayout, CountsBeyondFourGibibytes)
{
    constexpr std::uint64_t gibibyte = std::uint64_t{1} << 30;
    constexpr BlockLayout whole{6 * gibibyte};
    static_assert(whole.count() == 6 * gibibyte / 32768 && whole.lastSize() == 0);
    static_assert(whole.first(whole.count() - 1) == 6 * gibibyte - 32768);
    static_assert(whole.sizeOf(whole.count() - 1) == 32768);
    constexpr BlockLayout further{6 * gibibyte + 5};
    static_assert(further.count() == whole.count() + 1 && further.lastSize() == 5);
    static_assert(further.sizeOf(further.count() - 1) == 5);
    static_assert(further.headerCount() == 3 + 6 * gibibyte / 32768 + 1);
    static_assert(BlockLayout{0}.count() == 0);
    EXPECT_EQ(further.first(further.count() - 1), 6 * gibibyte);
}

/// An array of five gibibytes and three bytes, of zeros up to the last three. It is nowhere as a whole.
ArrayBytes enormousArray()
{
    constexpr std::uint64_t size = (std::uint64_t{5} << 30) + 3;
    return {size, [](std::uint64_t first, std::span<std::byte> room)
            { std::memset(room.data(), first + room.size() == size ? 7 : 0, room.size()); }};
}

TEST(BlockWriter, WritesAnArrayOfMoreThanFourGibibytes)
{
    const TemporaryDirectory directory;
    const PlacedFile file(directory / "array");
    ThreadWorkers workers(0);
    BlockWriter writer(file, Compression::fast, workers);
    const ArrayBytes array = enormousArray();
    constexpr std::uint64_t place = 16;
    const std::uint64_t end = writer.write(array, nullptr, place);
    EXPECT_EQ(std::filesystem::file_size(directory / "array"), end);
    const std::string contents = contentsOf(directory / "array");
    std::vector<std::uint64_t> header(3 + 163841);
    std::memcpy(header.data(), contents.data() + place, header.size() * 8);
    EXPECT_EQ(header[0], 163841U); // 5 * 2^30 / 32768 and one more
    EXPECT_EQ(header[1], 32768U);
    EXPECT_EQ(header[2], 3U);
    std::uint64_t sum = place + header.size() * 8;
    for (std::size_t block = 0; block < header[0]; ++block)
    {
        sum += header[3 + block];
    }
    EXPECT_EQ(sum, end);
}

class WrittenOutput : public testing::Test
{
protected:
    WrittenOutput()
    {
        const auto source = makeGrid(VTK_HEXAHEDRON, 4);
        addDoubles(*source, "T", linear);
        writeGrid(*source, runner.file("source.vtu"));
        writeGrid(*makeGrid(VTK_TETRA, 24), runner.file("target.vtu"));
    }

    CommandResult transfer(const std::string& output, const std::vector<std::string>& options,
                           std::optional<rlim_t> maxFileSize = {}) const
    {
        std::vector<std::string> arguments{"transfer", "source.vtu", "target.vtu", "-o", output, "--quiet"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return runner.run(arguments, maxFileSize);
    }

    CommandRunner runner;
};

TEST_F(WrittenOutput, IsAsCompressedAsWanted)
{
    for (const std::string how : {"none", "fast", "small"})
    {
        const CommandResult result = transfer(how + ".vtu", {"--compression", how});
        ASSERT_EQ(result.status, 0) << result.errors;
        expectSame(*readGrid(runner.file("none.vtu")), *readGrid(runner.file(how + ".vtu")));
    }
    ASSERT_EQ(transfer("usual.vtu", {}).status, 0);
    EXPECT_TRUE(contentsOf(runner.file("usual.vtu")) == contentsOf(runner.file("fast.vtu")));
    const auto sizeOf = [&](const char* name) { return std::filesystem::file_size(runner.file(name)); };
    EXPECT_LT(2 * sizeOf("fast.vtu"), sizeOf("none.vtu"));
    EXPECT_LT(sizeOf("small.vtu"), sizeOf("fast.vtu"));
}

TEST_F(WrittenOutput, TakesOverWhatStaysAsTheTargetHasIt)
{
    const auto target = richGrid();
    addDoubles(*target, "T", [](const Point& p) { return p[0]; });
    writeDataSet(*target, runner.file("target.vtu"), {.compression = Compression::small});
    const std::string packed = contentsOf(runner.file("target.vtu"));
    ASSERT_EQ(transfer("fast.vtu", {"--replace"}).status, 0);
    ASSERT_EQ(transfer("none.vtu", {"--replace", "--compression", "none"}).status, 0);
    const std::string written = contentsOf(runner.file("fast.vtu"));
    // The connectivity is the last large array, and the one before it the points.
    for (const std::size_t fromEnd : {20000U, 40000U, 60000U})
    {
        EXPECT_THAT(written, HasSubstr(packed.substr(packed.size() - fromEnd, 500)));
    }
    const auto result = readGrid(runner.file("fast.vtu"));
    expectSame(*readGrid(runner.file("none.vtu")), *result);
    EXPECT_NEAR(valuesOf(*result, "T").back(), linear({1, 1, 1}), 1e-5); // not what the target had
}

TEST(WrittenFile, TakesNothingOverFromAFileThatHasChanged)
{
    const TemporaryDirectory directory;
    writeDataSet(*richGrid(), directory / "small.vtu", {.compression = Compression::small});
    const auto contents = readVtu(directory / "small.vtu", 1);
    ASSERT_TRUE(contents.has_value());
    const auto write = [&](const char* name, const StoredArrays* stored)
    {
        writeVtu(*contents->grid, *contents->types, viewOf(contents->cells), directory / name, {}, stored);
        return contentsOf(directory / name);
    };
    const std::string plain = write("plain.vtu", nullptr);
    EXPECT_LT(write("taken.vtu", &contents->stored).size(), plain.size());
    std::ofstream(directory / "small.vtu", std::ios::app) << "\n";
    write("changed.vtu", &contents->stored);
    expectSame(*readGrid(directory / "plain.vtu"), *readGrid(directory / "changed.vtu"));
    EXPECT_EQ(std::filesystem::file_size(directory / "changed.vtu"), plain.size());
}

TEST_F(WrittenOutput, HasTheSameBytesOnAnyNumberOfThreads)
{
    ASSERT_EQ(transfer("1.vtu", {"--threads", "1"}).status, 0);
    ASSERT_EQ(transfer("4.vtu", {"--threads", "4"}).status, 0);
    EXPECT_TRUE(contentsOf(runner.file("1.vtu")) == contentsOf(runner.file("4.vtu")));
}

TEST_F(WrittenOutput, LeavesNothingBehindWhereverTheDiskIsFull)
{
    ASSERT_EQ(transfer("out.vtu", {}).status, 0);
    const auto size = std::filesystem::file_size(runner.file("out.vtu"));
    std::filesystem::remove(runner.file("out.vtu"));
    const auto before = runner.directory().names();
    for (const rlim_t limit : {size / 10, size / 2, size - 1})
    {
        const CommandResult result = transfer("out.vtu", {}, limit);
        EXPECT_EQ(result.status, 73);
        EXPECT_EQ(result.errors, "veltrane: cannot write 'out.vtu': there is not enough disk space\n");
        EXPECT_EQ(runner.directory().names(), before);
    }
}

TEST_F(WrittenOutput, OfAFormatWithoutCompressionRefusesIt)
{
    expectFailure(runner, 64, "--compression has no effect on the output 'out.vtk', only on .vtu and .vtp",
                  {"transfer", "source.vtu", "target.vtu", "-o", "out.vtk", "--compression", "none"});
    expectFailure(runner, 64, "--compression has no effect on the output 'out.csv', only on .vtu and .vtp",
                  {"sample", "source.vtu", "target.vtu", "-o", "out.csv", "--compression", "small"});
    expectFailure(runner, 64, "--compression has no effect on the output 'out.csv', only on .vtu and .vtp",
                  {"match", "nodes", "source.vtu", "target.vtu", "-o", "out.csv", "--compression", "fast"});
}

} // namespace
