// Maps in files: what comes back is what was saved, and what is damaged or foreign is refused.
#include "Errors.h"
#include "HostMeshes.h"
#include "Map.h"

#include "TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstring>
#include <filesystem>
#include <malloc.h>
#include <sys/resource.h>

namespace
{
using namespace host_meshes;
using veltrane::Field;
using veltrane::Location;
using veltrane::Map;
using veltrane::MapOptions;
using veltrane::OutsideMode;

class StoredMaps : public testing::Test
{
protected:
    const veltrane::Mesh source = cubesOfAllKinds();
    /// Reaches beyond the source, so that there are near, far and reached nodes.
    const veltrane::Mesh target = block({10, 2, 3}, {0.05F, 0.04F, 0.03F}, {9.96F, 0.97F, 1.02F});
    const MapOptions everything{.mode = OutsideMode::propagate, .toGaussPoints = true, .fromGaussPoints = true};
    const Map map{source, target, everything};
    const std::vector<std::byte> bytes = map.bytes();

    /// Why bytes are no map; empty if they are one.
    static std::string refusal(std::span<const std::byte> given)
    {
        try
        {
            Map::fromBytes(given);
        }
        catch (const veltrane::Error& error)
        {
            return error.what();
        }
        return "";
    }

    static constexpr const char* damaged = "the map is damaged or cut off";
};

void expectSame(const Map& first, const Map& second, const veltrane::Mesh& source)
{
    const std::vector<Field> fields{
        fieldOf(nodePositions(source), Location::nodes, 4, linear),
        fieldOf(gaussPointPositions(source), Location::gaussPoints, 1, linear),
        fieldOf(nodePositions(source), Location::nodes, 1, linear),
    };
    const veltrane::ApplyOptions options{.defaultValue = 5,
                                         .targetLocations = {Location::nodes, Location::nodes, Location::gaussPoints}};
    const auto expected = first.apply(fields, options);
    const auto results = second.apply(fields, options);
    for (std::size_t i = 0; i < fields.size(); ++i)
    {
        EXPECT_EQ(results[i].values(), expected[i].values()) << "field " << i;
    }
    for (const Location location : {Location::nodes, Location::gaussPoints})
    {
        const auto places = second.places(location);
        const auto expectedPlaces = first.places(location);
        EXPECT_EQ(places.findings, expectedPlaces.findings);
        EXPECT_EQ(places.elements, expectedPlaces.elements);
        EXPECT_EQ(places.referenceCoordinates, expectedPlaces.referenceCoordinates);
        EXPECT_EQ(places.distances, expectedPlaces.distances);
    }
    EXPECT_EQ(statisticsText(second.statistics()), statisticsText(first.statistics()));
    EXPECT_EQ(second.mode(), first.mode());
    EXPECT_EQ(second.hasUnreachedNodes(), first.hasUnreachedNodes());
    EXPECT_EQ(second.singularElements(), first.singularElements());
}

TEST_F(StoredMaps, ComeBackFromAFileAsTheyWere)
{
    const TemporaryDirectory directory;
    map.save(directory / "map");
    const Map loaded = Map::load(directory / "map");
    expectSame(map, loaded, source);
    EXPECT_EQ(loaded.bytes(), bytes);
    EXPECT_TRUE(loaded.isFrom(source));
    EXPECT_TRUE(loaded.isTo(target));
}

TEST_F(StoredMaps, AreTheSameBytesFromAnyNumberOfThreadsAndWhateverStoodInMemory)
{
    for (const int threads : {1, 2, 3, 8})
    {
        mallopt(M_PERTURB, 17 * threads);
        MapOptions options = everything;
        options.threads = threads;
        const std::vector<std::byte> again = Map(source, target, options).bytes();
        mallopt(M_PERTURB, 0);
        EXPECT_EQ(again.size(), bytes.size());
        EXPECT_EQ(again, bytes) << threads << " threads";
    }
}

TEST_F(StoredMaps, WithoutChecksumsKnowNoMeshes)
{
    MapOptions options = everything;
    options.takesChecksums = false;
    const Map unnamed(source, target, options);
    expectSame(map, unnamed, source);
    EXPECT_FALSE(unnamed.isFrom(source));
    EXPECT_FALSE(unnamed.isTo(target));
}

TEST_F(StoredMaps, KnowTheMeshesThatTheyWereBuiltFrom)
{
    EXPECT_TRUE(map.isFrom(source));
    EXPECT_TRUE(map.isTo(target));
    EXPECT_FALSE(map.isFrom(target));
    EXPECT_FALSE(map.isTo(source));
    EXPECT_FALSE(map.isTo(cloud(target.coordinates())));
    const auto with = [&](auto change)
    {
        veltrane::MeshData data{.coordinates = target.coordinates(),
                                .kinds = target.kinds(),
                                .offsets = {},
                                .connectivity = {},
                                .materialPerElement = target.materialPerElement(),
                                .materials = target.materials()};
        data.offsets.push_back(0);
        for (int element = 0; element < target.elementCount(); ++element)
        {
            const auto nodes = target.nodesOf(element);
            data.connectivity.insert(data.connectivity.end(), nodes.begin(), nodes.end());
            data.offsets.push_back(data.connectivity.size());
        }
        change(data);
        return map.isTo(veltrane::Mesh(std::move(data)));
    };
    EXPECT_TRUE(with([](auto&) {}));
    EXPECT_FALSE(with([](auto& data) { data.coordinates.back() += 1e-5F; }));
    EXPECT_FALSE(with([](auto& data) { std::swap(data.connectivity[8], data.connectivity[9]); }));
    EXPECT_FALSE(with([](auto& data) { data.materials.front().stateCode = 2; }));
    EXPECT_TRUE(with([](auto& data) { data.materials.front().name = "other"; }));
    EXPECT_FALSE(with(
        [](auto& data)
        {
            data.materials.push_back({"more", 1});
            data.materialPerElement.back() = 1;
        }));

    const veltrane::PointCloud points = cloud(scattered(5000, {0, 0, 0}, {5, 1, 1}));
    const Map toPoints(source, points, {.mode = OutsideMode::defaultValue, .threads = 3});
    EXPECT_TRUE(toPoints.isTo(points));
    EXPECT_FALSE(toPoints.isTo(cloud(scattered(5000, {0, 0, 0}, {5, 1, 1}, 2))));
}

TEST_F(StoredMaps, AreRefusedIfTheyAreCutOffAnywhere)
{
    for (std::size_t size = 0; size < bytes.size(); size += size < 512 || size + 512 > bytes.size() ? 1 : 97)
    {
        const std::string text = refusal(std::span(bytes).first(size));
        ASSERT_TRUE(text == damaged || (size < 24 && !text.empty())) << size << " bytes: " << text;
    }
    std::vector<std::byte> longer = bytes;
    longer.insert(longer.end(), 8, std::byte{0});
    EXPECT_EQ(refusal(longer), damaged);
    EXPECT_EQ(refusal(bytes), "");
}

TEST_F(StoredMaps, AreRefusedIfAnyByteHasChanged)
{
    std::vector<std::byte> changed = bytes;
    for (std::size_t at = 0; at < bytes.size(); at += at < 512 ? 1 : 61)
    {
        for (const auto flip : {std::byte{1}, std::byte{0x80}, std::byte{0xFF}})
        {
            changed[at] ^= flip;
            const std::string text = refusal(changed);
            ASSERT_TRUE(text == damaged || (at < 24 && !text.empty())) << "byte " << at << ": " << text;
            changed[at] = bytes[at];
        }
    }
}

TEST_F(StoredMaps, AreToldFromForeignBytesAndOtherVersions)
{
    const auto with = [&](std::size_t at, std::uint64_t value)
    {
        std::vector<std::byte> changed = bytes;
        std::memcpy(changed.data() + at, &value, sizeof value);
        return refusal(changed);
    };
    EXPECT_EQ(refusal({}), "this is not a map");
    EXPECT_EQ(refusal(std::vector<std::byte>(4096)), "this is not a map");
    EXPECT_EQ(with(0, 0x0A1A0A0D474E5089), "this is not a map");
    EXPECT_EQ(with(8, 1), "the map was saved by another version, which this one cannot read");
    EXPECT_EQ(with(16, 0x0807060504030201), "the map was saved on a machine with another order of bytes");
}

TEST_F(StoredMaps, NameTheFileThatCannotBeReadOrWritten)
{
    const TemporaryDirectory directory;
    const auto messageOf = [](auto act)
    {
        try
        {
            act();
        }
        catch (const veltrane::Error& error)
        {
            return std::string(error.what());
        }
        return std::string();
    };
    const auto path = directory / "map";
    EXPECT_EQ(messageOf([&] { Map::load(path); }), "cannot open '" + path.string() + "': No such file or directory");
    writeFile(path, "x y z\n");
    EXPECT_EQ(messageOf([&] { Map::load(path); }), "'" + path.string() + "': this is not a map");
    EXPECT_EQ(messageOf([&] { Map::load(directory.path()); }),
              "cannot open '" + directory.path().string() + "': Is a directory");
    const auto inNoFolder = directory / "nowhere/map";
    EXPECT_EQ(messageOf([&] { map.save(inNoFolder); }),
              "cannot write '" + inNoFolder.string() + "': No such file or directory");
}

TEST_F(StoredMaps, StayWholeWhereTheNextOneCannotBeWritten)
{
    const TemporaryDirectory directory;
    map.save(directory / "map");
    // No file may grow beyond a few bytes, as on a full disk.
    const auto formerHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit former{};
    getrlimit(RLIMIT_FSIZE, &former);
    const rlimit small{100, former.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    EXPECT_THROW(map.save(directory / "map"), veltrane::Error);
    setrlimit(RLIMIT_FSIZE, &former);
    std::signal(SIGXFSZ, formerHandler);
    EXPECT_EQ(Map::load(directory / "map").bytes(), bytes);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory.path()), {}), 1);
}

TEST_F(StoredMaps, OfNodesAloneStillTakeNothingFromSourceGaussPoints)
{
    const Map plain(source, target, {.mode = OutsideMode::defaultValue});
    const Map loaded = Map::fromBytes(plain.bytes());
    const Field field = fieldOf(gaussPointPositions(source), Location::gaussPoints, 1, linear);
    for (const Map* each : {&plain, &loaded})
    {
        EXPECT_THROW(each->apply(std::span(&field, 1), {.targetLocations = {Location::nodes}}), veltrane::InvalidData);
        EXPECT_THROW(each->matrix({.source = Location::gaussPoints}), veltrane::InvalidOption);
    }
}
} // namespace
