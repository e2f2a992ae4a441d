/// Random problems handed to the loaded library, in the form in which a host hands them over.
#ifndef LIBRARY_CALLS_H
#define LIBRARY_CALLS_H

#include "RandomModels.h"

#include <string>
#include <vector>

namespace library_host
{

/// What the library hands back through its message and error-code arguments.
struct Result
{
    int errorCode = 777;
    std::vector<char> message = std::vector<char>(1000 + 16, '#');

    /// The message up to its end.
    std::string text() const;
};

/// An integer table of the correspondences, with a guard behind every row.
struct IntegerTable
{
    IntegerTable(int nbRows, int nbColumns);
    IntegerTable(const IntegerTable&) = delete;
    IntegerTable& operator=(const IntegerTable&) = delete;

    std::vector<std::vector<int>> rows;
    std::vector<int*> pointers;
};

/// The tables of one correspondence: a row of nodes, or a row of at most eight Gauss points per element.
struct CorrespondenceTables
{
    CorrespondenceTables(const random_models::MeshModel& target, bool ofNodes);

    IntegerTable first;
    IntegerTable second;
};

/// The tuning files that the computations read.
constexpr const char* tuningFileOfTransfers = "mappingInputs.txt";
const char* tuningFileOfCorrespondence(bool ofNodes);

/// One call of the library. The problem's arrays are those that it reads and writes.
void callTransfer(random_models::TransferProblem& problem, Result& result);
void callCorrespondence(random_models::CorrespondenceProblem& problem, bool ofNodes, CorrespondenceTables& tables,
                        Result& result);

} // namespace library_host

#endif
