/// Small models for the tests, which own the arrays that the library's classes borrow.
#ifndef TEST_MODELS_H
#define TEST_MODELS_H

#include "FieldsSetClass.h"
#include "Meshes.h"
#include "ModelClass.h"
#include "Search/ElementBoxes.h"

#include <array>
#include <string>
#include <utility>
#include <vector>

using meshes::cornersOf;
using meshes::referenceNodes;

/// A mesh, or the points of a cloud, for models to borrow. It must not change while a model uses it.
struct TestMesh : meshes::Mesh
{
    TestMesh() = default;
    explicit TestMesh(meshes::Mesh mesh) : Mesh(std::move(mesh)) {}

    /// A hexahedron with nodes of its own.
    void addBox(const Vector3& low, const Vector3& high, int matl = 0);
    void addPoint(const Vector3& position, int matl = 0);

    void loadInto(ModelClass& model, ModelKind kind = ModelKind::mesh);
    void loadCloudInto(ModelClass& model);

    /// The boxes of the elements, every face moved outward by `margin`.
    std::vector<Box> boxes(float margin = 0.0F) const;

private:
    std::vector<const int*> itsRows;
};

/// The type codes with shape functions.
inline constexpr std::array<int, 5> typesWithShapeFunctions = meshes::element::volumes;

void fillBoxTable(BoxTable& table, const std::vector<Box>& boxes);

/// Records of fields, whose values stay in the vectors.
FieldStruct fieldRecord(int location, int nbComponents, std::vector<float>& values, const char* name = "field");
FieldStruct fieldRecord(int location, int nbComponents, std::vector<double>& values, const char* name = "field");

void loadFields(FieldsSetClass& set, std::vector<FieldStruct> records);

/// A text of the library, which is given back; "(null)" if there is none.
std::string takeText(char* text);

#endif
