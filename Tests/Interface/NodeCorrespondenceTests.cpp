// Matching the nodes of a target with those of a source of the same geometry.
#include "Scenes.h"

#include <limits>
#include <numeric>

namespace
{
constexpr const char* termination = "Node to Node correspondence computation normal termination.";
constexpr const char* success = "Node to node correspondence computation terminated successfully.";
constexpr const char* cancelText = "Node to node correspondence computation cancelled.\n";
constexpr const char* noPartner = "At least one node of the target mesh does not correspond to one of the nodes of the "
                                  "source mesh. Please try with the Mapping option\n";
constexpr const char* extractFailed =
    "Extract operation is failed due to following reasons. Please try with the Mapping option:\n"
    " At least one node located in a COINC interface was not correctly detached.\n"
    " Volume type of at least one of the corresponding nodes of source and target is not matching.";
constexpr const char* sourceTypeText =
    "Error: node to node correspondence computation from a mesh containing elements different from linear or quadratic "
    "tetrahedrons, linear hexahedrons, linear wedges or linear pyramids is not possible yet.";
constexpr const char* targetTypeText = "Error: node to node correspondence computation to\n"
                                       " a mesh containing elements different from\n"
                                       " linear or quadratic tetrahedrons, linear hexahedrons, linear wedges or linear "
                                       "pyramids\n"
                                       " linear triangular elements, linear quadrilateral element\n"
                                       " is not possible.";

/// 1, 2, 3, ...
std::vector<int> identity(std::size_t count)
{
    std::vector<int> numbers(count);
    std::iota(numbers.begin(), numbers.end(), 1);
    return numbers;
}

class NodeCorrespondence : public Host
{
protected:
    static Matching between(Mesh source, Mesh target)
    {
        const std::vector<int> flags(target.matlStates.size(), 1);
        return {
            .kind = Correspondence::nodes, .source = std::move(source), .target = std::move(target), .flags = flags};
    }

    static Mesh twoHexahedra() { return box(element::hexahedron, {0, 0, 0}, {2, 1, 1}, {2, 1, 1}); }

    static void expectFailure(const Outcome& outcome, const std::string& message, const std::vector<int>& table)
    {
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.message, message);
        EXPECT_EQ(outcome.nodeTable, table);
        EXPECT_TRUE(outcome.files.empty());
    }
};

TEST_F(NodeCorrespondence, ofAnExactCopyIsTheIdentity)
{
    for (const int type : element::volumes)
    {
        const Mesh mesh = distorted(box(type, {0, 0, 0}, {3, 3, 3}, {3, 3, 3}), {0, 0, 0}, {3, 3, 3}, 0.1F);
        const Outcome outcome = run(between(mesh, mesh));
        EXPECT_EQ(outcome.code, 0) << "type " << type;
        EXPECT_EQ(outcome.message, termination);
        EXPECT_EQ(outcome.nodeTable, identity(mesh.nodes.size()));
    }
}

TEST_F(NodeCorrespondence, followsTheNumberingOfTheSource)
{
    // The target is the second element of the source, with its nodes numbered by itself.
    const Mesh target = unitHexahedron({1, 0, 0});
    const Outcome outcome = run(between(twoHexahedra(), target));
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.nodeTable, (std::vector<int>{2, 3, 5, 6, 8, 9, 11, 12}));
}

TEST_F(NodeCorrespondence, reportsItsProgress)
{
    const Outcome outcome = run(between(twoHexahedra(), unitHexahedron({1, 0, 0})));
    const std::string title = "Node to node correspondence computation";
    EXPECT_EQ(outcome.transcript,
              (std::vector<Report>{{0, title, "Pretreatment", 1},
                                   {5, title, "Computation", 1},
                                   {12, title, "Computation", 1},
                                   {25, title, "Computation", 1},
                                   {37, title, "Computation", 1},
                                   {50, title, "Computation", 1},
                                   {62, title, "Computation", 1},
                                   {75, title, "Computation", 1},
                                   {87, title, "Computation", 1},
                                   {100, title, "Computation", 1},
                                   {100, title, "Node to node correspondence computation terminated successfully.", 1},
                                   {0, title, "Mapping library exit.", 0}}));
}

