/// The built command as a process.
#ifndef VELTRANE_TESTS_COMMAND_RUNNER_H
#define VELTRANE_TESTS_COMMAND_RUNNER_H

#include "TemporaryDirectory.h"

#include <sys/resource.h>

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

struct CommandResult
{
    int status; ///< -1 if a signal ended the process
    std::string output;
    std::string errors;   ///< what standard error has got beside the progress
    std::string progress; ///< its lines about the stages of the work
};

/// Runs the command in a directory of its own with a place of its own for temporary files.
class CommandRunner
{
public:
    /// \param maxFileSize  writing more bytes than that into a file fails
    CommandResult run(const std::vector<std::string>& arguments, std::optional<rlim_t> maxFileSize = {}) const;

    /// \param prepare  is called in the process that becomes the command
    CommandResult runPrepared(const std::function<void()>& prepare, const std::vector<std::string>& arguments) const;

    /// Runs the command with a terminal as standard error and sends it a signal as soon as it has written a text there,
    /// and again as often as told; `errors` is what came before and after.
    CommandResult runAndInterrupt(const std::vector<std::string>& arguments, int signal, const std::string& awaited,
                                  int times = 1) const;

    const TemporaryDirectory& directory() const { return directory_; }
    std::filesystem::path file(const std::string& name) const { return directory_ / name; }

    /// What the command has left where temporary files go.
    std::set<std::string> temporaryNames() const { return temporary_.names(); }

private:
    [[noreturn]] void becomeCommand(const std::vector<std::string>& arguments) const;

    TemporaryDirectory directory_;
    TemporaryDirectory temporary_;
};

/// Expects the command to fail with a status and one sentence, to print nothing else and to leave nothing behind.
void expectFailure(const CommandRunner& runner, int status, const std::string& sentence,
                   const std::vector<std::string>& arguments);

/// Expects the command to be cancelled by Ctrl-C while it reads and while it computes, and to leave nothing behind.
void expectCancellation(const CommandRunner& runner, const std::vector<std::string>& arguments);

#endif
