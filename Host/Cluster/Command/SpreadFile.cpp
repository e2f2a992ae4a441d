#include "SpreadFile.h"

#include "Agreement.h"
#include "Bisection.h"

#include "FileFormat.h"
#include "FormatList.h"
#include "ReadingGuard.h"
#include "Text.h"

#include <vtkNew.h>
#include <vtkXMLPUnstructuredGridReader.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <numeric>
#include <sstream>
#include <utility>

namespace veltrane
{
namespace
{

int pieceCountOf(const std::filesystem::path& path)
{
    if (formatOf(path) != &formats::parallelUnstructuredGrid || !std::filesystem::is_regular_file(path))
    {
        return 1;
    }
    vtkNew<vtkXMLPUnstructuredGridReader> reader;
    reader->SetFileName(path.c_str());
    guarded(path, [&] { reader->UpdateInformation(); });
    return std::max(1, reader->GetNumberOfPieces());
}

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
    {
        lines.push_back(line);
    }
    return lines;
}

std::string linesFrom(const std::vector<Material>& materials)
{
    std::string lines;
    for (const Material& material : materials)
    {
        lines += material.name + "\n";
    }
    return lines;
}

/// Numbers by their size, then names.
bool comesBefore(const std::string& first, const std::string& second)
{
    const auto numberIn = [](const std::string& name)
    {
        long long number = 0;
        const auto [end, failure] = std::from_chars(name.data(), name.data() + name.size(), number);
        const bool isNumber = failure == std::errc() && end == name.data() + name.size();
        return std::pair(!isNumber, number);
    };
    return std::pair(numberIn(first), first) < std::pair(numberIn(second), second);
}

/// What all ranks must know of a field.
struct Signature
{
    int location = 0;
    int componentCount = 0;
    int isSingle = 0;

    bool operator==(const Signature&) const = default;
};

Signature signatureOf(const Field& field)
{
    return {static_cast<int>(field.location()), field.componentCount(), field.isSinglePrecision() ? 1 : 0};
}

Field emptyField(const Signature& signature, const std::string& name)
{
    FieldValues none = signature.isSingle != 0 ? FieldValues(std::vector<float>()) : FieldValues(std::vector<double>());
    return Field(name, static_cast<Location>(signature.location), signature.componentCount, std::move(none));
}

/// The rows of the Gauss points of the elements in each list.
Lists gaussPointRows(const Mesh& mesh, const Lists& elements)
{
    std::vector<int> first(1, 0);
    for (int element = 0; element < mesh.elementCount(); ++element)
    {
        first.push_back(first.back() + mesh.gaussPointCountOf(element));
    }
    Lists rows(elements.size());
    for (std::size_t rank = 0; rank < elements.size(); ++rank)
    {
        for (const int element : elements[rank])
        {
            const auto i = static_cast<std::size_t>(element);
            for (int row = first[i]; row < first[i + 1]; ++row)
            {
                rows[rank].push_back(row);
            }
        }
    }
    return rows;
}

} // namespace

SpreadFile::SpreadFile(const Communicator& ranks, const std::filesystem::path& path, MeshReading reading)
    : ranks_(ranks), path_(path), gaussPointRule_(reading.gaussPointRule)
{
    int pieceCount = 1;
    agree(ranks, [&] { pieceCount = ranks.rank() == 0 ? pieceCountOf(path) : 1; });
    pieceCount = ranks.told(pieceCount, 0);
    isInPieces_ = pieceCount > 1;
    reading.pieceCount = std::min(ranks.size(), pieceCount);
    reading.piece = ranks.rank();
    agree(ranks,
          [&]
          {
              if (ranks.rank() < reading.pieceCount)
              {
                  file_.emplace(path, reading);
              }
          });
    const std::vector<int> haveFiles = ranks.gathered(file_ ? 1 : 0);
    speaker_ = static_cast<int>(std::ranges::find(haveFiles, 1) - haveFiles.begin());
    std::string array;
    if (file_ && file_->materialArray())
    {
        array = *file_->materialArray();
    }
    materialArray_ = ranks.told(array, speaker_);
    hasMaterials_ = !materialArray_.empty();
    agree(ranks,
          [&]
          {
              if (file_ && array != materialArray_)
              {
                  throw BadFile(text("the pieces of '", path.string(),
                                     "' do not have the same cell-data array of "
                                     "materials: '",
                                     materialArray_, "' and '", array, "'"));
              }
          });
    unifyMaterials();
}

void SpreadFile::useMaterials(const std::string& array)
{
    agree(ranks_,
          [&]
          {
              if (file_)
              {
                  file_->useMaterialArray(array);
              }
          });
    materialArray_ = array;
    hasMaterials_ = true;
    unifyMaterials();
}

bool SpreadFile::hasCellArray(const std::string& name)
{
    return !ranks_.isAnywhere(file_ && !file_->hasArray(ArrayPlace::cells, name));
}

