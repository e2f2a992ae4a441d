/// Random problems handed to the loaded library, in the form in which a host hands them over.
#ifndef LIBRARY_CALLS_H
#define LIBRARY_CALLS_H

#include "LibraryHost.h"
#include "RandomModels.h"
#include "TemporaryDirectory.h"

#include <functional>
#include <map>
#include <optional>
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
    CorrespondenceTables(const meshes::Mesh& target, bool ofNodes);

    IntegerTable first;
    IntegerTable second;
};

/// A working directory of its own for one call, with the files that the call finds there.
class CallDirectory
{
public:
    CallDirectory(const random_models::Surroundings& surroundings, const std::string& tuningFile);

    /// Removes the log from the files and returns its text.
    std::optional<std::string> takeLog();

    /// What has changed in the directory apart from the log; empty when nothing has.
    std::string disturbance() const;

private:
    std::map<std::string, std::string> itsFiles;
    WorkingDirectory itsDirectory;
};

/// The tuning files that the computations read.
constexpr const char* tuningFileOfTransfers = "mappingInputs.txt";
const char* tuningFileOfCorrespondence(bool ofNodes);

/// One call of the library. The problem's arrays are those that it reads and writes.
void callTransfer(random_models::TransferProblem& problem, Result& result);
void callCorrespondence(random_models::CorrespondenceProblem& problem, bool ofNodes, CorrespondenceTables& tables,
                        Result& result);

/// What the callback has received in the last call.
std::vector<reference::CallbackCall> receivedCalls();

/// Runs a call that is to end its process with that text on standard output, in a child; describes what differs.
std::string differenceOfFatalCall(const std::function<void()>& call, const std::string& expectedOutput);

} // namespace library_host

#endif
