#include "Checksum.h"
#include "TransferMap.h"

#include <algorithm>

namespace
{
constexpr Stage checksumStage{"Computation", 99, 100};

/// Of the items in pieces of a fixed size, so that the number of workers makes no difference.
template <class AddItems>
void addInPieces(Checksum& checksum, std::int64_t nbItems, Workers& workers, AddItems addItems)
{
    const Pieces pieces{std::max<std::int64_t>(nbItems, 0), std::int64_t{1} << 15};
    OwnedArray<std::uint64_t> parts;
    const bool isDivided = workers.nbWorkers() > 1 && parts.allocate(pieces.count());
    const auto addPiece = [&](std::int64_t piece, int)
    {
        Checksum part;
        addItems(part, pieces.first(piece), pieces.end(piece));
        if (isDivided)
        {
            parts[piece] = part.value();
        }
        else
        {
            checksum.addValue(part.value());
        }
    };
    if (!isDivided)
    {
        for (std::int64_t piece = 0; piece < pieces.count(); ++piece)
        {
            addPiece(piece, 0);
        }
        return;
    }
    workers.run(checksumStage, pieces.count(), addPiece);
    for (std::int64_t piece = 0; piece < pieces.count(); ++piece)
    {
        checksum.addValue(parts[piece]);
    }
}
/// The nodes of elements; those that stand one after another in memory are taken in together.
void addNodes(Checksum& checksum, const ModelClass& model, int first, int end)
{
    for (int elt = first; elt < end;)
    {
        const int* begin = model.itsConnectivity[elt];
        const int* next = begin;
        for (; elt < end && model.itsConnectivity[elt] == next; ++elt)
        {
            next += model.nbNodesOfElt(elt);
        }
        checksum.add(begin, static_cast<std::size_t>(next - begin) * sizeof(int));
    }
}
} // namespace

std::uint64_t checksumOf(const ModelClass& model, const double (*exactCoords)[3], Workers& workers)
{
    Checksum checksum;
    checksum.addValue(model.itsNbNodes);
    checksum.addValue(model.itsNbElts);
    addInPieces(checksum, model.itsNbNodes, workers,
                [&](Checksum& part, std::int64_t first, std::int64_t end)
                { part.add(model.itsNodeCoords + first, sizeof(float[3]) * static_cast<std::size_t>(end - first)); });
    addInPieces(checksum, exactCoords == nullptr ? 0 : model.itsNbNodes, workers,
                [&](Checksum& part, std::int64_t first, std::int64_t end)
                { part.add(exactCoords + first, sizeof(double[3]) * static_cast<std::size_t>(end - first)); });
    addInPieces(checksum, model.itsNbElts, workers,
                [&](Checksum& part, std::int64_t first, std::int64_t end)
                {
                    part.add(model.itsEltTypes + first, sizeof(int) * static_cast<std::size_t>(end - first));
                    addNodes(part, model, static_cast<int>(first), static_cast<int>(end));
                });
    const std::int64_t nbItems = model.itsKind == ModelKind::pointCloud ? model.itsNbNodes : model.itsNbElts;
    addInPieces(checksum, nbItems, workers,
                [&](Checksum& part, std::int64_t first, std::int64_t end)
                { part.add(model.itsMatlIdPerItem + first, sizeof(int) * static_cast<std::size_t>(end - first)); });
    checksum.add(model.itsMatlStates, sizeof(int) * static_cast<std::size_t>(model.itsNbMatls));
    return checksum.value();
}
