/// The exceptions of reading and writing files.
#ifndef VELTRANE_HOST_FILE_ERRORS_H
#define VELTRANE_HOST_FILE_ERRORS_H

#include "Errors.h"

namespace veltrane
{

/// A file that is not there or cannot be opened.
class NoInput : public Error
{
public:
    using Error::Error;
};

/// A file whose contents are not what is needed.
class BadFile : public Error
{
public:
    using Error::Error;
};

/// A file that cannot be written.
class CannotWrite : public Error
{
public:
    using Error::Error;
};

} // namespace veltrane

#endif
