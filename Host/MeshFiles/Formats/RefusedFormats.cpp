// Formats that other programs make into one that is read here.
#include "FormatList.h"

#include <array>

namespace veltrane
{
namespace
{

constexpr std::array<std::string_view, 3> xdmfEndings{".xdmf", ".xmf", ".xdmf3"};
constexpr std::array<std::string_view, 2> universalEndings{".unv", ".ideas"};

} // namespace

constinit const FileFormat formats::xdmf{
    .name = "XDMF",
    .endings = xdmfEndings,
    .refusal = "XDMF files are not read; ParaView saves them as .vtu, and so does 'meshio convert IN.xdmf OUT.vtu'"};

constinit const FileFormat formats::universal{
    .name = "I-DEAS universal file",
    .endings = universalEndings,
    .refusal = "universal files are not read; 'gmsh IN.unv -save -format msh41 -o OUT.msh' converts their meshes"};

} // namespace veltrane
