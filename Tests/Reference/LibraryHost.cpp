#include "LibraryHost.h"

#include "Comparison.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

// Present when the leak detector is: a child that ends inside the library leaves its memory to the system.
extern "C" void __attribute__((weak)) __lsan_disable();

namespace library_host
{

using random_models::Surroundings;
using reference::CallbackCall;

namespace
{

reference::HostCallback theHost;
std::vector<CallbackCall> theTranscript;

/// The name of the call that is to return, while it runs.
std::string theCallInProgress;

int record(int progress, char* title, char* stage, int kind)
{
    const int number = static_cast<int>(theTranscript.size());
    theTranscript.push_back({progress, title, stage, kind});
    return number == theHost.refusedCall ? 0 : 1;
}

void reportUnexpectedExit()
{
    if (!theCallInProgress.empty())
    {
        std::fprintf(stderr, "The library ended the process unexpectedly in %s\n", theCallInProgress.c_str());
        std::_Exit(1);
    }
}

std::string contents(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

template <typename Function> void find(void* handle, const char* name, Function*& function)
{
    function = reinterpret_cast<Function*>(dlsym(handle, name));
}

} // namespace

const Library& Library::get()
{
    static const Library library;
    return library;
}

Library::Library()
{
    const char* path = std::getenv("VELTRANE_LIBRARY_PATH");
    void* handle = dlopen(path != nullptr ? path : VELTRANE_LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr)
    {
        std::cerr << dlerror() << '\n';
        return;
    }
    find(handle, "FE3DMeshToFE3DMesh_VariablesInterpolation", transferToMesh);
    find(handle,
         "_Z40FE3DMEshToPtCloud_VariablesInterpolationifiiPA3_fPPiS1_iS1_S1_iS0_iS1_S1_S1_15FieldsSetStructS3_"
         "PcS1_PFiiS4_S4_iE",
         transferToPointCloud);
    find(handle, "FE3DMeshToFE3DMesh_NodeToNodeMapping", matchNodes);
    find(handle, "FE3DMeshToFE3DMesh_GPToGPMapping", matchGaussPoints);
}

VeltraneCallback beginCall(const reference::HostCallback& host)
{
    theHost = host;
    theTranscript.clear();
    return host.present ? record : nullptr;
}

const std::vector<CallbackCall>& transcript()
{
    return theTranscript;
}

void runReturningCall(const std::string& name, const std::function<void()>& call)
{
    static const int registered = std::atexit(reportUnexpectedExit);
    theCallInProgress = registered == 0 ? name : "";
    try
    {
        call();
    }
    catch (...)
    {
        theCallInProgress.clear();
        throw;
    }
    theCallInProgress.clear();
}

Ending runInChild(const std::function<void()>& call)
{
    constexpr int statusOfReturn = 99;
    int ends[2];
    if (pipe(ends) != 0)
    {
        return {false, -1, "no pipe"};
    }
    std::fflush(nullptr);
    std::cout.flush();
    const pid_t child = fork();
    if (child == 0)
    {
        dup2(ends[1], STDOUT_FILENO);
        close(ends[0]);
        close(ends[1]);
        alarm(60);
        theCallInProgress.clear();
        if (&__lsan_disable != nullptr)
        {
            __lsan_disable();
        }
        try
        {
            call();
        }
        catch (...)
        {
            _exit(98);
        }
        std::fflush(nullptr);
        _exit(statusOfReturn);
    }
    close(ends[1]);
    Ending ending;
    char buffer[4096];
    for (ssize_t size = read(ends[0], buffer, sizeof buffer); size > 0; size = read(ends[0], buffer, sizeof buffer))
    {
        ending.printed.append(buffer, static_cast<std::size_t>(size));
    }
    close(ends[0]);
    waitpid(child, &ending.waitStatus, 0);
    ending.returned = WIFEXITED(ending.waitStatus) && WEXITSTATUS(ending.waitStatus) == statusOfReturn;
    return ending;
}

std::string differenceOfFatalCall(const std::function<void()>& call, const std::string& expectedOutput)
{
    const Ending ending = runInChild(call);
    if (ending.returned)
    {
        return "the call returned, expected the end of the process with \"" + expectedOutput + "\"";
    }
    if (!WIFEXITED(ending.waitStatus) || WEXITSTATUS(ending.waitStatus) != 0)
    {
        return "the process ended with wait status " + std::to_string(ending.waitStatus) +
               ", expected an exit with status 0";
    }
    return comparison::differenceOfTexts("standard output", ending.printed, expectedOutput);
}

WorkingDirectory::WorkingDirectory(const std::string& name, const Surroundings& surroundings,
                                   const std::string& tuningFile)
    : itsHome(std::filesystem::current_path()),
      itsPath(std::filesystem::temp_directory_path() /
              ("veltrane_differential_" + std::to_string(getpid()) + "_" + name))
{
    std::filesystem::create_directories(itsPath);
    std::filesystem::current_path(itsPath);
    if (surroundings.tuningText)
    {
        put(tuningFile, *surroundings.tuningText);
    }
    if (surroundings.otherTuningText)
    {
        put(tuningFile == "nodToNodInputs.txt" ? "mappingInputs.txt" : "nodToNodInputs.txt",
            *surroundings.otherTuningText);
    }
    if (surroundings.hasOldLog)
    {
        std::ofstream("interpoLog.txt") << "an earlier call's log\n";
    }
}

WorkingDirectory::~WorkingDirectory()
{
    std::filesystem::current_path(itsHome);
    std::filesystem::remove_all(itsPath);
}

std::optional<std::string> WorkingDirectory::takeLog()
{
    if (!std::filesystem::exists("interpoLog.txt"))
    {
        return std::nullopt;
    }
    const std::string text = contents("interpoLog.txt");
    std::filesystem::remove("interpoLog.txt");
    return text;
}

std::string WorkingDirectory::disturbance() const
{
    std::map<std::string, std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator("."))
    {
        found[entry.path().filename().string()] = contents(entry.path());
    }
    if (found == itsFiles)
    {
        return "";
    }
    std::string names;
    for (const auto& [name, text] : found)
    {
        names += " " + name;
    }
    return "the working directory's files have changed; it holds now:" + names;
}

void WorkingDirectory::put(const std::string& name, const std::string& text)
{
    std::ofstream(name, std::ios::binary) << text;
    itsFiles[name] = text;
}

} // namespace library_host
