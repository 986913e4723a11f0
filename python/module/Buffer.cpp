#include "python/module/Buffer.hpp"

#include <nanobind/nanobind.h>

#include <cstring>

namespace ZARN::Python {

namespace nb = nanobind;

Buffer::Buffer(PyObject* array, const std::string& name, char format) {
  constexpr int kFlags = PyBUF_STRIDES | PyBUF_FORMAT;
  if (PyObject_GetBuffer(array, &view_, kFlags) != 0) throw nb::python_error();
  // A byte order or alignment may stand before the letter.
  const char* const letters = view_.format == nullptr ? "B" : view_.format;
  const char last = letters[std::strlen(letters) - 1];
  const bool isForeign = letters[0] == '>' || letters[0] == '!';
  if (view_.ndim != 1 || last != format || isForeign) {
    const std::string found = letters;
    PyBuffer_Release(&view_);
    throw nb::type_error((name + ": expected one dimension of '" + format +
                          "', got '" + found + "'")
                             .c_str());
  }
}

Buffer::~Buffer() { PyBuffer_Release(&view_); }

}  // namespace ZARN::Python
