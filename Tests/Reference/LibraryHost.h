/// The host's side of a call: the loaded library, the callback that keeps a transcript, and a working directory per
/// call.
#ifndef LIBRARY_HOST_H
#define LIBRARY_HOST_H

#include "RandomModels.h"
#include "ReferenceTypes.h"
#include "Veltrane.h"

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace library_host
{

using NodeMatchFunction = void(int, int, float (*)[3], int**, int*, int, int*, int*, int, int, float (*)[3], int**,
                               int*, int, int*, int*, int*, int*, char*, int*, VeltraneCallback);
using GaussPointMatchFunction = void(int, int, float (*)[3], int**, int*, int, int*, int*, int, int, float (*)[3],
                                     int**, int*, int, int*, int*, int*, int**, int**, char*, int*, VeltraneCallback);

/// The entries of the library; null where it does not export one.
struct Library
{
    decltype(&FE3DMeshToFE3DMesh_VariablesInterpolation) transferToMesh = nullptr;
    decltype(&FE3DMEshToPtCloud_VariablesInterpolation) transferToPointCloud = nullptr;
    NodeMatchFunction* matchNodes = nullptr;
    GaussPointMatchFunction* matchGaussPoints = nullptr;

    static const Library& get();

private:
    Library();
};

/// The callback of one call, null if the host has none. It begins a new transcript.
VeltraneCallback beginCall(const reference::HostCallback& host);

/// What the callback has received since then.
const std::vector<reference::CallbackCall>& transcript();

/// Runs a call that is to return. If the library ends the process instead, the process fails and names the call:
/// otherwise the test would end with status 0.
void runReturningCall(const std::string& name, const std::function<void()>& call);

/// How a call in a child process came to its end.
struct Ending
{
    bool returned = false;
    int waitStatus = 0;  ///< as waitpid gives it
    std::string printed; ///< on standard output
};

Ending runInChild(const std::function<void()>& call);

/// Runs a call that is to end its process with that text on standard output, in a child; describes what differs.
std::string differenceOfFatalCall(const std::function<void()>& call, const std::string& expectedOutput);

/// A working directory of its own for one call, with the files that the call finds there.
class WorkingDirectory
{
public:
    WorkingDirectory(const std::string& name, const random_models::Surroundings& surroundings,
                     const std::string& tuningFile);
    ~WorkingDirectory();
    WorkingDirectory(const WorkingDirectory&) = delete;
    WorkingDirectory& operator=(const WorkingDirectory&) = delete;

    /// Removes the log from the files and returns its text.
    std::optional<std::string> takeLog();

    /// What has changed in the directory apart from the log; empty when nothing has.
    std::string disturbance() const;

private:
    void put(const std::string& name, const std::string& text);

    std::filesystem::path itsHome;
    std::filesystem::path itsPath;
    std::map<std::string, std::string> itsFiles;
};

} // namespace library_host

#endif
