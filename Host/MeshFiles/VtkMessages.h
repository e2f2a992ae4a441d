/// VTK's errors and warnings as texts instead of noise on standard error.
#ifndef VELTRANE_HOST_VTK_MESSAGES_H
#define VELTRANE_HOST_VTK_MESSAGES_H

#include <vtkOutputWindow.h>
#include <vtkSmartPointer.h>

#include <optional>
#include <string>
#include <vector>

namespace veltrane
{

/// While it lives, whatever VTK has to say ends up here.
class VtkMessages
{
public:
    VtkMessages();
    ~VtkMessages();
    VtkMessages(const VtkMessages&) = delete;
    VtkMessages& operator=(const VtkMessages&) = delete;

    /// Without places in VTK's sources and addresses of its objects, each in one line.
    const std::vector<std::string>& errors() const;

    /// The same of what is no failure.
    const std::vector<std::string>& warnings() const;

    /// Why VTK has failed, or nothing if it has not: the first error that does not only pass on a failure, or else what
    /// the error code of the reader or writer stands for.
    std::optional<std::string> failureReason(unsigned long errorCode) const;

private:
    class Window;
    vtkSmartPointer<vtkOutputWindow> previous_;
    vtkSmartPointer<Window> window_;
};

} // namespace veltrane

#endif
