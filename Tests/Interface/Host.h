/// A host program around one call of the library: it lays out the arrays, answers the callback, and keeps everything
/// that the call does.
#ifndef VELTRANE_TESTS_HOST_H
#define VELTRANE_TESTS_HOST_H

#include "LibraryHost.h"
#include "Meshes.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

using namespace meshes;

constexpr int atNodesLocation = 1;
constexpr int atGaussPointsLocation = 2;
constexpr int atElementsLocation = 3;
constexpr int singlePrecision = 1;
constexpr int doublePrecision = 2;

/// What `Outcome` shows for a value that the library did not write.
constexpr double untouched = -5.0e300;
constexpr int untouchedEntry = 0x5A5A5A5A;

/// One field of a source or target set.
struct Field
{
    int location = atNodesLocation;
    int components = 1;
    int precision = singlePrecision;
    int stateFlag = 0;
    float defaultValue = 0.0F;
    /// Of a source field, its values. Of a target field, what its array holds before the call; empty: the pattern that
    /// shows up as `untouched`.
    std::vector<double> values = {};
    std::string name = "field";
};

/// A call of one of the two entry points that transfer fields. A target without elements is a point cloud.
struct Transfer
{
    int mode = 0;
    float defaultValue = -7.0F;
    Mesh source = {};
    std::vector<Field> sourceFields = {};
    Mesh target = {};
    std::vector<int> flags = {1};
    std::vector<Field> targetFields = {Field{}};
};

enum class Correspondence
{
    nodes,
    gaussPoints
};

/// A call of one of the two entry points that match meshes.
struct Matching
{
    Correspondence kind = Correspondence::nodes;
    Mesh source = {};
    Mesh target = {};
    std::vector<int> flags = {1};
};

/// What surrounds a call.
struct Circumstances
{
    /// Files in the working directory, by relative path.
    std::map<std::string, std::string> files = {};
    bool withCallback = true;
    /// The progress report that is answered with 0, counted from 1; 0: none.
    int cancelAt = 0;
    /// The answer to all other progress reports. Notices are answered with 0.
    int answer = 1;
    /// What the library is expected to print.
    std::string printed = {};
    /// Makes the call, if it is not to be made directly.
    std::function<void(const std::function<void()>& call)> around = {};
};

/// What a call did.
struct Outcome
{
    int code = untouchedEntry;
    std::string message;
    std::vector<Report> transcript;
    std::map<std::string, std::string> files; ///< in the working directory afterwards, by relative path
    std::vector<std::vector<double>> fields;  ///< values of each target field
    std::vector<int> nodeTable;               ///< of the node correspondence
    std::vector<std::vector<int>> elementsOfGaussPoints;
    std::vector<std::vector<int>> pointsOfGaussPoints;

    bool hasLog() const { return files.contains("interpoLog.txt"); }
    const std::string& log() const { return files.at("interpoLog.txt"); }
};

/// What a call that ended its process left behind.
struct Ending
{
    bool returned;
    int exitStatus;
    std::string printed;
    bool outputsUntouched;                   ///< neither the outcome nor any target value was written
    std::vector<std::vector<double>> fields; ///< values of each target field
};

/// Every call runs in a new, empty working directory, and is checked for stray writes and unexpected output.
class Host : public testing::Test
{
protected:
    static Outcome run(const Transfer& transfer, const Circumstances& circumstances = {});
    static Outcome run(const Matching& matching, const Circumstances& circumstances = {});

    /// Runs the call in a child process.
    static Ending runToTheEnd(const Transfer& transfer, const Circumstances& circumstances = {});
    static Ending runToTheEnd(const Matching& matching, const Circumstances& circumstances = {});

    /// For a call whose field records are not those of the transfer's fields: their numbers are replaced.
    static Ending runToTheEndWithFieldCounts(const Transfer& transfer, int nbSourceFields, int nbTargetFields);
};

/// What the callback is told over a whole call that ends well, when `nbPoints` points are processed.
std::vector<Report> successfulTranscript(const std::string& title, const std::string& success, int nbPoints);

/// The same up to the k-th progress report, which is answered with a cancellation.
std::vector<Report> cancelledTranscript(const std::string& title, const std::string& cancelled, int nbPoints, int k);

constexpr const char* meshTitle = "FE 3D mesh to FE 3D mesh interpolation";
constexpr const char* cloudTitle = "FE 3D mesh to points cloud interpolation";
constexpr const char* nodeTitle = "Node to node correspondence computation";
constexpr const char* gaussPointTitle = "Gauss point to Gauss point correspondence computation";

constexpr const char* interpolationSuccess = "Interpolation terminated successfully.";
constexpr const char* interpolationCancelled = "Interpolation cancelled.\n";
constexpr const char* meshTermination = "FE 3D Mesh to FE 3D Mesh interpolation normal termination.";
constexpr const char* cloudTermination = "FE 3D Mesh to point cloud interpolation normal termination.";

#endif
