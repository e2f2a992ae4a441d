/// What the reference implementation receives and returns: the arrays of one call, and everything a host can observe.
///
/// The reference is the definition of the library's results, written for reading and not for speed: plain loops over
/// plain vectors, every sum in the stated order. It shares no code with the library.
#ifndef REFERENCE_TYPES_H
#define REFERENCE_TYPES_H

#include <array>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace reference
{

using Vec3 = std::array<float, 3>;

/// Element boxes and the grid's box are widened by this fraction of their extents.
constexpr float boxMarginRatio = 0.01F;

/// A number of the host's arrays as an index of the standard library's.
inline std::size_t index(int value)
{
    return static_cast<std::size_t>(value);
}

/// The three settings that a tuning file may change.
struct Tuning
{
    float bucketFactor = 0.1F;
    float refCoordTolerance = 0.001F;
    long long maxNbBuckets = 10000000;
};

/// One mesh as the host passes it. A point cloud has no elements: its nodes are the points and each of them has a
/// material.
struct MeshArrays
{
    int nbElts = 0;
    int nbNodes = 0;
    const float (*nodeCoords)[3] = nullptr;
    const int* const* connectivity = nullptr;
    const int* eltTypes = nullptr;
    int nbMatls = 0;
    const int* matlIdPerElt = nullptr; ///< per point for a point cloud
    const int* matlTypes = nullptr;    ///< per material, its state code
};

/// The host's callback: absent, or one that answers 1 except at one call (counted from 0), which it answers with 0.
struct HostCallback
{
    bool present = true;
    int refusedCall = -1;
};

struct CallbackCall
{
    int progress = 0;
    std::string title;
    std::string stage;
    int kind = 0;

    bool operator==(const CallbackCall&) const = default;
};

/// What happened inside a call, so that a test can tell which situations it has covered.
struct Observations
{
    bool cancelled = false;
    int nodesOutside = 0;
    int gaussPointsOutside = 0;
    int nodesFar = 0;
    int gaussPointsFar = 0;
    int interpolatedPoints = 0;
    int undefinedValues = 0;
    int defaultFilledValues = 0;
    int propagationSweeps = 0;
    int gridDoublings = 0;
    int bucketsOfEnlargedPass = 0;
    int inversionsWithoutConvergence = 0;
};

struct Outcome
{
    int errorCode = 0;
    std::string message;
    std::vector<CallbackCall> transcript;
    std::optional<std::string> log; ///< contents of interpoLog.txt, if the call leaves one
    Observations seen;
};

/// A fault that ends the host's process with status 0; the text is what appears on standard output.
class FatalFault : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// A model needs at least one material.
inline void checkMaterials(const MeshArrays& mesh)
{
    if (mesh.nbMatls == 0)
    {
        throw FatalFault("Error in ModelClass file at line 76: no material in this model \n");
    }
}

/// How a computation stops before its end: the error code and the text for the host.
struct Stopped
{
    int errorCode = 1;
    std::string message;
    bool cancelled = false;
};

/// The calls to the host during one computation.
class Conversation
{
public:
    Conversation(HostCallback host, std::string cancelText) : itsHost(host), itsCancelText(std::move(cancelText)) {}

    void begin(const std::string& title) { itsTitle = title; }

    /// A report that the host may answer with a cancellation.
    void report(int progress, const std::string& stage)
    {
        if (itsHost.present && call(progress, stage, 1) == 0)
        {
            call(0, itsCancelText, 0);
            throw Stopped{-1, itsCancelText, true};
        }
    }

    /// The report at the end: its answer no longer matters.
    void reportEnd(const std::string& stage)
    {
        if (itsHost.present)
        {
            call(100, stage, 1);
        }
    }

    void notice(const std::string& text)
    {
        if (itsHost.present)
        {
            call(0, text, 0);
        }
    }

    /// Counts a processed point and reports about once per percent.
    void pointDone(int total)
    {
        int step = total / 100;
        if (step < 1)
        {
            step = 1;
        }
        ++itsDone;
        if (itsDone % step == 0)
        {
            const int progress = itsDone * 100 / total;
            report(progress < 5 ? 5 : progress, "Computation");
        }
    }

    const std::vector<CallbackCall>& transcript() const { return itsTranscript; }

private:
    int call(int progress, const std::string& stage, int kind)
    {
        const int number = static_cast<int>(itsTranscript.size());
        itsTranscript.push_back({progress, itsTitle, stage, kind});
        return number == itsHost.refusedCall ? 0 : 1;
    }

    HostCallback itsHost;
    std::string itsCancelText;
    std::string itsTitle;
    int itsDone = 0;
    std::vector<CallbackCall> itsTranscript;
};

} // namespace reference

#endif
