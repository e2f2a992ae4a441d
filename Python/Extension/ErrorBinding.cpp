#include "Bindings.h"

#include "Errors.h"

#include <cstring>
#include <exception>

namespace veltrane
{
namespace
{

namespace nb = nanobind;

/// Sentences may quote names of files that are no UTF-8.
nb::object sentenceOf(const std::exception& error)
{
    const auto size = static_cast<Py_ssize_t>(std::strlen(error.what()));
    return nb::steal(PyUnicode_DecodeUTF8(error.what(), size, "backslashreplace"));
}

template <class... Rest> void raise(const char* name, const std::exception& error, Rest... rest)
{
    const nb::object type = nb::module_::import_("veltrane._errors").attr(name);
    PyErr_SetObject(type.ptr(), type(sentenceOf(error), rest...).ptr());
}

void translate(const std::exception_ptr& thrown, void*)
{
    try
    {
        std::rethrow_exception(thrown);
    }
    catch (const InvalidData& error)
    {
        raise("InvalidDataError", error);
    }
    catch (const InvalidOption& error)
    {
        raise("InvalidOptionError", error);
    }
    catch (const TargetOutside& error)
    {
        raise("OutsideError", error);
    }
    catch (const SingularElement& error)
    {
        raise("SingularElementError", error, error.element());
    }
    catch (const TransferError& error)
    {
        raise("TransferError", error);
    }
    catch (const Cancelled& error)
    {
        raise("CancelledError", error);
    }
    catch (const Error& error)
    {
        raise("Error", error);
    }
}

} // namespace

void bindErrors()
{
    nb::register_exception_translator(translate);
}

} // namespace veltrane
