// Kinds that the C++ interface takes are no type codes: the exported functions refuse them.
#include "Scenes.h"

namespace
{
class OtherKinds : public Host
{
protected:
    static void expectRefused(const Outcome& outcome, const std::string& message)
    {
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.message, message);
        EXPECT_FALSE(outcome.hasLog());
    }
};

TEST_F(OtherKinds, areRefusedAsASource)
{
    for (const int type : element::curvedVolumes)
    {
        const Mesh source = box(type, {0, 0, 0}, {4, 4, 4}, {2, 2, 2});
        expectRefused(run(transferOf(linear, source, unitHexahedron({1, 1, 1}))),
                      "Error: Interpolation from a mesh containing elements different from linear or quadratic "
                      "tetrahedrons, linear hexahedrons, linear wedges and linear pyramids is not possible.");
    }
}

TEST_F(OtherKinds, areRefusedAsATarget)
{
    for (const int type : element::curvedVolumes)
    {
        expectRefused(run(transferOf(linear, roomySource(), box(type, {1, 1, 1}, {3, 3, 3}))),
                      "Error: Interpolation on a mesh containing elements different from\n"
                      "linear or quadratic tetrahedrons, linear hexahedrons, linear wedges, linear pyramids,\n"
                      "linear triangular elements, linear quadrilateral element\n"
                      "is not possible.");
    }
}
} // namespace
