// The library as a host calls it.
#include "TransferCase.h"
#include "Veltrane.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <string>

namespace benchmarks
{
namespace
{
using Callback = int (*)(int, char*, char*, int);
using Coordinates = float (*)[3];

Meter* currentMeter = nullptr;

int noteEndOfSetUp(int, char*, char* stage, int)
{
    static bool isSettingUp = true;
    if (isSettingUp && std::strcmp(stage, "Computation") == 0)
    {
        currentMeter->endSetUp();
        isSettingUp = false;
    }
    return 1;
}

/// The library only reads the arrays of the meshes, though its C interface cannot say so.
template <class T> T* lent(const std::vector<T>& values)
{
    return const_cast<T*>(values.data());
}

Coordinates coordinates(std::span<const float> values)
{
    return reinterpret_cast<Coordinates>(const_cast<float*>(values.data()));
}

FieldStruct field(const char* name, int location, int nbComponents, double* values)
{
    FieldStruct record{};
    std::snprintf(record.name, sizeof record.name, "%s", name);
    record.location = location;
    record.nbComponents = nbComponents;
    record.precision = 2;
    record.valuesDouble = values;
    record.defaultValueFloat = TransferCase::notComputed;
    record.defaultValueDouble = TransferCase::notComputed;
    return record;
}

std::array<FieldStruct, 2> fieldRecords(const FieldValues& values, int location)
{
    return {field("scalar", location, 1, lent(values.scalar)), field("vector", location, 3, lent(values.vector))};
}

/// Outcome cells of a call.
struct Outcome
{
    void check() const
    {
        if (errorCode != 0)
        {
            throw std::runtime_error("the library ended with " + std::to_string(errorCode) + ": " + message.data());
        }
    }
    std::array<char, 1001> message{};
    int errorCode = 0;
};

/// The number that follows the line that begins with `text` in the library's log; -1 without such a line.
std::int64_t loggedNumber(const std::string& text)
{
    std::ifstream log("interpoLog.txt");
    std::string line;
    while (std::getline(log, line))
    {
        if (line.starts_with(text))
        {
            return std::stoll(line.substr(line.find('=') + 1));
        }
    }
    return -1;
}

constexpr int atNodes = 1;
constexpr int atGaussPoints = 2;

/// What the library does with points far outside the source.
enum FarPoints
{
    takeDefault = 1,
    arePropagated = 2
};

void transferToMesh(const TransferCase& transfer, FarPoints farPoints, int location, FieldValues& result,
                    Outcome& outcome, Callback callback)
{
    const GeneratedMesh& source = transfer.source;
    const GeneratedMesh& target = transfer.target;
    std::vector<int> flags(target.matlStates.size(), 1);
    auto sourceRecords = fieldRecords(transfer.sourceFields, 1);
    auto targetRecords = fieldRecords(result, location);
    FE3DMeshToFE3DMesh_VariablesInterpolation(
        farPoints, TransferCase::notComputed, source.nbElts(), source.nbNodes(), coordinates(source.coords),
        lent(source.eltNodes), lent(source.eltTypes), static_cast<int>(source.matlStates.size()),
        lent(source.matlIdPerElt), lent(source.matlStates), target.nbElts(), target.nbNodes(),
        coordinates(target.coords), lent(target.eltNodes), lent(target.eltTypes),
        static_cast<int>(target.matlStates.size()), lent(target.matlIdPerElt), lent(target.matlStates), flags.data(),
        {2, sourceRecords.data()}, {2, targetRecords.data()}, outcome.message.data(), &outcome.errorCode, callback);
}

void transferToCloud(const TransferCase& transfer, std::vector<int>& matlIdPerPoint, FieldValues& result,
                     Outcome& outcome, Callback callback)
{
    const GeneratedMesh& source = transfer.source;
    int flag = 1;
    int matlState = 1;
    auto sourceRecords = fieldRecords(transfer.sourceFields, 1);
    auto targetRecords = fieldRecords(result, 1);
    FE3DMEshToPtCloud_VariablesInterpolation(
        takeDefault, TransferCase::notComputed, source.nbElts(), source.nbNodes(), coordinates(source.coords),
        lent(source.eltNodes), lent(source.eltTypes), static_cast<int>(source.matlStates.size()),
        lent(source.matlIdPerElt), lent(source.matlStates), static_cast<int>(transfer.nbPoints()),
        coordinates(transfer.points()), 1, matlIdPerPoint.data(), &matlState, &flag, {2, sourceRecords.data()},
        {2, targetRecords.data()}, outcome.message.data(), &outcome.errorCode, callback);
}

/// Where the case's target fields are.
int targetLocation(const TransferCase& transfer)
{
    return transfer.options.target == TargetKind::gaussPoints ? atGaussPoints : atNodes;
}

Measurement measureTransfer(const TransferCase& transfer, int location, FarPoints farPoints, Callback callback)
{
    const std::span<const float> positions = location == atGaussPoints ? transfer.otherPoints : transfer.points();
    const auto nbPoints = positions.size() / 3;
    const bool isCloud = transfer.options.target == TargetKind::cloud;
    std::vector<int> matlIdPerPoint(isCloud ? nbPoints : 0, 0);
    FieldValues result(nbPoints);
    Outcome outcome;

    Meter meter;
    currentMeter = &meter;
    if (isCloud)
    {
        transferToCloud(transfer, matlIdPerPoint, result, outcome, callback);
    }
    else
    {
        transferToMesh(transfer, farPoints, location, result, outcome, callback);
    }
    Measurement measurement = meter.stop();

    outcome.check();
    transfer.assess(result, positions, measurement);
    if (farPoints == takeDefault)
    {
        // Nodes without a partner keep the default, as they should.
        measurement.nbNotFound -= std::ranges::count(transfer.hasNoPartner, 1);
    }
    measurement.nbBuckets = loggedNumber("Total number of buckets");
    measurement.nbNearMisses = loggedNumber(
        location == atGaussPoints ? "Number of target gauss points outside the source mesh but close enough"
                                  : "Number of target nodes outside the source mesh but close enough");
    return measurement;
}

Measurement measureNodeCorrespondence(const TransferCase& transfer)
{
    const GeneratedMesh& source = transfer.source;
    const GeneratedMesh& target = transfer.target;
    std::vector<int> flags(target.matlStates.size(), 1);
    std::vector<int> matches(static_cast<std::size_t>(target.nbNodes()), -1);
    Outcome outcome;

    Meter meter;
    currentMeter = &meter;
    FE3DMeshToFE3DMesh_NodeToNodeMapping(
        source.nbElts(), source.nbNodes(), coordinates(source.coords), lent(source.eltNodes), lent(source.eltTypes),
        static_cast<int>(source.matlStates.size()), lent(source.matlIdPerElt), lent(source.matlStates), target.nbElts(),
        target.nbNodes(), coordinates(target.coords), lent(target.eltNodes), lent(target.eltTypes),
        static_cast<int>(target.matlStates.size()), lent(target.matlIdPerElt), lent(target.matlStates), flags.data(),
        matches.data(), outcome.message.data(), &outcome.errorCode, noteEndOfSetUp);
    Measurement measurement = meter.stop();

    outcome.check();
    measurement.nbPoints = target.nbNodes();
    for (std::size_t node = 0; node < matches.size(); ++node)
    {
        measurement.nbNotFound += matches[node] != transfer.originalNode[node] + 1;
    }
    return measurement;
}

Measurement measureGaussPointCorrespondence(const TransferCase& transfer)
{
    const GeneratedMesh& source = transfer.source;
    const GeneratedMesh& target = transfer.target;
    std::vector<int> flags(target.matlStates.size(), 1);
    constexpr std::size_t mostGaussPoints = 8;
    std::vector<int> elements(mostGaussPoints * target.eltNodes.size(), -1);
    std::vector<int> gaussPoints(elements.size(), -1);
    std::vector<int*> elementRows;
    std::vector<int*> gaussPointRows;
    for (std::size_t first = 0; first < elements.size(); first += mostGaussPoints)
    {
        elementRows.push_back(elements.data() + first);
        gaussPointRows.push_back(gaussPoints.data() + first);
    }
    Outcome outcome;

    Meter meter;
    currentMeter = &meter;
    FE3DMeshToFE3DMesh_GPToGPMapping(
        source.nbElts(), source.nbNodes(), coordinates(source.coords), lent(source.eltNodes), lent(source.eltTypes),
        static_cast<int>(source.matlStates.size()), lent(source.matlIdPerElt), lent(source.matlStates), target.nbElts(),
        target.nbNodes(), coordinates(target.coords), lent(target.eltNodes), lent(target.eltTypes),
        static_cast<int>(target.matlStates.size()), lent(target.matlIdPerElt), lent(target.matlStates), flags.data(),
        elementRows.data(), gaussPointRows.data(), outcome.message.data(), &outcome.errorCode, noteEndOfSetUp);
    Measurement measurement = meter.stop();

    outcome.check();
    std::int64_t nbMatched = 0;
    for (std::size_t i = 0; i < elements.size(); ++i)
    {
        const bool isWritten = elements[i] != -1;
        const bool isRight = elements[i] == transfer.originalElt[i / mostGaussPoints] + 1 &&
                             gaussPoints[i] == static_cast<int>(i % mostGaussPoints) + 1;
        nbMatched += isWritten && isRight;
    }
    measurement.nbPoints = target.nbGaussPoints();
    measurement.nbNotFound = measurement.nbPoints - nbMatched;
    return measurement;
}
} // namespace

std::vector<Engine> veltraneEngines(const TransferCase& transfer)
{
    const bool isPropagation = transfer.options.target == TargetKind::propagation;
    const FarPoints farPoints = isPropagation ? arePropagated : takeDefault;
    const auto transferTo = [&transfer](int location, FarPoints farPointsTo, Callback callback)
    {
        return [&transfer, location, farPointsTo, callback]
        { return measureTransfer(transfer, location, farPointsTo, callback); };
    };
    const int location = targetLocation(transfer);
    std::vector<Engine> engines{{"veltrane", transferTo(location, farPoints, noteEndOfSetUp)},
                                {"veltrane-without-callback", transferTo(location, farPoints, nullptr)}};
    if (isPropagation)
    {
        engines.push_back({"veltrane-without-propagation", transferTo(location, takeDefault, noteEndOfSetUp)});
    }
    if (transfer.options.target == TargetKind::renumbered)
    {
        engines.push_back({"veltrane-at-gauss-points", transferTo(atGaussPoints, farPoints, noteEndOfSetUp)});
        engines.push_back({"node-correspondence", [&transfer] { return measureNodeCorrespondence(transfer); }});
        engines.push_back(
            {"gauss-point-correspondence", [&transfer] { return measureGaussPointCorrespondence(transfer); }});
    }
    return engines;
}
} // namespace benchmarks
