#include "Host.h"

#include "GuardedArray.h"
#include "TemporaryDirectory.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <limits>
#include <memory>
#include <optional>

namespace
{
// ---------------------------------------------------------------------------------------------------------------------
// Arrays

/// Meshes with more elements keep the connectivity of all elements in one array.
constexpr int maxElementsWithOwnArray = 256;

/// The group of arguments that describes a mesh or a point cloud.
class MeshArguments
{
public:
    explicit MeshArguments(const Mesh& mesh)
        : itsCoordinates(std::span<const Point>(mesh.nodes)), itsTypes(mesh.types), itsMaterials(mesh.matlIds),
          itsStateCodes(mesh.matlStates), nbElements(mesh.nbElts()), nbNodes(mesh.nbNodes()),
          nbMaterials(static_cast<int>(mesh.matlStates.size()))
    {
        std::vector<int*> rows;
        if (nbElements <= maxElementsWithOwnArray)
        {
            for (const std::vector<int>& nodes : mesh.connectivity)
            {
                itsNodes.emplace_back(nodes);
                rows.push_back(itsNodes.back().data());
            }
        }
        else
        {
            std::vector<int> allNodes;
            for (const std::vector<int>& nodes : mesh.connectivity)
            {
                allNodes.insert(allNodes.end(), nodes.begin(), nodes.end());
            }
            itsNodes.emplace_back(allNodes);
            int* row = itsNodes.back().data();
            for (const std::vector<int>& nodes : mesh.connectivity)
            {
                rows.push_back(row);
                row += nodes.size();
            }
        }
        itsRows.emplace(std::span<int* const>(rows));
    }

    float (*coordinates() const)[3] { return reinterpret_cast<float(*)[3]>(itsCoordinates.data()); }
    int** connectivity() const { return itsRows->data(); }
    int* types() const { return itsTypes.data(); }
    int* matlIds() const { return itsMaterials.data(); }
    int* matlStates() const { return itsStateCodes.data(); }

private:
    InputArray<Point> itsCoordinates;
    InputArray<int> itsTypes;
    InputArray<int> itsMaterials;
    InputArray<int> itsStateCodes;
    std::vector<InputArray<int>> itsNodes;
    std::optional<InputArray<int*>> itsRows;

public:
    const int nbElements;
    const int nbNodes;
    const int nbMaterials;
};

/// Addresses that nothing may be read from, for the pointer of the precision that a field does not have.
void* forbiddenAddress()
{
    static const GuardedBytes nothing(0);
    return nothing.data();
}

FieldStruct recordOf(const Field& field, float* valuesFloat, double* valuesDouble)
{
    FieldStruct record{};
    std::snprintf(record.name, sizeof record.name, "%s", field.name.c_str());
    record.matlStateFlag = field.stateFlag;
    record.location = field.location;
    record.nbComponents = field.components;
    record.precision = field.precision;
    record.valuesFloat = valuesFloat;
    record.valuesDouble = valuesDouble;
    const float notMeant = std::numeric_limits<float>::quiet_NaN();
    record.defaultValueFloat = field.precision == singlePrecision ? field.defaultValue : notMeant;
    record.defaultValueDouble = field.precision == doublePrecision ? field.defaultValue : notMeant;
    return record;
}

/// The fields of the source: all in read-only memory.
class SourceFields
{
public:
    explicit SourceFields(const std::vector<Field>& fields)
    {
        std::vector<FieldStruct> records;
        for (const Field& field : fields)
        {
            auto* valuesFloat = static_cast<float*>(forbiddenAddress());
            auto* valuesDouble = static_cast<double*>(forbiddenAddress());
            if (field.precision == doublePrecision)
            {
                itsDoubles.emplace_back(field.values);
                valuesDouble = itsDoubles.back().data();
            }
            else
            {
                std::vector<float> narrowed;
                std::ranges::transform(field.values, std::back_inserter(narrowed),
                                       [](double value) { return static_cast<float>(value); });
                itsFloats.emplace_back(narrowed);
                valuesFloat = itsFloats.back().data();
            }
            records.push_back(recordOf(field, valuesFloat, valuesDouble));
        }
        itsRecords.emplace(std::span<const FieldStruct>(records));
    }

