/// One object for each worker, made together and given back together.
#ifndef VELTRANE_PER_WORKER_H
#define VELTRANE_PER_WORKER_H

#include "../Allocation.h"

#include <memory>

template <class T> class PerWorker
{
public:
    PerWorker() = default;
    PerWorker(const PerWorker&) = delete;
    PerWorker& operator=(const PerWorker&) = delete;
    ~PerWorker()
    {
        std::destroy_n(itsObjects, itsCount);
        releaseBytes(itsObjects);
    }

    /// Once. False if there is no memory.
    bool allocate(int nbWorkers)
    {
        itsObjects = allocateArray<T>(nbWorkers);
        if (itsObjects == nullptr)
        {
            return false;
        }
        std::uninitialized_default_construct_n(itsObjects, nbWorkers);
        itsCount = nbWorkers;
        return true;
    }

    T& operator[](int worker) { return itsObjects[worker]; }

private:
    T* itsObjects = nullptr;
    int itsCount = 0;
};

#endif
