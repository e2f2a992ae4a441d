#include "VtkMessages.h"

#include <vtkErrorCode.h>
#include <vtkLogger.h>
#include <vtkObjectFactory.h>

#include <algorithm>

namespace veltrane
{
namespace
{

/// "ERROR: In file, line n\nvtkClass (0x...): text\n\n" to "text".
std::string bareText(const std::string& message)
{
    const std::size_t lineEnd = message.find('\n');
    const std::size_t textBegin = lineEnd == std::string::npos ? 0 : lineEnd + 1;
    const std::size_t objectEnd = message.find("): ", textBegin);
    std::string text = message.substr(objectEnd == std::string::npos ? textBegin : objectEnd + 3);
    text.erase(text.find_last_not_of(" \n.!") + 1);
    std::ranges::replace(text, '\n', ' ');
    return text;
}

} // namespace

class VtkMessages::Window : public vtkOutputWindow
{
public:
    static Window* New();
    vtkTypeMacro(Window, vtkOutputWindow)

        void DisplayText(const char*) override
    {
    }
    void DisplayErrorText(const char* message) override { errors.push_back(bareText(message)); }
    void DisplayWarningText(const char* message) override { warnings.push_back(bareText(message)); }
    /// Where no object is at hand, VTK only warns: of a legacy file that ends too early, for example.
    void DisplayGenericWarningText(const char* message) override { errors.push_back(bareText(message)); }
    void DisplayDebugText(const char*) override {}

    std::vector<std::string> errors;
    std::vector<std::string> warnings;
};

vtkStandardNewMacro(VtkMessages::Window);

VtkMessages::VtkMessages() : previous_(vtkOutputWindow::GetInstance()), window_(vtkSmartPointer<Window>::New())
{
    vtkOutputWindow::SetInstance(window_);
    // The logger gets everything beside the window. Its level cannot be asked for.
    vtkLogger::SetStderrVerbosity(vtkLogger::VERBOSITY_OFF);
}

VtkMessages::~VtkMessages()
{
    vtkLogger::SetStderrVerbosity(vtkLogger::VERBOSITY_INFO);
    vtkOutputWindow::SetInstance(previous_);
}

const std::vector<std::string>& VtkMessages::errors() const
{
    return window_->errors;
}

const std::vector<std::string>& VtkMessages::warnings() const
{
    return window_->warnings;
}

std::optional<std::string> VtkMessages::failureReason(unsigned long errorCode) const
{
    if (errors().empty() && errorCode == vtkErrorCode::NoError)
    {
        return std::nullopt;
    }
    const auto found =
        std::ranges::find_if(errors(), [](const auto& error) { return !error.starts_with("Algorithm "); });
    if (found != errors().end())
    {
        return *found;
    }
    switch (errorCode)
    {
    case vtkErrorCode::NoError: return "VTK gives no reason";
    case vtkErrorCode::OutOfDiskSpaceError: return "there is not enough disk space";
    default: return vtkErrorCode::GetStringFromErrorCode(errorCode);
    }
}

} // namespace veltrane
