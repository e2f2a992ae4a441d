// What a host meets when memory runs out: for each of the four computations, the first request of a call for memory
// fails, then the second, until the call needs no more. The library takes its memory from the operator new of this
// program, which can fail on demand.
#include "AllocationFailure.h"
#include "Scenes.h"

#include <algorithm>
#include <new>

namespace
{
using Texts = std::vector<std::string>;

Texts operator+(Texts first, const Texts& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

std::string tableText(const std::string& table)
{
    return "Allocation of " + table + " is not possible in MappingClass::interpolation() function.\n";
}

std::string bufferText(const std::string& caller)
{
    return "Error in MappingStringUtilities file at line 30: impossible to allocate a string in " + caller + "\n";
}

const Texts modelTexts(2, "Error in ModelClass file at line 84: impossible to allocate an integer table \n");
const Texts fieldsTexts(2, "Error in FieldsSetClass file at line 61: impossible to allocate fields. \n");
const Texts refBoxTexts{tableText("itsRefMeshBoxPerElt"), tableText("itsRefMeshBoxPerElt[0]"),
                        tableText("itsRefMeshBoxPerElt[0][0]")};
const Texts targetBoxTexts{tableText("itsTargetMeshBoxPerElt"), tableText("itsTargetMeshBoxPerElt[0]"),
                           tableText("itsTargetMeshBoxPerElt[0][0]")};
const Texts averageTexts{
    "Allocation of itsValuesInterpoNode is not possible in FieldClass::interpoAtNodes() function.\n",
    "Error in ModelClass file at line 127: impossible to allocate itsEltNbPerNode \n"};
const Texts nodeTexts{tableText("itsTargetMeshMatlIdPerNode"), tableText("itsTargetMeshMatlStatePerNode"),
                      tableText("itsTargetMeshMappingAtNode")};
const Texts nodeMatchTexts{tableText("itsRefMeshMatlStatePerNode"), tableText("itsTargetMeshMatlStatePerNode"),
                           tableText("itsTargetMeshMappingAtNode")};
const Texts centreTexts{
    "Allocation of itsRefMeshBaryPerElt is not possible in MappingClass::createBaryPerRefElt() function.\n",
    "Allocation of itsRefMeshBaryPerElt[0] is not possible in MappingClass::createBaryPerRefElt() function.\n"};
const Texts farTexts{
    "Allocation of itsTargetNodesFarOutside is not possible in MappingClass:: interpolationAtPoint() function.\n"};
const Texts pointTexts(3, "Allocation of the target points is not possible in MappingClass::interpolation() "
                          "function.\n");
const Texts propagationTexts{
    "Allocation of the open elements is not possible in MappingClass::nodeFieldsPropagation() function.\n"};

Texts gridTexts(int lastLine)
{
    const std::string start = "Error in BucketSpaceClass file at line ";
    return {start + "307: impossible to allocate an int** \n",
            start + "315: impossible to allocate an int* \n",
            start + "328: impossible to allocate an int \n",
            start + "482: impossible to allocate an BucketClass** \n",
            start + "490: impossible to allocate an BucketClass* \n",
            start + "502: impossible to allocate a BucketClass \n",
            start + "992: impossible to allocate int \n",
            start + std::to_string(lastLine) + ": impossible to allocate int \n"};
}

/// A call whose n-th request for memory fails.
class FailingCall
{
public:
    FailingCall(int n, AllocationFailure::Answer answer) : itsNumber(n), itsAnswer(answer) {}

    /// The host's side is silent: nothing but the library asks for memory during the call.
    Circumstances circumstances()
    {
        return {.withCallback = false, .around = [this](const std::function<void()>& call) { perform(call); }};
    }

    bool happened = false;
    bool isThrown = false;
    std::int64_t nbLeaked = 0;

private:
    void perform(const std::function<void()>& call)
    {
        const std::int64_t before = nbLiveAllocations();
        try
        {
            const AllocationFailure failure(itsNumber, itsAnswer);
            call();
            happened = failure.happened();
        }
        catch (const std::bad_alloc&)
        {
            happened = true;
            isThrown = true;
        }
        nbLeaked = nbLiveAllocations() - before;
    }

    int itsNumber;
    AllocationFailure::Answer itsAnswer;
};

/// A request that cannot be met, and what comes of it: a text for the host, or a line and the end of the process.
struct FailedRequest
{
    std::string text;
    bool isFatal = false;
    Outcome outcome = {};
};

class Allocations : public Host
{
protected:
    /// A source and a target with everything that asks for memory: fields at Gauss points on both sides, and points
    /// inside, near and far outside the source.
    static Transfer toMesh()
    {
        Transfer transfer = transferOf(linear, sourceWithGap(), chainAcrossGap());
        transfer.sourceFields.push_back(
            {.location = atGaussPointsLocation, .values = constant(gaussPointsOf(transfer.source), 2.0)});
        transfer.targetFields = {Field{}, atGaussPoints()};
        transfer.mode = 2;
        return transfer;
    }

    static Transfer toCloud()
    {
        Transfer transfer = transferOf(linear, roomySource(), cloud({{1, 1, 1}, {50, 1, 1}}));
        transfer.mode = 1;
        return transfer;
    }

    static Matching matching(Correspondence kind)
    {
        return {.kind = kind, .source = roomySource(), .target = box(element::hexahedron, {0, 0, 0}, {2, 2, 2})};
    }

    static void expectSame(const Outcome& actual, const Outcome& expected, int n)
    {
        EXPECT_EQ(actual.code, expected.code) << n;
        EXPECT_EQ(actual.message, expected.message) << n;
        EXPECT_EQ(actual.fields, expected.fields) << n;
        EXPECT_EQ(actual.nodeTable, expected.nodeTable) << n;
        EXPECT_EQ(actual.elementsOfGaussPoints, expected.elementsOfGaussPoints) << n;
        EXPECT_EQ(actual.files, expected.files) << n;
    }

    /// Lets every request of a call fail in turn, in a child first, where the process may end. After each call that
    /// returns, nothing has leaked and the next call in the same process does its work.
    template <typename Call> static std::vector<FailedRequest> failEveryRequest(const Call& call)
    {
        const Outcome intact = run(call, {.withCallback = false});
        EXPECT_EQ(intact.code, 0) << intact.message;
        std::vector<FailedRequest> requests;
        for (int n = 1;; ++n)
        {
            FailingCall failing(n, AllocationFailure::Answer::null);
            const Ending ending = runToTheEnd(call, failing.circumstances());
            if (!ending.returned)
            {
                EXPECT_EQ(ending.exitStatus, 0) << n;
                requests.push_back({ending.printed, true});
                continue;
            }
            const Outcome outcome = run(call, failing.circumstances());
            if (!failing.happened)
            {
                testing::Test::RecordProperty("requests", static_cast<int>(requests.size()));
                return requests;
            }
            EXPECT_EQ(outcome.code, 1) << n;
            EXPECT_FALSE(outcome.hasLog()) << n;
            EXPECT_EQ(failing.nbLeaked, 0) << n;
            requests.push_back({outcome.message, false, outcome});
            expectSame(run(call, {.withCallback = false}), intact, n);
        }
    }

    /// Lets an exhausted heap raise its exception at every request in turn: it reaches the host, and the call has left
    /// nothing behind, neither memory nor an outcome. The next call does its work.
    template <typename Call> static void expectExceptions(const Call& call)
    {
        const Outcome intact = run(call, {.withCallback = false});
        for (int n = 1;; ++n)
        {
            FailingCall failing(n, AllocationFailure::Answer::exception);
            const Outcome outcome = run(call, failing.circumstances());
            if (!failing.happened)
            {
                EXPECT_GT(n, 15);
                return;
            }
            EXPECT_TRUE(failing.isThrown) << n;
            EXPECT_EQ(failing.nbLeaked, 0) << n;
            EXPECT_EQ(outcome.code, untouchedEntry) << n;
            EXPECT_FALSE(outcome.hasLog()) << n;
            expectSame(run(call, {.withCallback = false}), intact, n);
        }
    }

    /// The texts in the order of the requests, without those of message buffers: how many there are is nobody's
    /// concern.
    static Texts tableTexts(const std::vector<FailedRequest>& requests)
    {
        Texts texts;
        for (const FailedRequest& request : requests)
        {
            if (request.text.rfind(bufferText("").substr(0, 60), 0) != 0)
            {
                texts.push_back(request.text);
                EXPECT_EQ(request.isFatal, request.text.rfind("Error in", 0) == 0) << request.text;
            }
        }
        return texts;
    }

    static void expectBufferTexts(const std::vector<FailedRequest>& requests, const Texts& callers)
    {
        for (const std::string& caller : callers)
        {
            EXPECT_TRUE(std::ranges::any_of(requests, [&](const FailedRequest& request)
                                            { return request.isFatal && request.text == bufferText(caller); }))
                << caller;
        }
    }
};

TEST_F(Allocations, everyTableOfATransferToAMeshHasItsText)
{
    const std::vector<FailedRequest> requests = failEveryRequest(toMesh());
    EXPECT_EQ(tableTexts(requests), modelTexts + fieldsTexts + refBoxTexts + targetBoxTexts + averageTexts + nodeTexts +
                                        gridTexts(1026) + pointTexts + centreTexts + farTexts + propagationTexts +
                                        pointTexts);
    expectBufferTexts(requests, {"MappingClass::checkInterpo()", "MappingClass::interpoTests()",
                                 "MappingClass::interpolation()", "FieldClass::interpoAtNodes()",
                                 "BucketSpaceClass::build()", "MappingClass::nodeFieldsPropagation()"});
}

TEST_F(Allocations, aTransferThatFailsFillsWhatItHadDecidedToCompute)
{
    const Transfer transfer = toMesh();
    const std::vector<double> filledNodes = constant(transfer.target.nodes.size(), -7.0);
    const std::vector<double> filledGaussPoints = constant(gaussPointsOf(transfer.target), -7.0);
    const std::vector<double> untouchedNodes = constant(filledNodes.size(), untouched);
    const std::vector<double> untouchedGaussPoints = constant(filledGaussPoints.size(), untouched);
    const Texts beforeDecision = refBoxTexts + targetBoxTexts + averageTexts;
    for (const FailedRequest& request : failEveryRequest(transfer))
    {
        if (!request.isFatal)
        {
            const bool isDecided = std::ranges::count(beforeDecision, request.text) == 0;
            const bool areNodesKnown = isDecided && std::ranges::count(nodeTexts, request.text) == 0;
            EXPECT_EQ(request.outcome.fields[0], areNodesKnown ? filledNodes : untouchedNodes) << request.text;
            EXPECT_EQ(request.outcome.fields[1], isDecided ? filledGaussPoints : untouchedGaussPoints) << request.text;
        }
    }
}

TEST_F(Allocations, everyTableOfATransferToPointsHasItsText)
{
    EXPECT_EQ(tableTexts(failEveryRequest(toCloud())),
              modelTexts + fieldsTexts + refBoxTexts + nodeTexts + gridTexts(1026) + pointTexts + farTexts);
}

TEST_F(Allocations, everyTableOfANodeCorrespondenceHasItsText)
{
    const std::vector<FailedRequest> requests = failEveryRequest(matching(Correspondence::nodes));
    EXPECT_EQ(tableTexts(requests), modelTexts + refBoxTexts + targetBoxTexts + nodeMatchTexts + gridTexts(1103));
    expectBufferTexts(requests, {"MappingClass::nodTonodCorrTests()", "MappingClass::nodToNodCorrespondence()"});
}

TEST_F(Allocations, everyTableOfAGaussPointCorrespondenceHasItsText)
{
    const std::vector<FailedRequest> requests = failEveryRequest(matching(Correspondence::gaussPoints));
    EXPECT_EQ(tableTexts(requests), modelTexts + refBoxTexts + targetBoxTexts + gridTexts(1026) + pointTexts);
    expectBufferTexts(requests, {"MappingClass::GPToGPCorrTests()", "MappingClass::GPToGPCorrespondence()"});
}

TEST_F(Allocations, theExceptionOfAnExhaustedHeapLeavesNothingBehind)
{
    expectExceptions(toMesh());
    expectExceptions(toCloud());
    expectExceptions(matching(Correspondence::nodes));
    expectExceptions(matching(Correspondence::gaussPoints));
}
} // namespace