TEST_F(NodeCorrespondence, reportsAboutOncePerPercent)
{
    const Mesh mesh = box(element::hexahedron, {0, 0, 0}, {4, 4, 9}, {4, 4, 9});
    ASSERT_EQ(mesh.nbNodes(), 250);
    EXPECT_EQ(run(between(mesh, mesh)).transcript, successfulTranscript(nodeTitle, success, 250));
    // Of two materials only one counts.
    Matching matching = between(twoHexahedra(), withMaterials(twoHexahedra(), {0, 1}, {1, 1}));
    matching.flags = {0, 1};
    EXPECT_EQ(run(matching).transcript, successfulTranscript(nodeTitle, success, 4));
}

TEST_F(NodeCorrespondence, withoutACallbackGivesTheSame)
{
    const Matching matching = between(twoHexahedra(), twoHexahedra());
    const Outcome unheard = run(matching, {.withCallback = false});
    EXPECT_EQ(unheard.code, 0);
    EXPECT_EQ(unheard.message, termination);
    EXPECT_EQ(unheard.nodeTable, identity(12));
    EXPECT_TRUE(unheard.transcript.empty());
}

TEST_F(NodeCorrespondence, leavesUnselectedNodesAlone)
{
    Matching matching = between(twoHexahedra(), withMaterials(twoHexahedra(), {0, 1}, {1, 1}));
    matching.flags = {0, 1};
    const int u = untouchedEntry;
    // The shared nodes 1, 4, 7 and 10 belong to the first element, which is not selected.
    EXPECT_EQ(run(matching).nodeTable, (std::vector<int>{u, u, 3, u, u, 6, u, u, 9, u, u, 12}));
    matching.flags = {1, 2};
    EXPECT_EQ(run(matching).nodeTable, (std::vector<int>{1, 2, u, 4, 5, u, 7, 8, u, 10, 11, u}));
}

TEST_F(NodeCorrespondence, leavesNodesInNoElementAlone)
{
    Mesh target = twoHexahedra();
    target.nodes.push_back({1, 0, 0});
    std::vector<int> expected = identity(12);
    expected.push_back(untouchedEntry);
    const Outcome outcome = run(between(twoHexahedra(), target));
    EXPECT_EQ(outcome.nodeTable, expected);
    EXPECT_EQ(outcome.transcript, successfulTranscript(nodeTitle, success, 12));
}

