#include "GridMaterials.h"

#include "DataSetReader.h"
#include "Text.h"

#include <vtkDataArray.h>
#include <vtkDataSetAttributes.h>

#include <array>
#include <cmath>
#include <map>
#include <string_view>

namespace veltrane
{
namespace
{

constexpr std::array materialArrayNames{
    "material",      "Material",      "MaterialIds", "MaterialId",   "materialId", "MaterialID",
    "material_id",   "MatId",         "part",        "Part",         "PartId",     "partId",
    "gmsh:physical", "CellEntityIds", "PhysicalIds", "PhysicalId",   "physical",   "PhysicalGroup",
    "medit:ref",     "cell_tags",     "attribute",   "subdomain_id", "BlockId",    "ElementBlockIds",
    "ObjectId"};

long long materialNumber(vtkDataArray& array, vtkIdType item, std::string_view itemName,
                         const std::filesystem::path& path)
{
    constexpr double largest = 9007199254740992.0; // beyond it doubles skip whole numbers
    const double number = array.GetComponent(item, 0);
    if (!(std::abs(number) <= largest) || number != std::floor(number))
    {
        throw BadFile(text(quoted(path), ": ", itemName, " array '", array.GetName(), "' numbers the material of ",
                           itemName, " ", item, " with ", number, ", which is not a whole number"));
    }
    return static_cast<long long>(number);
}

} // namespace

std::span<const char* const> usualMaterialArrays()
{
    return materialArrayNames;
}

vtkDataArray* findMaterialArray(vtkDataSetAttributes& data, const std::optional<std::string>& name,
                                const std::filesystem::path& path)
{
    if (name)
    {
        vtkDataArray* array = data.GetArray(name->c_str());
        if (array == nullptr || array->GetNumberOfComponents() != 1)
        {
            throw BadFile(text(quoted(path), " has no array '", *name, "' of one number each to tell the materials"));
        }
        return array;
    }
    for (const char* usualName : usualMaterialArrays())
    {
        vtkDataArray* array = data.GetArray(usualName);
        if (array != nullptr && array->GetNumberOfComponents() == 1)
        {
            return array;
        }
    }
    return nullptr;
}

MaterialNumbers readMaterials(vtkDataArray* array, const ItemNumbers& items, const std::string& itemName,
                              const std::filesystem::path& path)
{
    MaterialNumbers result;
    if (array == nullptr)
    {
        result.materials.push_back({"all", 0});
        result.materialPerItem.assign(items.size(), 0);
        return result;
    }
    std::map<long long, int> indices; // of the numbers in the file, at first in the order of their first items
    result.materialPerItem.reserve(items.size());
    auto last = indices.end();
    for (std::size_t i = 0; i < items.size(); ++i)
    {
        const long long number = materialNumber(*array, items[i], itemName, path);
        if (last == indices.end() || last->first != number) // neighbours are often alike
        {
            last = indices.try_emplace(number, static_cast<int>(indices.size())).first;
        }
        result.materialPerItem.push_back(last->second);
    }
    std::vector<int> inOrder(indices.size());
    for (const auto& [number, first] : indices)
    {
        inOrder[static_cast<std::size_t>(first)] = static_cast<int>(result.materials.size());
        result.materials.push_back({std::to_string(number), 0});
    }
    for (int& material : result.materialPerItem)
    {
        material = inOrder[static_cast<std::size_t>(material)];
    }
    return result;
}

} // namespace veltrane
