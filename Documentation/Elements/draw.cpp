// Draws the reference elements with their node and Gauss-point numbers, from what the library itself
// knows about them.
#include "Drawing.h"
#include "Elements/ElementKinds.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <utility>
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
    bool isHidden;
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

/// Whether one looks at the inner side of a face.
bool isBehind(const ElementFace& face, const std::vector<Place>& nodes)
{
    const Pixel a = project(nodes[face.nodes[0]]);
    const Pixel b = project(nodes[face.nodes[1]]);
    const Pixel c = project(nodes[face.nodes[2]]);
    // Pixels count downwards, so that what runs counter-clockwise in space has a negative area here.
    return (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]) > 0;
}

/// The edges are the sides of the faces; those of faces behind are hidden unless another face shows them.
template <class Kind> std::vector<Edge> edgesOf(const std::vector<Place>& nodes)
{
    std::map<std::pair<std::size_t, std::size_t>, bool> isHidden;
    for (const ElementFace& face : Kind::faces)
    {
        for (std::size_t i = 0; i < face.nbCorners; ++i)
        {
            const auto ends = std::minmax(face.nodes[i], face.nodes[(i + 1) % face.nbCorners]);
            bool& edgeIsHidden = isHidden.try_emplace({ends.first, ends.second}, true).first->second;
            edgeIsHidden = edgeIsHidden && isBehind(face, nodes);
        }
    }
    std::vector<Edge> edges;
    for (const auto& [ends, edgeIsHidden] : isHidden)
    {
        edges.push_back({ends.first, ends.second, edgeIsHidden});
    }
    return edges;
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

/// The hidden ones first, so that the others cross them.
void drawEdges(veltrane::Drawing& drawing, const View& view, const std::vector<Place>& nodes, std::vector<Edge> edges)
{
    std::stable_partition(edges.begin(), edges.end(), std::mem_fn(&Edge::isHidden));
    for (const Edge& edge : edges)
    {
        drawLine(drawing, view(nodes[edge.from]), view(nodes[edge.to]), edge.isHidden ? 1 : 2.2,
                 edge.isHidden ? grey : ink);
    }
}

void drawNodes(veltrane::Drawing& drawing, const View& view, const std::vector<Place>& nodes)
{
    for (std::size_t i = 0; i < nodes.size(); ++i)
    {
        const auto place = view(nodes[i]);
        drawLine(drawing, place, place, 11, ink); // a dot
        const Pixel label = view.beside(place, 22);
        drawing.text(label[0], label[1] + 8, std::to_string(i + 1), 21, veltrane::Align::centre, true);
    }
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

template <class Kind> void draw(const std::filesystem::path& folder)
{
    std::vector<Place> nodes;
    for (const Vector3& node : Kind::nodes)
    {
        nodes.push_back({node[0], node[1], node[2]});
    }
    const View view(nodes);
    veltrane::Drawing drawing(veltrane::DrawingFormat::pixels, width, height);
    std::string name(Kind::name);
    drawing.text(20, 36, name, 22, veltrane::Align::left, true);
    drawAxes(drawing);
    drawEdges(drawing, view, nodes, edgesOf<Kind>(nodes));
    drawGaussPoints(drawing, view, {Kind::gaussRule.points.begin(), Kind::gaussRule.points.end()});
    drawNodes(drawing, view, nodes);
    std::ranges::replace(name, ' ', '_');
    drawing.write(folder / (name + ".png"));
}

void drawAll(const std::filesystem::path& folder)
{
    VolumeElementKinds::visitAll([&]<class Kind>(Kind) { draw<Kind>(folder); });
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