    FieldsSetStruct set(int nbFields) const { return {nbFields, itsRecords->data()}; }

private:
    std::vector<InputArray<float>> itsFloats;
    std::vector<InputArray<double>> itsDoubles;
    std::optional<InputArray<FieldStruct>> itsRecords;
};

/// The fields of the target: the records are read-only, the values are the library's to write.
class TargetFields
{
public:
    TargetFields(const std::vector<Field>& fields, const Mesh& target)
    {
        std::vector<FieldStruct> records;
        for (const Field& field : fields)
        {
            const std::size_t rows = field.location == atGaussPointsLocation ? gaussPointsOf(target)
                                     : field.location == atElementsLocation  ? target.connectivity.size()
                                                                             : target.nodes.size();
            const std::size_t nbValues = rows * static_cast<std::size_t>(field.components);
            auto* valuesFloat = static_cast<float*>(forbiddenAddress());
            auto* valuesDouble = static_cast<double*>(forbiddenAddress());
            Values values;
            if (field.precision == doublePrecision)
            {
                values.doubles = std::make_unique<OutputArray<double>>(nbValues);
                valuesDouble = values.doubles->data();
                std::ranges::copy(field.values, valuesDouble);
            }
            else
            {
                values.floats = std::make_unique<OutputArray<float>>(nbValues);
                valuesFloat = values.floats->data();
                std::ranges::transform(field.values, valuesFloat,
                                       [](double value) { return static_cast<float>(value); });
            }
            itsValues.push_back(std::move(values));
            records.push_back(recordOf(field, valuesFloat, valuesDouble));
        }
        itsRecords.emplace(std::span<const FieldStruct>(records));
    }

    FieldsSetStruct set(int nbFields) const { return {nbFields, itsRecords->data()}; }

    std::vector<std::vector<double>> values() const
    {
        std::vector<std::vector<double>> all;
        for (const Values& values : itsValues)
        {
            all.push_back(values.floats ? read(*values.floats) : read(*values.doubles));
        }
        return all;
    }

    bool surroundingsUntouched() const
    {
        return std::ranges::all_of(itsValues,
                                   [](const Values& values) {
                                       return values.floats ? values.floats->surroundingsUntouched()
                                                            : values.doubles->surroundingsUntouched();
                                   });
    }

private:
    struct Values
    {
        std::unique_ptr<OutputArray<float>> floats;
        std::unique_ptr<OutputArray<double>> doubles;
    };

    template <typename T> static std::vector<double> read(const OutputArray<T>& array)
    {
        std::vector<double> values;
        for (std::size_t i = 0; i < array.size(); ++i)
        {
            values.push_back(array.untouched(i) ? untouched : static_cast<double>(array[i]));
        }
        return values;
    }

    std::vector<Values> itsValues;
    std::optional<InputArray<FieldStruct>> itsRecords;
};

/// A table with one row of entries per target element.
class GaussPointTable
{
public:
    explicit GaussPointTable(const Mesh& target)
    {
        std::vector<int*> rows;
        for (const int type : target.types)
        {
            itsEntries.emplace_back(static_cast<std::size_t>(gaussPointsOfType(type)));
            rows.push_back(itsEntries.back().data());
        }
        itsRows.emplace(std::span<int* const>(rows));
    }

    int** data() const { return itsRows->data(); }

    std::vector<std::vector<int>> entries() const
    {
        std::vector<std::vector<int>> all;
        for (const OutputArray<int>& row : itsEntries)
        {
            all.emplace_back(row.data(), row.data() + row.size());
        }
        return all;
    }

    bool surroundingsUntouched() const
    {
        return std::ranges::all_of(itsEntries, &OutputArray<int>::surroundingsUntouched);
    }

private:
    std::vector<OutputArray<int>> itsEntries;
    std::optional<InputArray<int*>> itsRows;
};

// ---------------------------------------------------------------------------------------------------------------------
// The callback

VeltraneCallback callbackFor(const Circumstances& circumstances)
{
    return callbackAnswering(
        [&circumstances, nbProgressReports = 0](const Report& report) mutable
        {
            if (report.kind != 1)
            {
                return 0;
            }
            ++nbProgressReports;
            return nbProgressReports == circumstances.cancelAt ? 0 : circumstances.answer;
        });
}

// ---------------------------------------------------------------------------------------------------------------------
// Calls

/// Where a computing function reports.
struct OutcomeCells
{
    static constexpr std::size_t messageRoom = 1000;

    OutputArray<char> message{messageRoom};
    OutputArray<int> code{1};

    std::string text() const { return {message.data(), strnlen(message.data(), messageRoom)}; }

    bool untouched() const { return code.untouched(0) && message.untouched(0); }