TEST_F(NodeCorrespondence, tellsCoincidentNodesApartByStateCode)
{
    // Two hexahedra that do not share the nodes of their common face.
    const Mesh detached = joined(unitHexahedron({0, 0, 0}), withStateCode(unitHexahedron({1, 0, 0}), 4));
    const Outcome outcome = run(between(detached, detached));
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.nodeTable, identity(16));
    // The other way round, the nodes of the face still go by code.
    const Mesh swapped = joined(withStateCode(unitHexahedron({1, 0, 0}), 4), unitHexahedron({0, 0, 0}));
    EXPECT_EQ(run(between(detached, swapped)).nodeTable,
              (std::vector<int>{9, 10, 11, 12, 13, 14, 15, 16, 1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST_F(NodeCorrespondence, amongCoincidentNodesOfOneCodeTheFirstWins)
{
    Mesh detached = joined(unitHexahedron({0, 0, 0}), unitHexahedron({1, 0, 0}));
    // The nodes of the second element on the common face, 8, 10, 12 and 14, are matched with those of the first.
    EXPECT_EQ(run(between(detached, detached)).nodeTable,
              (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8, 2, 10, 4, 12, 6, 14, 8, 16}));
    // The first within the tolerance wins, even when a later one is nearer.
    for (const std::size_t node : {1U, 3U, 5U, 7U})
    {
        detached.nodes[node][0] += 0.0005F;
    }
    EXPECT_EQ(run(between(detached, unitHexahedron({1, 0, 0}))).nodeTable,
              (std::vector<int>{2, 10, 4, 12, 6, 14, 8, 16}));
}

TEST_F(NodeCorrespondence, allowsForAThousandthOfTheMeanElementSize)
{
    // Boxes of unit hexahedra are 1.02 wide.
    struct Case
    {
        Point offset;
        bool matches;
    };
    for (const Case& oneCase : std::vector<Case>{{{0.0009F, 0, 0}, true},
                                                 {{0, -0.0009F, 0}, true},
                                                 {{0, 0, 0.0012F}, false},
                                                 {{0.0007F, -0.0007F, 0}, true},
                                                 {{0.0009F, 0.0009F, 0}, false},
                                                 {{0.0005F, 0.0005F, 0.0005F}, true},
                                                 {{0.0007F, 0.0007F, 0.0007F}, false}})
    {
        Mesh target = twoHexahedra();
        target.nodes[4] = target.nodes[4] + oneCase.offset;
        const Outcome outcome = run(between(twoHexahedra(), target));
        EXPECT_EQ(outcome.code, oneCase.matches ? 0 : 1);
        EXPECT_EQ(outcome.message, oneCase.matches ? termination : noPartner);
        EXPECT_EQ(outcome.nodeTable, oneCase.matches ? identity(12) : std::vector<int>(12, 0));
    }
}

TEST_F(NodeCorrespondence, findsASourceNodeOnTheOtherSideOfABucketsFace)
{
    // The target is 2 long and its grid begins at -0.02, so that buckets 1.02 wide meet at x = 1.
    for (const float shift : {0.0003F, -0.0003F})
    {
        Mesh source = twoHexahedra();
        Mesh target = twoHexahedra();
        for (const std::size_t node : {1U, 4U, 7U, 10U})
        {
            source.nodes[node][0] = 1.0F - shift;
            target.nodes[node][0] = 1.0F + shift;
        }
        const Outcome outcome = run(between(source, target));
        EXPECT_EQ(outcome.code, 0);
        EXPECT_EQ(outcome.nodeTable, identity(12));
    }
}

TEST_F(NodeCorrespondence, withoutASourceNodeAtThePlaceFails)
{
    const Mesh source = box(element::hexahedron, {0, 0, 0}, {2, 1, 1}, {1, 1, 1});
    // The target has nodes at x = 1, where the source has none.
    const Outcome outcome = run(between(source, twoHexahedra()));
    expectFailure(outcome, noPartner, std::vector<int>(12, 0));
    std::vector<Report> expected = {{0, nodeTitle, "Pretreatment", 1},
                                    {5, nodeTitle, "Computation", 1},
                                    {8, nodeTitle, "Computation", 1},
                                    {0, nodeTitle, "Mapping library exit.", 0}};
    EXPECT_EQ(outcome.transcript, expected);
}

TEST_F(NodeCorrespondence, withASourceNodeOfAnotherCodeOnlyFailsAsAnExtract)
{
    expectFailure(run(between(twoHexahedra(), withStateCode(twoHexahedra(), 4))), extractFailed,
                  std::vector<int>(12, 0));
    // Codes 1 and 2 are of one class; only equal codes match.
    expectFailure(run(between(twoHexahedra(), withStateCode(twoHexahedra(), 2))), extractFailed,
                  std::vector<int>(12, 0));
}

TEST_F(NodeCorrespondence, aSourceNodeInNoElementHasNoCode)
{
    Mesh source = joined(unitHexahedron({0, 0, 0}), unitHexahedron({2, 0, 0}));
    source.nodes.insert(source.nodes.end(), {{1.5F, 0, 0}, {1.5F, 1, 0}, {1.5F, 0, 1}, {1.5F, 1, 1}});
    Mesh target = unitHexahedron({0, 0, 0});
    target.nodes[1] = {1.5F, 0, 0};
    expectFailure(run(between(source, target)), extractFailed, std::vector<int>(8, 0));
}

TEST_F(NodeCorrespondence, theFirstElementGivesANodeItsCode)
{
    // The source's shared nodes have code 1, whatever the second element's; those of the target in the other order 4.
    const Mesh source = withMaterials(twoHexahedra(), {0, 1}, {1, 4});
    EXPECT_EQ(run(between(source, source)).nodeTable, identity(12));
    expectFailure(run(between(source, reordered(source, {1, 0}))), extractFailed, std::vector<int>(12, 0));
}

TEST_F(NodeCorrespondence, targetCodeMinusOneMatchesAnyMaterial)
{
    const Mesh source = withMaterials(twoHexahedra(), {0, 1}, {1, 4});
    EXPECT_EQ(run(between(source, withStateCode(twoHexahedra(), -1))).nodeTable, identity(12));
}

TEST_F(NodeCorrespondence, aFailureZeroesSelectedEntriesOnly)
{
    Mesh target = withMaterials(twoHexahedra(), {0, 1}, {1, 1});
    target.nodes[11] = target.nodes[11] + Point{0, 0, 0.01F};
    Matching matching = between(twoHexahedra(), target);
    matching.flags = {0, 1};
    const int u = untouchedEntry;
    expectFailure(run(matching), noPartner, {u, u, 0, u, u, 0, u, u, 0, u, u, 0});
}

TEST_F(NodeCorrespondence, aNodeWithoutAPlaceHasNoPartner)
{
    Mesh target = twoHexahedra();
    target.nodes[11][1] = std::numeric_limits<float>::quiet_NaN();
    expectFailure(run(between(twoHexahedra(), target)), noPartner, std::vector<int>(12, 0));
}

TEST_F(NodeCorrespondence, withoutSelectedMaterialFails)
{
    Matching matching = between(twoHexahedra(), twoHexahedra());
    matching.flags = {0};
    expectFailure(run(matching), "Error: please select at least one domain in the target model.\n",
                  std::vector<int>(12, untouchedEntry));
}

TEST_F(NodeCorrespondence, withoutSelectedNodeFails)
{
    // All nodes of the selected element belong to an earlier one that is not selected.
    Mesh target = unitHexahedron({0, 0, 0});
    target.connectivity.push_back(target.connectivity[0]);
    target.types.push_back(element::hexahedron);
    Matching matching = between(twoHexahedra(), withMaterials(target, {0, 1}, {1, 1}));
    matching.flags = {0, 1};
    const Outcome outcome = run(matching);
    expectFailure(outcome, "There is no target node.\n", std::vector<int>(8, untouchedEntry));
    EXPECT_EQ(outcome.transcript, (std::vector<Report>{{0, nodeTitle, "Pretreatment", 1},
                                                       {5, nodeTitle, "Computation", 1},
                                                       {0, nodeTitle, "Mapping library exit.", 0}}));
}

TEST_F(NodeCorrespondence, ofATargetBesideTheSourceFails)
{
    const Outcome outcome = run(between(twoHexahedra(), unitHexahedron({1.5F, 0, 0})));
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.message, "Error: the target mesh is not included in the source mesh.\n");
}

TEST_F(NodeCorrespondence, ofSkinsIsAccepted)
{
    // Two triangles and a quadrilateral on the surface of the source.
    Mesh skin;
    skin.nodes = twoHexahedra().nodes;
    skin.connectivity = {{0, 1, 4}, {0, 4, 3}, {1, 2, 5, 4}};
    skin.types = {element::triangle, element::triangle, element::quadrilateral};
    skin = withMaterials(skin, {0, 0, 0}, {1});
    const Outcome outcome = run(between(twoHexahedra(), skin));
    EXPECT_EQ(outcome.code, 0);
    std::vector<int> expected(12, untouchedEntry);
    for (int node = 0; node < 6; ++node)
    {
        expected[static_cast<std::size_t>(node)] = node + 1;
    }
    EXPECT_EQ(outcome.nodeTable, expected);
}

TEST_F(NodeCorrespondence, cancelledAtTheFirstReport)
{
    const Outcome outcome = run(between(twoHexahedra(), twoHexahedra()), {.cancelAt = 1});
    EXPECT_EQ(outcome.code, -1);
    EXPECT_EQ(outcome.message, "Node to node correspondence computation cancelled.\n");
    EXPECT_EQ(outcome.transcript, cancelledTranscript(nodeTitle, cancelText, 12, 1));
    EXPECT_EQ(outcome.nodeTable, std::vector<int>(12, untouchedEntry));
}

TEST_F(NodeCorrespondence, cancelledLaterKeepsWhatWasMatched)
{
    for (const int matched : {0, 1, 7, 12})
    {
        const Outcome outcome = run(between(twoHexahedra(), twoHexahedra()), {.cancelAt = 2 + matched});
        EXPECT_EQ(outcome.code, -1);
        EXPECT_EQ(outcome.message, cancelText);
        EXPECT_EQ(outcome.transcript, cancelledTranscript(nodeTitle, cancelText, 12, 2 + matched));
        std::vector<int> expected = identity(static_cast<std::size_t>(matched));
        expected.resize(12, untouchedEntry);
        EXPECT_EQ(outcome.nodeTable, expected);
    }
}

TEST_F(NodeCorrespondence, theAnswerToTheReportOfSuccessIsIgnored)
{
    const Outcome outcome = run(between(twoHexahedra(), twoHexahedra()), {.cancelAt = 2 + 12 + 1});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.message, termination);
    EXPECT_EQ(outcome.transcript, successfulTranscript(nodeTitle, success, 12));
}

