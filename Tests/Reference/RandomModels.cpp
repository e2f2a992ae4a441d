#include "RandomModels.h"

#include "RandomGeometry.h"
#include "RandomSituations.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>

namespace random_models
{

namespace
{

using reference::index;

std::vector<float> sentinelFloats(int count)
{
    std::vector<float> values(index(count + nbGuardValues));
    std::memset(values.data(), 0xA5, values.size() * sizeof(float));
    return values;
}

std::vector<double> sentinelDoubles(int count)
{
    std::vector<double> values(index(count + nbGuardValues));
    std::memset(values.data(), 0xA5, values.size() * sizeof(double));
    return values;
}

/// A random tuning file and what the library reads from it: three numbers, each kept when it cannot be read.
void addTuning(Random& random, Surroundings& surroundings, double chance)
{
    if (random.chance(0.2))
    {
        surroundings.otherTuningText = "7.5 0.4 1\n";
    }
    if (!random.chance(chance))
    {
        return;
    }
    reference::Tuning tuning;
    tuning.bucketFactor = random.pick<float>({0.1F, 0.0F, 0.3F, 0.5F, 2.0F, -0.1F});
    tuning.refCoordTolerance = random.pick<float>({1e-3F, 1e-3F, 1e-4F, 1e-5F, 1e-6F, 1e-2F, 0.1F, 0.0F});
    tuning.maxNbBuckets = random.pick<long long>({10000000, 1000, 100, 20, 8, 1, 0, -5});
    char text[200];
    switch (random.integer(0, 5))
    {
    case 0:
        tuning.refCoordTolerance = reference::Tuning().refCoordTolerance;
        tuning.maxNbBuckets = reference::Tuning().maxNbBuckets;
        std::snprintf(text, sizeof text, "%.9g", static_cast<double>(tuning.bucketFactor));
        break;
    case 1:
        tuning.maxNbBuckets = reference::Tuning().maxNbBuckets;
        std::snprintf(text, sizeof text, "%.9g\n\t%.9g none\n", static_cast<double>(tuning.bucketFactor),
                      static_cast<double>(tuning.refCoordTolerance));
        break;
    case 2:
        tuning = reference::Tuning();
        std::snprintf(text, sizeof text, "%s", random.chance(0.5) ? "" : "factor = 3");
        break;
    default:
        std::snprintf(text, sizeof text, "%.9g %.9g %lld\n", static_cast<double>(tuning.bucketFactor),
                      static_cast<double>(tuning.refCoordTolerance), tuning.maxNbBuckets);
        break;
    }
    surroundings.tuning = tuning;
    surroundings.tuningText = text;
}

void addCallback(Random& random, Surroundings& surroundings, double refusal)
{
    surroundings.hasOldLog = random.chance(0.3);
    surroundings.callback.present = !random.chance(0.1);
    if (random.chance(refusal))
    {
        surroundings.callback.refusedCall = random.pick<int>({0, 1, 1, 2, 3, 5, 10, 30, 60});
    }
}

std::vector<int> randomFlags(Random& random, std::size_t count, double selected)
{
    std::vector<int> flags;
    for (std::size_t i = 0; i < count; ++i)
    {
        flags.push_back(random.chance(selected) ? 1 : random.pick<int>({0, 0, 2, -1}));
    }
    return flags;
}

double randomValue(Random& random, double scale, double undefinedChance)
{
    if (undefinedChance > 0.0 && random.chance(undefinedChance))
    {
        return random.pick<double>({-1e14, -88880002891776.0, -88879994503168.0, -99990001156096.0,
                                    std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()});
    }
    return scale * random.real(-1.0, 1.0);
}

/// Source fields at nodes vary linearly, so that results mean something to a reader; the others are random.
FieldModel randomRefField(Random& random, const Mesh& source, int number)
{
    FieldModel field;
    field.name = "field " + std::to_string(number);
    field.matlStateFlag = random.pick<int>({0, 0, 1, 2});
    field.location = random.chance(0.6) ? 1 : 2;
    field.nbComponents = random.chance(0.5) ? 1 : random.integer(2, 9);
    field.precision = random.integer(1, 2);
    const double scale = random.pick<double>({1.0, 1.0, 1e-3, 1e6});
    const double undefinedChance = random.chance(0.15) ? 0.03 : 0.0;
    const bool isLinear = field.location == 1 && random.chance(0.5);
    const int count = field.location == 1 ? source.nbNodes() : static_cast<int>(meshes::gaussPointsOf(source));
    for (int i = 0; i < count; ++i)
    {
        for (int c = 0; c < field.nbComponents; ++c)
        {
            double value = randomValue(random, scale, undefinedChance);
            if (isLinear)
            {
                const auto& p = source.nodes[index(i)];
                value = scale * (c + 2.0 * static_cast<double>(p[0]) - static_cast<double>(p[1]) +
                                 0.5 * static_cast<double>(p[2]));
            }
            if (field.precision == 1)
            {
                field.floats.push_back(static_cast<float>(value));
            }
            else
            {
                field.doubles.push_back(value);
            }
        }
    }
    return field;
}

FieldModel randomTargetField(Random& random, const Mesh& target, int number, int sourceComponents, double atGaussPoints)
{
    FieldModel field;
    field.name = "target field " + std::to_string(number);
    field.matlStateFlag = random.pick<int>({0, 0, 1, 2});
    field.location = random.chance(atGaussPoints) ? 2 : 1;
    field.nbComponents = random.chance(0.9) ? sourceComponents : random.integer(1, 9);
    field.precision = random.integer(1, 2);
    field.defaultValueFloat = static_cast<float>(random.real(-10.0, 10.0));
    field.defaultValueDouble = static_cast<float>(random.real(-10.0, 10.0));
    const int count = (field.location == 1 ? target.nbNodes() : static_cast<int>(meshes::gaussPointsOf(target))) *
                      std::max(field.nbComponents, sourceComponents);
    if (field.precision == 1)
    {
        field.floats = sentinelFloats(count);
    }
    else
    {
        field.doubles = sentinelDoubles(count);
    }
    return field;
}

void addFields(Random& random, TransferProblem& problem)
{
    const int nbFields = random.integer(1, 4);
    const int nbTargetFields = nbFields + (random.chance(0.15) ? random.integer(1, 2) : 0);
    const double atGaussPoints = problem.toPointCloud ? 0.1 : 0.4;
    for (int i = 0; i < nbFields; ++i)
    {
        problem.refFields.push_back(randomRefField(random, problem.source, i));
    }
    for (int i = 0; i < nbTargetFields; ++i)
    {
        const int sourceComponents = i < nbFields ? problem.refFields[index(i)].nbComponents : random.integer(1, 3);
        problem.targetFields.push_back(randomTargetField(random, problem.target, i, sourceComponents, atGaussPoints));
    }
    problem.defaultValue = static_cast<float>(random.real(-100.0, 100.0));
}

/// All materials of a mesh behave as one, so that nothing but geometry decides.
void unifyStates(Random& random, TransferProblem& problem)
{
    const int state = random.pick(stateCodes);
    problem.source.matlStates.assign(problem.source.matlStates.size(), state);
    problem.target.matlStates.assign(problem.target.matlStates.size(), state);
}

} // namespace

FieldStruct FieldModel::record()
{
    FieldStruct result{};
    std::snprintf(result.name, sizeof result.name, "%s", name.c_str());
    result.matlStateFlag = matlStateFlag;
    result.location = location;
    result.nbComponents = nbComponents;
    result.precision = precision;
    result.valuesFloat = precision == 1 ? floats.data() : reinterpret_cast<float*>(std::uintptr_t{8});
    result.valuesDouble = precision == 2 ? doubles.data() : reinterpret_cast<double*>(std::uintptr_t{8});
    result.defaultValueFloat = precision == 1 ? defaultValueFloat : 12345.0F;
    result.defaultValueDouble = precision == 2 ? defaultValueDouble : 54321.0F;
    return result;
}

FieldsSet::FieldsSet(std::vector<FieldModel>& fields, std::optional<int> announced)
    : itsNbFields(announced.value_or(static_cast<int>(fields.size())))
{
    for (FieldModel& field : fields)
    {
        itsRecords.push_back(field.record());
    }
}

FieldsSetStruct FieldsSet::record()
{
    return {itsNbFields, itsRecords.data()};
}

TransferProblem randomMeshTransfer(std::uint64_t seed)
{
    Random random(seed);
    TransferProblem problem;
    const Body body = randomBody(random);
    const int theme = random.integer(0, 21);
    const bool hasHole = theme >= 6 && theme <= 11;
    TargetStyle style;
    style.inside = random.chance(0.6);
    style.isSkin = theme == 12;
    style.isFine = theme == 13 && seed % 2 == 0;
    style.foreign = theme == 10 || theme == 14 ? 0.4 : theme == 11 ? 0.0 : 0.05;
    style.detached = theme == 14 ? 0.7 : 0.15;
    problem.interpoMode = random.integer(0, 2);
    if (hasHole || theme == 14)
    {
        problem.interpoMode = random.pick<int>({0, 1, 1, 2, 2, 2});
    }
    if (theme == 21)
    {
        makeLattice(random, problem.source, problem.target);
    }
    else
    {
        problem.source = randomSourceMesh(random, body,
                                          hasHole                        ? SourceStyle::withHole
                                          : theme == 13 && !style.isFine ? SourceStyle::fine
                                                                         : SourceStyle::ordinary);
        problem.target = randomTargetMesh(random, problem.source, body, style);
    }
    if (theme <= 3 || (hasHole && random.chance(0.7)) || theme == 19)
    {
        unifyStates(random, problem);
    }
    problem.mappingFlags = randomFlags(random, problem.target.matlStates.size(), 0.8);
    if (random.chance(0.6))
    {
        problem.mappingFlags.assign(problem.mappingFlags.size(), 1);
    }
    if (random.chance(0.05))
    {
        shadow(random, problem.target, problem.mappingFlags);
    }
    if (theme == 15 && random.chance(0.5))
    {
        touchInclusionLimit(random, problem);
    }
    else if (theme == 15)
    {
        for (auto& node : problem.target.nodes)
        {
            node[index(random.integer(0, 2))] += static_cast<float>(random.real(0.02, 0.5) * body.size[0]);
        }
    }
    if (theme == 19)
    {
        addDegenerateElement(random, problem, random.chance(0.3));
    }
    if (theme == 20 || (hasHole && random.chance(0.3)))
    {
        snapToBuckets(random, problem);
    }
    addFields(random, problem);
    if (theme == 16)
    {
        spoilRequest(random, problem);
    }
    addTuning(random, problem.surroundings, theme == 17 ? 1.0 : 0.2);
    addCallback(random, problem.surroundings, theme == 18 ? 1.0 : 0.04);
    return problem;
}

TransferProblem randomPointCloudTransfer(std::uint64_t seed)
{
    Random random(seed);
    TransferProblem problem;
    problem.toPointCloud = true;
    const Body body = randomBody(random);
    const int theme = random.integer(0, 9);
    problem.interpoMode = random.integer(0, 1);
    problem.source = randomSourceMesh(random, body,
                                      theme == 1   ? SourceStyle::withHole
                                      : theme == 2 ? SourceStyle::fine
                                                   : SourceStyle::ordinary);
    problem.target = randomPointCloud(random, problem.source, body, theme <= 4 ? 0.0 : 0.1);
    if (random.chance(0.7))
    {
        unifyStates(random, problem);
    }
    problem.mappingFlags = randomFlags(random, problem.target.matlStates.size(), 0.85);
    if (theme == 7)
    {
        addDegenerateElement(random, problem, random.chance(0.3));
    }
    if (theme <= 1)
    {
        snapToBuckets(random, problem);
    }
    addFields(random, problem);
    if (theme == 8)
    {
        spoilRequest(random, problem);
    }
    addTuning(random, problem.surroundings, 0.3);
    addCallback(random, problem.surroundings, theme == 9 ? 1.0 : 0.04);
    return problem;
}

CorrespondenceProblem randomCorrespondence(std::uint64_t seed)
{
    Random random(seed);
    CorrespondenceProblem problem;
    const Body body = randomBody(random);
    const int theme = random.integer(0, 19);

    Cutting cutting = randomSource(random, body, SourceStyle::ordinary);
    if (random.chance(0.6))
    {
        std::erase(cutting.kinds, CellKind::pyramids);
        if (cutting.kinds.empty())
        {
            cutting.kinds = {CellKind::hexahedron};
        }
    }
    const int nbMatls = random.integer(1, 3);
    cutting.matl = randomMaterials(random, nbMatls, cutting.cells);
    cutting.detached = random.chance(0.4);
    problem.source = cut(random, cutting);
    problem.source.matlStates = randomStates(random, nbMatls);
    if (random.chance(0.3))
    {
        renumber(random, problem.source);
    }

    // A copy, an extract, or an extract with numbers of its own.
    problem.target = problem.source;
    if (theme >= 3)
    {
        std::vector<bool> marks;
        const double share = random.pick<double>({1.0, 0.5, 0.1});
        for (int e = 0; e < problem.source.nbElts(); ++e)
        {
            marks.push_back(e == 0 || random.chance(share));
        }
        problem.target = extract(problem.source, marks);
    }
    if (theme >= 7 && random.chance(0.6))
    {
        renumber(random, problem.target);
    }
    if (theme >= 5 && random.chance(0.3))
    {
        turnElements(random, problem.target);
    }
    if (random.chance(0.2))
    {
        addUnusedNodes(random, problem.target, random.integer(1, 3));
    }
    problem.mappingFlags = randomFlags(random, problem.target.matlStates.size(), theme == 12 ? 0.0 : 0.85);
    if (theme == 12 && random.chance(0.7))
    {
        problem.mappingFlags.assign(problem.mappingFlags.size(), 1);
        shadow(random, problem.target, problem.mappingFlags);
    }
    switch (theme)
    {
    case 13:
    case 14: moveNodesByTolerance(random, problem.source, problem.target); break;
    case 15: problem.target.matlStates[0] = random.pick(stateCodes); break;
    case 16:
        for (auto& node : problem.target.nodes)
        {
            node[0] += static_cast<float>(random.pick<double>({0.02, 0.3}) * body.size[0]);
        }
        break;
    case 17:
    {
        // A quadrilateral in the source, where the target may have a pyramid.
        const int e = random.integer(0, problem.source.nbElts() - 1);
        problem.source.types[index(e)] = 6;
        if (e < problem.target.nbElts() && problem.target.types[index(e)] != 2 && random.chance(0.7))
        {
            problem.target.types[index(e)] = 12;
        }
        break;
    }
    case 18:
        switch (random.integer(0, 2))
        {
        case 0:
            problem.target.types[index(random.integer(0, problem.target.nbElts() - 1))] =
                random.pick<int>({6, 7, 8, 9, 14, 0, 99});
            break;
        case 1:
            problem.source.types[index(random.integer(0, problem.source.nbElts() - 1))] =
                random.pick<int>({6, 7, 8, 9, 14});
            break;
        default: (random.chance(0.5) ? problem.source : problem.target).matlStates.clear(); break;
        }
        break;
    default: break;
    }
    addTuning(random, problem.surroundings, 0.25);
    addCallback(random, problem.surroundings, theme == 19 ? 1.0 : 0.05);
    return problem;
}

} // namespace random_models