/// The materials of all ranks, in the order in which those of a whole file are.
void SpreadFile::unifyMaterials()
{
    std::vector<std::string> names;
    const std::string own = file_ ? linesFrom(file_->mesh().materials()) : std::string();
    for (int rank = 0; rank < ranks_.size(); ++rank)
    {
        for (const std::string& name : linesOf(ranks_.told(own, rank)))
        {
            names.push_back(name);
        }
    }
    if (isInPieces_)
    {
        std::ranges::sort(names, comesBefore);
    }
    names.erase(std::unique(names.begin(), names.end()), names.end());
    agree(ranks_,
          [&]
          {
              std::vector<Material> materials;
              for (const std::string& name : names)
              {
                  materials.push_back({name, 0});
              }
              if (!file_)
              {
                  empty_.emplace(MeshData{.offsets = {0}, .materials = std::move(materials)}, Extent::part);
                  return;
              }
              Mesh& mesh = file_->mesh();
              std::vector<int> places;
              for (const Material& material : mesh.materials())
              {
                  places.push_back(static_cast<int>(std::ranges::find(names, material.name) - names.begin()));
              }
              std::vector<int> perElement = mesh.materialPerElement();
              for (int& material : perElement)
              {
                  material = places[static_cast<std::size_t>(material)];
              }
              mesh.setMaterials(std::move(materials), std::move(perElement));
          });
}

void SpreadFile::deal()
{
    if (isInPieces_)
    {
        return;
    }
    const Mesh& whole = pieces();
    const ElementOrder order = elementOrder(ranks_, whole.elementCount(), {}, "file");
    Lists elements(static_cast<std::size_t>(ranks_.size()));
    Lists nodes(elements.size());
    Lists gaussPoints(elements.size());
    std::vector<std::int64_t> numbers;
    agree(ranks_,
          [&]
          {
              if (!file_)
              {
                  return;
              }
              elements = bisected(whole, ranks_.size());
              std::vector<char> isDealt(static_cast<std::size_t>(whole.nodeCount()), 0);
              for (std::size_t rank = elements.size(); rank-- > 0;)
              {
                  nodes[rank] = nodesOfElements(whole, elements[rank]);
                  for (const int node : nodes[rank])
                  {
                      isDealt[static_cast<std::size_t>(node)] = 1;
                  }
              }
              for (int node = 0; node < whole.nodeCount(); ++node)
              {
                  if (isDealt[static_cast<std::size_t>(node)] == 0)
                  {
                      nodes[0].push_back(node); // of no element
                  }
              }
              gaussPoints = gaussPointRows(whole, elements);
              numbers.resize(static_cast<std::size_t>(whole.nodeCount()));
              std::iota(numbers.begin(), numbers.end(), 0);
          });
    gaussPoints_ = Routes(ranks_, std::move(gaussPoints));
    dealt_ = moveElements(ranks_, {whole, order}, elements, std::move(nodes),
                          ranks_.isAnywhere(!whole.exactCoordinates().empty()));
    dealt_.mesh->setGaussPointRule(gaussPointRule_);
    agree(ranks_, [&] { nodeNumbers_.resize(static_cast<std::size_t>(dealt_.nodes.exchange().takenCount())); });
    dealt_.nodes.carry(numbers.data(), 1, nodeNumbers_.data());
}

MeshPart SpreadFile::part()
{
    return isInPieces_ ? MeshPart{mesh()} : MeshPart{mesh(), dealt_.elementNumbers, nodeNumbers_};
}

Field SpreadFile::field(const std::string& name, const std::string& newName)
{
    std::optional<Field> own;
    agree(ranks_,
          [&]
          {
              if (file_)
              {
                  own.emplace(file_->field(name, newName));
              }
          });
    const Signature signature = ranks_.told(own ? signatureOf(*own) : Signature{}, speaker_);
    agree(ranks_,
          [&]
          {
              if (own && signatureOf(*own) != signature)
              {
                  throw BadFile(text("the pieces of '", path_.string(), "' do not have the same array '", name,
                                     "': its type or its number of components differs"));
              }
              if (own && own->location() == Location::gaussPoints &&
                  own->locationCount() != file_->mesh().gaussPointCount())
              {
                  throw BadFile(text("'", path_.string(), "' has values of '", name, "' at ", own->locationCount(),
                                     " Gauss points, not ", file_->mesh().gaussPointCount(),
                                     "; --gauss-rule chooses between two rules"));
              }
          });
    if (!own)
    {
        own.emplace(emptyField(signature, newName));
    }
    if (isInPieces_)
    {
        return std::move(*own);
    }
    const Routes& ways = routes(own->location());
    const auto width = static_cast<std::size_t>(signature.componentCount);
    return std::visit(
        [&](const auto& values)
        {
            std::decay_t<decltype(values)> taken;
            agree(ranks_, [&] { taken.resize(static_cast<std::size_t>(ways.exchange().takenCount()) * width); });
            ways.carry(values.data(), width, taken.data());
            return Field(newName, own->location(), signature.componentCount, std::move(taken));
        },
        own->values());
}

template <class Value>
std::vector<Value> SpreadFile::collected(const std::vector<Value>& ofPart, Location location, std::size_t width) const
{
    std::vector<Value> whole;
    agree(ranks_,
          [&]
          {
              if (file_)
              {
                  const Mesh& mesh = file_->mesh();
                  const std::size_t count =
                      location == Location::nodes ? static_cast<std::size_t>(mesh.nodeCount()) : mesh.gaussPointCount();
                  whole.resize(count * width);
              }
          });
    routes(location).carryBack(ofPart.data(), width, whole.data());
    return whole;
}

template std::vector<int> SpreadFile::collected(const std::vector<int>&, Location, std::size_t) const;
template std::vector<float> SpreadFile::collected(const std::vector<float>&, Location, std::size_t) const;
template std::vector<double> SpreadFile::collected(const std::vector<double>&, Location, std::size_t) const;

} // namespace veltrane