TEST_F(NodeCorrespondence, leavesNoLogAndRemovesThatOfAnEarlierCall)
{
    const std::map<std::string, std::string> files = {{"interpoLog.txt", "old"}};
    EXPECT_TRUE(run(between(twoHexahedra(), twoHexahedra()), {.files = files}).files.empty());
    EXPECT_TRUE(run(between(twoHexahedra(), withStateCode(twoHexahedra(), 4)), {.files = files}).files.empty());
    EXPECT_TRUE(run(between(twoHexahedra(), twoHexahedra()), {.files = files, .cancelAt = 3}).files.empty());
}

TEST_F(NodeCorrespondence, givesTheSameInFewerBuckets)
{
    const Mesh mesh = distorted(box(element::wedge, {0, 0, 0}, {3, 3, 3}, {3, 3, 3}), {0, 0, 0}, {3, 3, 3}, 0.1F);
    for (const std::string contents : {"0.1 0.001 1", "0.1 0.001 10", "0.5", "nonsense", ""})
    {
        const std::map<std::string, std::string> files = {{"nodToNodInputs.txt", contents}};
        const Outcome outcome = run(between(mesh, mesh), {.files = files});
        EXPECT_EQ(outcome.code, 0);
        EXPECT_EQ(outcome.nodeTable, identity(mesh.nodes.size()));
        EXPECT_EQ(outcome.files, files);
    }
}

