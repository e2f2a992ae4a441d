#include "Materials.h"

#include <map>

namespace veltrane
{

std::vector<std::string> matchMaterialsByName(Mesh& source, Mesh& target)
{
    std::map<std::string, int> codes;
    std::vector<int> sourceCodes;
    for (const Material& material : source.materials())
    {
        sourceCodes.push_back(codes.try_emplace(material.name, static_cast<int>(codes.size())).first->second);
    }
    std::vector<std::string> missing;
    std::vector<int> targetCodes;
    for (const Material& material : target.materials())
    {
        const auto [code, isNew] = codes.try_emplace(material.name, static_cast<int>(codes.size()));
        if (isNew)
        {
            missing.push_back(material.name);
        }
        targetCodes.push_back(code->second);
    }
    source.setStateCodes(sourceCodes);
    target.setStateCodes(targetCodes);
    return missing;
}

} // namespace veltrane