    /// True when nothing follows the terminating zero.
    bool restOfMessageUntouched() const
    {
        for (std::size_t i = text().size() + 1; i < messageRoom; ++i)
        {
            if (!message.untouched(i))
            {
                return false;
            }
        }
        return true;
    }
};

using Call = std::function<void(VeltraneCallback)>;

/// Makes the call itself, with all that the host has to prepare done.
void makeCall(const Call& call, const Circumstances& circumstances)
{
    const VeltraneCallback callback = callbackFor(circumstances);
    const std::function<void()> plainCall = [&] { call(circumstances.withCallback ? callback : nullptr); };
    circumstances.around ? circumstances.around(plainCall) : plainCall();
}

void performCall(const Call& call, const Circumstances& circumstances, const OutcomeCells& cells, Outcome& outcome)
{
    const WorkingDirectory directory(circumstances.files);
    EXPECT_EQ(printedByReturningCall("a call of the test", [&] { makeCall(call, circumstances); }),
              circumstances.printed);
    outcome.code = cells.code[0];
    outcome.message = cells.text();
    outcome.transcript = transcript();
    outcome.files = directory.files();
    EXPECT_TRUE(cells.restOfMessageUntouched());
}

Ending performCallInChild(const Call& call, const Circumstances& circumstances)
{
    const WorkingDirectory directory(circumstances.files);
    const ChildsEnd end = endOfCallInChild([&] { makeCall(call, circumstances); });
    return {end.returned, end.exitStatus, end.printed, false, {}};
}

/// The arrays of one transfer and the call that hands them over.
class PreparedTransfer
{
public:
    explicit PreparedTransfer(const Transfer& transfer)
        : PreparedTransfer(transfer, static_cast<int>(transfer.sourceFields.size()),
                           static_cast<int>(transfer.targetFields.size()))
    {
    }

    PreparedTransfer(const Transfer& transfer, int nbSourceFields, int nbTargetFields)
        : itsTransfer(transfer), itsNbSourceFields(nbSourceFields), itsNbTargetFields(nbTargetFields),
          itsSource(transfer.source), itsTarget(transfer.target), itsFlags(transfer.flags),
          itsSourceFields(transfer.sourceFields), itsTargetFields(transfer.targetFields, transfer.target)
    {
        libraryUnderTest();
    }

    void call(VeltraneCallback callback) const
    {
        if (itsTransfer.target.connectivity.empty())
        {
            libraryUnderTest().meshToPointCloud(
                itsTransfer.mode, itsTransfer.defaultValue, itsSource.nbElements, itsSource.nbNodes,
                itsSource.coordinates(), itsSource.connectivity(), itsSource.types(), itsSource.nbMaterials,
                itsSource.matlIds(), itsSource.matlStates(), itsTarget.nbNodes, itsTarget.coordinates(),
                itsTarget.nbMaterials, itsTarget.matlIds(), itsTarget.matlStates(), itsFlags.data(),
                itsSourceFields.set(itsNbSourceFields), itsTargetFields.set(itsNbTargetFields), cells.message.data(),
                cells.code.data(), callback);
        }
        else
        {
            libraryUnderTest().meshToMesh(
                itsTransfer.mode, itsTransfer.defaultValue, itsSource.nbElements, itsSource.nbNodes,
                itsSource.coordinates(), itsSource.connectivity(), itsSource.types(), itsSource.nbMaterials,
                itsSource.matlIds(), itsSource.matlStates(), itsTarget.nbElements, itsTarget.nbNodes,
                itsTarget.coordinates(), itsTarget.connectivity(), itsTarget.types(), itsTarget.nbMaterials,
                itsTarget.matlIds(), itsTarget.matlStates(), itsFlags.data(), itsSourceFields.set(itsNbSourceFields),
                itsTargetFields.set(itsNbTargetFields), cells.message.data(), cells.code.data(), callback);
        }
    }

    void collect(Outcome& outcome) const
    {
        outcome.fields = itsTargetFields.values();
        EXPECT_TRUE(itsTargetFields.surroundingsUntouched());
    }

    bool outputsUntouched() const
    {
        return cells.untouched() &&
               std::ranges::all_of(
                   itsTargetFields.values(), [](const std::vector<double>& values)
                   { return std::ranges::all_of(values, [](double value) { return value == untouched; }); });
    }

    OutcomeCells cells;

private:
    const Transfer& itsTransfer;
    int itsNbSourceFields;
    int itsNbTargetFields;
    MeshArguments itsSource;
    MeshArguments itsTarget;
    InputArray<int> itsFlags;
    SourceFields itsSourceFields;
    TargetFields itsTargetFields;
};

/// The arrays of one matching and the call that hands them over.
class PreparedMatching
{
public:
    explicit PreparedMatching(const Matching& matching)
        : itsKind(matching.kind), itsSource(matching.source), itsTarget(matching.target), itsFlags(matching.flags),
          itsNodes(matching.target.nodes.size()), itsElements(matching.target), itsPoints(matching.target)
    {
        libraryUnderTest();
    }

