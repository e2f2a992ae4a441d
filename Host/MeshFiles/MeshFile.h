/// Mesh files in any of the formats that can be read.
#ifndef VELTRANE_HOST_MESH_FILE_H
#define VELTRANE_HOST_MESH_FILE_H

#include "CellNames.h"
#include "Field.h"
#include "FieldArrays.h"
#include "FileErrors.h"
#include "FileFormat.h"
#include "GridElements.h"
#include "Mesh.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace veltrane
{

enum class ArrayPlace
{
    points,
    cells,
    file ///< neither points nor cells; the place of Gauss-point fields
};

/// Whole numbers at the nodes or at the elements of a mesh, to be written as point or cell data.
struct IntegerArray
{
    std::string name;
    ArrayPlace place;
    int componentCount;
    std::vector<int> values; ///< node by node or element by element, component by component
};

/// A mesh file in memory: the mesh, the fields, and everything else that the file holds.
class MeshFile
{
public:
    /// Reads the file. Throws NoInput or BadFile, naming the file and what is wrong.
    MeshFile(const std::filesystem::path& path, const MeshReading& reading);
    MeshFile(const std::filesystem::path& path, MeshRole role) : MeshFile(path, MeshReading{.role = role}) {}
    ~MeshFile();
    MeshFile(MeshFile&&) noexcept;
    MeshFile& operator=(MeshFile&&) noexcept;

    const std::filesystem::path& path() const;
    Mesh& mesh();
    const Mesh& mesh() const;

    /// The cell-data array that numbers the materials. Without one all is one material.
    const std::optional<std::string>& materialArray() const;

    /// Lets another cell-data array number the materials. Throws BadFile.
    void useMaterialArray(const std::string& name);

    /// Whether each material has a name of its own in the file, see GroupNames.h.
    bool canNameMaterials() const;

    /// Lets the materials have their names instead of their numbers.
    ///
    /// \pre canNameMaterials()
    void nameMaterials();
    bool hasNamedMaterials() const;

    /// Makes the materials what they were when the file had been read, with 0 for state codes.
    void resetMaterials();

    /// What the mesh consists of, kind after kind, and the cells of which only the nodes count. A mesh without cells
    /// consists of points.
    std::vector<std::pair<CellName, long long>> elementCounts() const;

    /// Cells of the file that are not part of the mesh.
    int leftOutCellCount() const;

    /// Those among them that cannot be used.
    const CellCounts& skippedCells() const;

    /// The number of an element's cell in the file, from 0.
    int cellOf(int element) const;

    /// What the file calls a node: its own number, or else one counted from 1.
    std::string nodeLabel(int node) const;

    const std::vector<PointArray>& pointArrays() const;

    /// Cell data, which is not transferred.
    std::vector<std::string> floatingPointCellArrays() const;

    /// Whether the file has an array of this name there, of whatever values.
    bool hasArray(ArrayPlace place, const std::string& name) const;

    /// Gauss-point fields.
    const std::vector<std::string>& gaussFields() const;
    bool hasGaussField(const std::string& name) const;

    /// What of the file has no place in a mesh with fields, see FileData.
    const LeftOut& leftOut() const;

    /// A floating-point point-data array, or else a Gauss-point field, as a field, under a new name if one is given.
    /// Throws BadFile if there is none of this name or it is none.
    Field field(const std::string& name, const std::string& newName = "") const;

    /// Lets go of all arrays, when no more fields are to be had and the file is not to be written.
    void forgetArrays();

    /// Writes the file's data set, with all its arrays and these fields as further point data or Gauss-point fields,
    /// and these arrays, one of the same name being replaced, in the format that the path's ending stands for. Cells
    /// that are not part of the mesh get 0. Throws CannotWrite with nothing but the reason. Tells what of the fields
    /// the format cannot hold.
    LeftOut writeWith(std::span<const Field> fields, std::span<const IntegerArray> arrays,
                      const std::filesystem::path& path, const FileWriting& writing = {}) const;

private:
    struct Contents;
    std::unique_ptr<Contents> contents_;
};

} // namespace veltrane

#endif
