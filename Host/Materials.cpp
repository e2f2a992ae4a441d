#include "Materials.h"

#include <algorithm>
#include <set>

namespace veltrane
{
namespace
{

/// Gives out a code of its own to each further name, beyond those that have a meaning of their own.
class CodeTable
{
public:
    explicit CodeTable(const StateCodes& given) : codes_(given)
    {
        constexpr int lastCodeWithMeaning = 8;
        last_ = lastCodeWithMeaning;
        for (const auto& [name, code] : given)
        {
            last_ = std::max(last_, code);
        }
    }

    std::vector<int> codesOf(const std::vector<Material>& materials)
    {
        std::vector<int> codes;
        for (const Material& material : materials)
        {
            const auto [entry, isNew] = codes_.try_emplace(material.name, last_ + 1);
            last_ += isNew ? 1 : 0;
            codes.push_back(entry->second);
        }
        return codes;
    }

private:
    StateCodes codes_;
    int last_;
};

template <typename Target> std::vector<std::string> match(Mesh& source, Target& target, const StateCodes& given)
{
    CodeTable table(given);
    const std::vector<int> sourceCodes = table.codesOf(source.materials());
    const std::vector<int> targetCodes = table.codesOf(target.materials());
    source.setStateCodes(sourceCodes);
    target.setStateCodes(targetCodes);

    const std::set<int> available(sourceCodes.begin(), sourceCodes.end());
    std::vector<std::string> missing;
    for (const Material& material : target.materials())
    {
        if (!available.contains(material.stateCode))
        {
            missing.push_back(material.name);
        }
    }
    return missing;
}

} // namespace

std::vector<std::string> matchMaterialsByName(Mesh& source, Mesh& target, const StateCodes& given)
{
    return match(source, target, given);
}

std::vector<std::string> matchMaterialsByName(Mesh& source, PointCloud& target, const StateCodes& given)
{
    return match(source, target, given);
}

} // namespace veltrane