    void call(VeltraneCallback callback) const
    {
        if (itsKind == Correspondence::nodes)
        {
            libraryUnderTest().nodeToNode(
                itsSource.nbElements, itsSource.nbNodes, itsSource.coordinates(), itsSource.connectivity(),
                itsSource.types(), itsSource.nbMaterials, itsSource.matlIds(), itsSource.matlStates(),
                itsTarget.nbElements, itsTarget.nbNodes, itsTarget.coordinates(), itsTarget.connectivity(),
                itsTarget.types(), itsTarget.nbMaterials, itsTarget.matlIds(), itsTarget.matlStates(), itsFlags.data(),
                itsNodes.data(), cells.message.data(), cells.code.data(), callback);
        }
        else
        {
            libraryUnderTest().gaussPointToGaussPoint(
                itsSource.nbElements, itsSource.nbNodes, itsSource.coordinates(), itsSource.connectivity(),
                itsSource.types(), itsSource.nbMaterials, itsSource.matlIds(), itsSource.matlStates(),
                itsTarget.nbElements, itsTarget.nbNodes, itsTarget.coordinates(), itsTarget.connectivity(),
                itsTarget.types(), itsTarget.nbMaterials, itsTarget.matlIds(), itsTarget.matlStates(), itsFlags.data(),
                itsElements.data(), itsPoints.data(), cells.message.data(), cells.code.data(), callback);
        }
    }

    void collect(Outcome& outcome) const
    {
        outcome.nodeTable.assign(itsNodes.data(), itsNodes.data() + itsNodes.size());
        outcome.elementsOfGaussPoints = itsElements.entries();
        outcome.pointsOfGaussPoints = itsPoints.entries();
        EXPECT_TRUE(itsNodes.surroundingsUntouched());
        EXPECT_TRUE(itsElements.surroundingsUntouched());
        EXPECT_TRUE(itsPoints.surroundingsUntouched());
    }

    bool outputsUntouched() const { return cells.untouched(); }

    OutcomeCells cells;

private:
    Correspondence itsKind;
    MeshArguments itsSource;
    MeshArguments itsTarget;
    InputArray<int> itsFlags;
    OutputArray<int> itsNodes;
    GaussPointTable itsElements;
    GaussPointTable itsPoints;
};

template <typename Prepared> Outcome runPrepared(const Prepared& prepared, const Circumstances& circumstances)
{
    Outcome outcome;
    performCall([&](VeltraneCallback callback) { prepared.call(callback); }, circumstances, prepared.cells, outcome);
    prepared.collect(outcome);
    return outcome;
}

template <typename Prepared> Ending runPreparedInChild(const Prepared& prepared, const Circumstances& circumstances)
{
    Ending ending = performCallInChild([&](VeltraneCallback callback) { prepared.call(callback); }, circumstances);
    Outcome outcome;
    prepared.collect(outcome);
    ending.fields = outcome.fields;
    ending.outputsUntouched = prepared.outputsUntouched();
    return ending;
}
} // namespace

Outcome Host::run(const Transfer& transfer, const Circumstances& circumstances)
{
    return runPrepared(PreparedTransfer(transfer), circumstances);
}

Outcome Host::run(const Matching& matching, const Circumstances& circumstances)
{
    return runPrepared(PreparedMatching(matching), circumstances);
}

Ending Host::runToTheEnd(const Transfer& transfer, const Circumstances& circumstances)
{
    return runPreparedInChild(PreparedTransfer(transfer), circumstances);
}

Ending Host::runToTheEnd(const Matching& matching, const Circumstances& circumstances)
{
    return runPreparedInChild(PreparedMatching(matching), circumstances);
}

Ending Host::runToTheEndWithFieldCounts(const Transfer& transfer, int nbSourceFields, int nbTargetFields)
{
    return runPreparedInChild(PreparedTransfer(transfer, nbSourceFields, nbTargetFields), {});
}

namespace
{
/// The progress reports of a call that ends well.
std::vector<Report> progressReports(const std::string& title, const std::string& success, int nbPoints)
{
    std::vector<Report> reports = {{0, title, "Pretreatment", 1}, {5, title, "Computation", 1}};
    const int step = std::max(nbPoints / 100, 1);
    for (int done = step; done <= nbPoints; done += step)
    {
        reports.push_back({std::max(done * 100 / nbPoints, 5), title, "Computation", 1});
    }
    reports.push_back({100, title, success, 1});
    return reports;
}
} // namespace

std::vector<Report> successfulTranscript(const std::string& title, const std::string& success, int nbPoints)
{
    std::vector<Report> reports = progressReports(title, success, nbPoints);
    reports.push_back({0, title, "Mapping library exit.", 0});
    return reports;
}

std::vector<Report> cancelledTranscript(const std::string& title, const std::string& cancelled, int nbPoints, int k)
{
    std::vector<Report> reports = progressReports(title, "", nbPoints);
    reports.resize(static_cast<std::size_t>(k), Report{});
    reports.push_back({0, title, cancelled, 0});
    reports.push_back({0, title, "Mapping library exit.", 0});
    return reports;
}
