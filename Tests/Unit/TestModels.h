/// Small models for the tests, which own the arrays that the library's classes borrow.
#ifndef TEST_MODELS_H
#define TEST_MODELS_H

#include "BoundingBox.h"
#include "FieldsSetClass.h"
#include "ModelClass.h"

#include <array>
#include <string>
#include <vector>

/// A mesh, or the points of a cloud with a material each. It must not change while a model uses it.
struct TestMesh
{
    std::vector<std::array<float, 3>> nodes;
    std::vector<std::vector<int>> connectivity;
    std::vector<int> types;
    std::vector<int> matlIds;
    std::vector<int> matlStates{1};

    int nbNodes() const { return static_cast<int>(nodes.size()); }
    int nbElts() const { return static_cast<int>(types.size()); }

    void addElement(int type, const std::vector<int>& nodeNumbers, int matl = 0);
    /// An element with nodes of its own.
    void addElement(int type, const std::vector<Vector3>& positions, int matl = 0);
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

/// Where the nodes of a type with shape functions lie in its reference domain.
std::vector<Vector3> referenceNodes(int typeCode);

/// The type codes with shape functions.
inline const std::vector<int> typesWithShapeFunctions{1, 2, 3, 10, 12};

/// The corners of a box in the order of a hexahedron's nodes.
std::vector<Vector3> cornersOf(const Vector3& low, const Vector3& high);

void fillBoxTable(BoxTable& table, const std::vector<Box>& boxes);

/// Records of fields, whose values stay in the vectors.
FieldStruct fieldRecord(int location, int nbComponents, std::vector<float>& values, const char* name = "field");
FieldStruct fieldRecord(int location, int nbComponents, std::vector<double>& values, const char* name = "field");

void loadFields(FieldsSetClass& set, std::vector<FieldStruct> records);

/// A text of the library, which is given back; "(null)" if there is none.
std::string takeText(char* text);

#endif
