/// The exceptions of the host side. Each carries one clear sentence.
#ifndef VELTRANE_HOST_ERRORS_H
#define VELTRANE_HOST_ERRORS_H

#include <stdexcept>
#include <string>
#include <utility>

namespace veltrane
{

/// What every exception of the host side is.
class Error : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// A mesh, point cloud or field that contradicts itself, or that the computation asked for cannot work on.
class InvalidData : public Error
{
public:
    using Error::Error;
};

/// A setting outside its range, or one that does not go with the computation asked for.
class InvalidOption : public Error
{
public:
    using Error::Error;
};

/// A computation that the library ended without a result: its message, one line, and its code.
class TransferError : public Error
{
public:
    TransferError(std::string message, int code) : Error(std::move(message)), code_(code) {}

    /// The library's outcome code: 1 the computation failed, 2 target points lie outside the source.
    int code() const { return code_; }

private:
    int code_;
};

/// Target points lie outside the source, and the mode says that this is an error (code 2).
class TargetOutside : public TransferError
{
public:
    explicit TargetOutside(std::string message) : TransferError(std::move(message), 2) {}
};

/// The Jacobian of a source element has become singular on the way to a target point (code 1).
class SingularElement : public TransferError
{
public:
    explicit SingularElement(int element)
        : TransferError("the Jacobian of source element " + std::to_string(element) +
                            " becomes singular on the way to a target point",
                        1),
          element_(element)
    {
    }

    int element() const { return element_; } ///< from 0

private:
    int element_;
};

/// The progress callback asked to stop.
class Cancelled : public Error
{
public:
    using Error::Error;
};

} // namespace veltrane

#endif
