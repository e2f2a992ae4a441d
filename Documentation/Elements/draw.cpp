// Draws the reference elements with their node and Gauss-point numbers, from the library's own shape functions and
// Gauss points.
#include "Drawing.h"
#include "Elements/ElementKinds.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{

using Place = std::array<double, 3>;

constexpr int width = 720;
constexpr int height = 560;
constexpr veltrane::Colour ink{0.1, 0.1, 0.1};
constexpr veltrane::Colour orange{0.85, 0.35, 0.0};
constexpr veltrane::Colour grey{0.6, 0.6, 0.6};

struct Edge
{
    std::size_t from;
    std::size_t to;
    bool isHidden = false;
};

/// What the library keeps in its shape functions and what is not in it.
struct Shape
{
    std::string name;
    std::vector<Place> nodes;
    std::vector<Edge> edges;
};

using Pixel = std::array<double, 2>;

/// Parallel projection: xi to the front, eta to the right, zeta upwards.
Pixel project(const Place& place)
{
    return {-0.58 * place[0] + 0.95 * place[1], 0.36 * place[0] + 0.16 * place[1] - place[2]};
}

/// From reference coordinates to pixels, the nodes filling the picture.
class View
{
public:
    explicit View(const std::vector<Place>& nodes)
    {
        Pixel min = project(nodes.front());
        Pixel max = min;
        for (const Place& node : nodes)
        {
            const Pixel pixel = project(node);
            for (std::size_t i = 0; i < 2; ++i)
            {
                min[i] = std::min(min[i], pixel[i]);
                max[i] = std::max(max[i], pixel[i]);
            }
        }
        scale_ = std::min((width - 300) / (max[0] - min[0]), (height - 150) / (max[1] - min[1]));
        origin_ = {width / 2.0 - 40 - scale_ * (min[0] + max[0]) / 2,
                   height / 2.0 + 20 - scale_ * (min[1] + max[1]) / 2};
        middle_ = {width / 2.0 - 40, height / 2.0 + 20};
    }

    Pixel operator()(const Place& place) const
    {
        const Pixel pixel = project(place);
        return {origin_[0] + scale_ * pixel[0], origin_[1] + scale_ * pixel[1]};
    }

    /// So far from a place, away from the middle of the picture.
    Pixel beside(const Pixel& place, double distance) const
    {
        const double x = place[0] - middle_[0];
        const double y = place[1] - middle_[1];
        const double length = std::max(1.0, std::hypot(x, y));
        return {place[0] + distance * x / length, place[1] + distance * y / length};
    }

private:
    double scale_;
    Pixel origin_{};
    Pixel middle_{};
};

/// Node i is where the i-th shape function is one and the others are zero.
template <class Kind> void checkNodes(const Shape& shape)
{
    for (std::size_t i = 0; i < shape.nodes.size(); ++i)
    {
        const Place& node = shape.nodes[i];
        const Vector3 place{static_cast<float>(node[0]), static_cast<float>(node[1]), static_cast<float>(node[2])};
        NodeValues<Kind::nbNodes> values{};
        Kind::shapeFunctions(place, values);
        for (std::size_t j = 0; j < values.size(); ++j)
        {
            if (std::abs(values[j] - (i == j ? 1.0F : 0.0F)) > 1e-6F)
            {
                throw std::logic_error("the " + shape.name + " has its node " + std::to_string(i + 1) + " elsewhere");
            }
        }
    }
}

void drawLine(veltrane::Drawing& drawing, const Pixel& from, const Pixel& to, double lineWidth,
              const veltrane::Colour& colour)
{
    drawing.line(from[0], from[1], to[0], to[1], lineWidth, colour);
}

/// In the corner, since they would hide in the element.
void drawAxes(veltrane::Drawing& drawing)
{
    constexpr double length = 55;
    constexpr Pixel origin{width - 90.0, 110.0};
    const std::array<std::string, 3> names{"ξ", "η", "ζ"};
    for (std::size_t i = 0; i < 3; ++i)
    {
        Place direction{};
        direction[i] = length;
        const Pixel end = project(direction);
        drawLine(drawing, origin, {origin[0] + end[0], origin[1] + end[1]}, 1.6, grey);
        drawing.text(origin[0] + 1.25 * end[0], origin[1] + 1.25 * end[1] + 6, names[i], 20, veltrane::Align::centre);
    }
}

void drawEdges(veltrane::Drawing& drawing, const View& view, const Shape& shape)
{
    for (const Edge& edge : shape.edges)
    {
        drawLine(drawing, view(shape.nodes[edge.from]), view(shape.nodes[edge.to]), edge.isHidden ? 1 : 2.2,
                 edge.isHidden ? grey : ink);
    }
}

void drawNodes(veltrane::Drawing& drawing, const View& view, const Shape& shape)
{
    for (std::size_t i = 0; i < shape.nodes.size(); ++i)
    {
        const auto place = view(shape.nodes[i]);
        drawLine(drawing, place, place, 11, ink); // a dot
        const Pixel label = view.beside(place, 22);
        drawing.text(label[0], label[1] + 8, std::to_string(i + 1), 21, veltrane::Align::centre, true);
    }
}