// ---------------------------------------------------------------------------------------------------------------------

/// The types of the source: a pyramid passes only where the target has one at the same index, and there any type does.
class TypesOfTheNodeCorrespondence : public NodeCorrespondence
{
protected:
    static Mesh pyramid() { return referenceElement(element::pyramid); }

    static void expectRefused(const Outcome& outcome, const std::string& message)
    {
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.message, message);
        EXPECT_EQ(outcome.nodeTable, std::vector<int>(outcome.nodeTable.size(), untouchedEntry));
        EXPECT_EQ(outcome.transcript, (std::vector<Report>{{0, "", "Mapping library exit.", 0}}));
    }
};

TEST_F(TypesOfTheNodeCorrespondence, aSourcePyramidNeedsATargetPyramidAtItsIndex)
{
    EXPECT_EQ(run(between(pyramid(), pyramid())).nodeTable, identity(5));
    // The base of the pyramid as target.
    const Mesh base = single(element::quadrilateral, {{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}});
    expectRefused(run(between(pyramid(), base)), sourceTypeText);
    // The pyramids are there, but the wrong way round.
    const Mesh mixed = joined(pyramid(), unitHexahedron({2, 0, 0}));
    EXPECT_EQ(run(between(mixed, mixed)).code, 0);
    expectRefused(run(between(mixed, reordered(mixed, {1, 0}))), sourceTypeText);
}

TEST_F(TypesOfTheNodeCorrespondence, anySourceTypePassesWhereTheTargetHasAPyramid)
{
    Mesh source = unitHexahedron({0, 0, 0});
    source.types[0] = element::unknownWith8Nodes;
    const Mesh target = single(element::pyramid, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 1}});
    const Outcome outcome = run(between(source, target));
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.nodeTable, (std::vector<int>{1, 2, 4, 3, 5}));
    expectRefused(run(between(source, unitHexahedron({0, 0, 0}))), sourceTypeText);
}

TEST_F(TypesOfTheNodeCorrespondence, aMissingTargetElementIsNoPyramid)
{
    const Mesh secondIsPyramid = joined(unitHexahedron({2, 0, 0}), pyramid());
    expectRefused(run(between(secondIsPyramid, unitHexahedron({2, 0, 0}))), sourceTypeText);
    const Mesh secondIsHexahedron = joined(pyramid(), unitHexahedron({2, 0, 0}));
    EXPECT_EQ(run(between(secondIsHexahedron, pyramid())).nodeTable, identity(5));
}

TEST_F(TypesOfTheNodeCorrespondence, surfaceElementsAreNoSource)
{
    for (const int type : {element::triangle, element::quadrilateral})
    {
        const Mesh skin = joined(twoHexahedra(), referenceElement(type, 0.5F, {1, 0.5F, 0.5F}));
        expectRefused(run(between(skin, twoHexahedra())), sourceTypeText);
    }
}

TEST_F(TypesOfTheNodeCorrespondence, unknownTypesAreNoTarget)
{
    Mesh target = twoHexahedra();
    target.types[1] = element::unknownWith8Nodes;
    expectRefused(run(between(twoHexahedra(), target)), targetTypeText);
    // The source is looked at first.
    Mesh source = twoHexahedra();
    source.types[1] = element::unknownWith8Nodes;
    expectRefused(run(between(source, target)), sourceTypeText);
}
} // namespace
