#include "TestModels.h"

#include "MappingStringUtilities.h"

#include <cstdio>
#include <limits>

void TestMesh::addBox(const Vector3& low, const Vector3& high, int matl)
{
    addElement(1, cornersOf(low, high), matl);
}

void TestMesh::addPoint(const Vector3& position, int matl)
{
    nodes.push_back(position);
    matlIds.push_back(matl);
}

void TestMesh::loadInto(ModelClass& model, ModelKind kind)
{
    itsRows.clear();
    for (const std::vector<int>& row : connectivity)
    {
        itsRows.push_back(row.data());
    }
    model.init(kind, nbElts(), nbNodes(), reinterpret_cast<const float(*)[3]>(nodes.data()), itsRows.data(),
               types.data(), static_cast<int>(matlStates.size()), matlIds.data(), matlStates.data());
}

void TestMesh::loadCloudInto(ModelClass& model)
{
    model.init(ModelKind::pointCloud, 0, nbNodes(), reinterpret_cast<const float(*)[3]>(nodes.data()), nullptr, nullptr,
               static_cast<int>(matlStates.size()), matlIds.data(), matlStates.data());
}

std::vector<Box> TestMesh::boxes(float margin) const
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    std::vector<Box> result;
    for (const std::vector<int>& row : connectivity)
    {
        Box box{{infinity, infinity, infinity}, {-infinity, -infinity, -infinity}};
        for (const int node : row)
        {
            for (std::size_t axis = 0; axis < 3; ++axis)
            {
                const float coord = nodes[static_cast<std::size_t>(node)][axis];
                box.low[axis] = std::min(box.low[axis], coord - margin);
                box.high[axis] = std::max(box.high[axis], coord + margin);
            }
        }
        result.push_back(box);
    }
    return result;
}

void fillBoxTable(BoxTable& table, const std::vector<Box>& boxes)
{
    if (table.allocate(static_cast<std::int64_t>(boxes.size()), 2, 3) != TableBlock::none)
    {
        throw std::bad_alloc();
    }
    float* values = table.values();
    for (const Box& box : boxes)
    {
        values = std::copy(box.low.begin(), box.low.end(), values);
        values = std::copy(box.high.begin(), box.high.end(), values);
    }
}

namespace
{
FieldStruct emptyRecord(int location, int nbComponents, const char* name)
{
    FieldStruct record{};
    std::snprintf(record.name, sizeof record.name, "%s", name);
    record.location = location;
    record.nbComponents = nbComponents;
    return record;
}
} // namespace

FieldStruct fieldRecord(int location, int nbComponents, std::vector<float>& values, const char* name)
{
    FieldStruct record = emptyRecord(location, nbComponents, name);
    record.precision = 1;
    record.valuesFloat = values.data();
    return record;
}

FieldStruct fieldRecord(int location, int nbComponents, std::vector<double>& values, const char* name)
{
    FieldStruct record = emptyRecord(location, nbComponents, name);
    record.precision = 2;
    record.valuesDouble = values.data();
    return record;
}

void loadFields(FieldsSetClass& set, std::vector<FieldStruct> records)
{
    set.init({static_cast<int>(records.size()), records.data()});
}

std::string takeText(char* text)
{
    if (text == nullptr)
    {
        return "(null)";
    }
    std::string copy(text);
    releaseString(text);
    return copy;
}
