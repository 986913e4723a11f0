#pragma once

#include <Python.h>

#include <cstddef>
#include <string>

namespace ZARN::Python {

/// The memory of a one-dimensional array that Python owns, also of a field of
/// packed records; held while this lives.
class Buffer {
 public:
  /// @param array   any object with Python's buffer interface
  /// @param name    of the array, for errors
  /// @param format  of an element, as in Python's struct module: 'd' or 'i'
  /// @throws nanobind::type_error, nanobind::python_error
  Buffer(PyObject* array, const std::string& name, char format);
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;
  /// Requires the interpreter lock.
  ~Buffer();

  std::size_t Size() const { return static_cast<std::size_t>(view_.shape[0]); }
  const void* First() const { return view_.buf; }
  std::ptrdiff_t Stride() const { return view_.strides[0]; }

 private:
  Py_buffer view_;
};

}  // namespace ZARN::Python
