#include "VtkMessages.h"

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
    const std::size_t objectEnd = message.find("): ", lineEnd == std::string::npos ? 0 : lineEnd);
    std::string text = objectEnd == std::string::npos ? message : message.substr(objectEnd + 3);
    text.erase(text.find_last_not_of(" \n.") + 1);
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
    void DisplayWarningText(const char*) override {}
    void DisplayGenericWarningText(const char*) override {}
    void DisplayDebugText(const char*) override {}

    std::vector<std::string> errors;
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

} // namespace veltrane
