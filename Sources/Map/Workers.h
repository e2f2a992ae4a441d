/// The seam through which threads enter: whoever builds or applies a map may hand over an object that runs independent
/// pieces of work side by side. The engine itself starts no thread, and no result depends on how the pieces are run.
#ifndef VELTRANE_WORKERS_H
#define VELTRANE_WORKERS_H

#include <algorithm>
#include <cstdint>
#include <memory>

/// A borrowed function of the number of a piece and of the worker that it is run by.
class PieceOfWork
{
public:
    /// Whatever can be called is one.
    template <class Function>
    PieceOfWork(const Function& function)
        : itsFunction(std::addressof(function)), itsCall([](const void* object, std::int64_t piece, int worker)
                                                         { (*static_cast<const Function*>(object))(piece, worker); })
    {
    }

    void operator()(std::int64_t piece, int worker) const { itsCall(itsFunction, piece, worker); }

private:
    const void* itsFunction;
    void (*itsCall)(const void*, std::int64_t, int);
};

/// What a caller may be told while the pieces are run: a stage, and the percentages between which it lies.
struct Stage
{
    const char* name;
    int from;
    int to;
};

class Workers
{
public:
    Workers() = default;
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;
    virtual ~Workers() = default;

    /// How many pieces may be run at once, at least 1.
    virtual int nbWorkers() const = 0;

    /// Runs the pieces 0 to nbPieces - 1, each once, in any order; no two at once have the same worker, a number below
    /// nbWorkers(). Returns when none is running any more: true if all were run, false if the caller wants to stop.
    virtual bool run(const Stage& stage, std::int64_t nbPieces, PieceOfWork piece) = 0;
};

/// Everything on the caller's thread.
class OneWorker : public Workers
{
public:
    int nbWorkers() const override { return 1; }
    bool run(const Stage&, std::int64_t nbPieces, PieceOfWork piece) override
    {
        for (std::int64_t i = 0; i < nbPieces; ++i)
        {
            piece(i, 0);
        }
        return true;
    }
};

/// A range of items cut into pieces of the same size, the last one perhaps smaller.
struct Pieces
{
    std::int64_t nbItems;
    std::int64_t size;

    std::int64_t count() const { return (nbItems + size - 1) / size; }
    std::int64_t first(std::int64_t piece) const { return piece * size; }
    std::int64_t end(std::int64_t piece) const { return std::min(nbItems, (piece + 1) * size); }
};

/// Pieces of at most `most` items, several per worker if there are enough items for it to be worth while.
inline Pieces piecesFor(const Workers& workers, std::int64_t nbItems, std::int64_t most = std::int64_t{1} << 16)
{
    constexpr std::int64_t least = 2048;
    constexpr std::int64_t perWorker = 4;
    const std::int64_t wanted = nbItems / (perWorker * workers.nbWorkers());
    return {nbItems, std::clamp(wanted, std::min(least, most), most)};
}

/// One piece per worker: for work that keeps a table of its own per piece.
inline Pieces onePiecePerWorker(const Workers& workers, std::int64_t nbItems)
{
    return {nbItems, std::max<std::int64_t>(1, (nbItems + workers.nbWorkers() - 1) / workers.nbWorkers())};
}

/// Calls visit(item) for every item, in pieces; false if the caller wants to stop.
template <class Visit> bool forEachItem(Workers& workers, const Stage& stage, std::int64_t nbItems, Visit visit)
{
    const Pieces pieces = piecesFor(workers, nbItems);
    const auto visitPiece = [&](std::int64_t piece, int)
    {
        const std::int64_t end = pieces.end(piece);
        for (std::int64_t item = pieces.first(piece); item < end; ++item)
        {
            visit(item);
        }
    };
    return workers.run(stage, pieces.count(), visitPiece);
}

#endif