/// Where the shape functions put the Gauss points among the nodes.
template <class Kind> std::vector<Place> gaussPointsOf(const Shape& shape)
{
    std::vector<Place> places;
    for (std::size_t point = 0; point < Kind::nbGaussPoints; ++point)
    {
        NodeValues<Kind::nbNodes> values{};
        Kind::shapeFunctionsAtGaussPoint(point, values);
        Place place{};
        for (std::size_t node = 0; node < values.size(); ++node)
        {
            for (std::size_t i = 0; i < 3; ++i)
            {
                place[i] += double{values[node]} * shape.nodes[node][i];
            }
        }
        places.push_back(place);
    }
    return places;
}

void drawGaussPoints(veltrane::Drawing& drawing, const View& view, const std::vector<Place>& points)
{
    constexpr double arm = 6;
    for (std::size_t i = 0; i < points.size(); ++i)
    {
        const auto [x, y] = view(points[i]);
        drawing.line(x - arm, y - arm, x + arm, y + arm, 2.6, orange);
        drawing.line(x - arm, y + arm, x + arm, y - arm, 2.6, orange);
        drawing.text(x + 9, y + 16, std::to_string(i + 1), 17, veltrane::Align::left, false, orange);
    }
}

template <class Kind> void draw(const Shape& shape, const std::filesystem::path& folder)
{
    checkNodes<Kind>(shape);
    const View view(shape.nodes);
    veltrane::Drawing drawing(width, height);
    drawing.text(20, 36, shape.name, 22, veltrane::Align::left, true);
    drawAxes(drawing);
    drawEdges(drawing, view, shape);
    drawGaussPoints(drawing, view, gaussPointsOf<Kind>(shape));
    drawNodes(drawing, view, shape);
    std::string fileName = shape.name;
    std::ranges::replace(fileName, ' ', '_');
    drawing.write(folder / (fileName + ".png"));
}

void drawAll(const std::filesystem::path& folder)
{
    constexpr bool hidden = true;
    const Shape hexahedron{
        .name = "hexahedron",
        .nodes = {{-1, -1, -1}, {1, -1, -1}, {1, 1, -1}, {-1, 1, -1}, {-1, -1, 1}, {1, -1, 1}, {1, 1, 1}, {-1, 1, 1}},
        .edges = {{0, 1, hidden},
                  {0, 3, hidden},
                  {0, 4, hidden},
                  {1, 2},
                  {2, 3},
                  {4, 5},
                  {5, 6},
                  {6, 7},
                  {7, 4},
                  {1, 5},
                  {2, 6},
                  {3, 7}}};
    const Shape tetrahedron{.name = "tetrahedron",
                            .nodes = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}},
                            .edges = {{0, 1, hidden}, {0, 2, hidden}, {0, 3, hidden}, {1, 2}, {1, 3}, {2, 3}}};
    const Shape wedge{
        .name = "wedge",
        .nodes = {{0, 0, -1}, {1, 0, -1}, {0, 1, -1}, {0, 0, 1}, {1, 0, 1}, {0, 1, 1}},
        .edges = {{0, 1, hidden}, {0, 2, hidden}, {0, 3, hidden}, {1, 2}, {3, 4}, {4, 5}, {5, 3}, {1, 4}, {2, 5}}};
    const Shape pyramid{
        .name = "pyramid",
        .nodes = {{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}, {0, 0, 1}},
        .edges = {{0, 1, hidden}, {0, 3, hidden}, {0, 4, hidden}, {1, 2}, {2, 3}, {1, 4}, {2, 4}, {3, 4}}};
    const Shape quadraticTetrahedron{.name = "quadratic tetrahedron",
                                     .nodes = {{1, 0, 0},
                                               {0, 1, 0},
                                               {0, 0, 0},
                                               {0, 0, 1},
                                               {0.5, 0.5, 0},
                                               {0, 0.5, 0},
                                               {0.5, 0, 0},
                                               {0.5, 0, 0.5},
                                               {0, 0.5, 0.5},
                                               {0, 0, 0.5}},
                                     .edges = {{2, 0, hidden}, {2, 1, hidden}, {2, 3, hidden}, {0, 1}, {0, 3}, {1, 3}}};
    draw<LinearHexahedron>(hexahedron, folder);
    draw<LinearTetrahedron>(tetrahedron, folder);
    draw<LinearWedge>(wedge, folder);
    draw<LinearPyramid>(pyramid, folder);
    draw<QuadraticTetrahedron>(quadraticTetrahedron, folder);
}

} // namespace

int main(int argc, char** argv)
{
    try
    {
        drawAll(argc > 1 ? argv[1] : ".");
        return 0;
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "draw_elements: %s\n", error.what());
        return 1;
    }
}
