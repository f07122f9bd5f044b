// Numeric libraries with Fortran routines, loaded at run time so that none has to be there.
#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "Harness.h"

namespace bench {

/// A routine of a loaded library.
///
/// Called as in Fortran: numbers and characters are passed by address, pointers as they are. Of
/// each character argument the compiler's hidden length, 1, follows behind the last argument.
class FortranRoutine {
 public:
  explicit FortranRoutine(void* address = nullptr) : address_(address) {}

  /// Whether there is such a routine.
  explicit operator bool() const { return address_ != nullptr; }

  template <class... Arguments>
  void operator()(const Arguments&... arguments) const {
    constexpr std::size_t characters = (std::size_t{0} + ... + std::is_same_v<Arguments, char>);
    call(std::make_index_sequence<characters>(), passed(arguments)...);
  }

 private:
  template <class T>
  static const T* passed(const T& value) {
    return &value;
  }
  template <class T>
  static T* passed(T* const& array) {
    return array;
  }

  template <std::size_t... index, class... Passed>
  void call(std::index_sequence<index...>, Passed... arguments) const {
    using Routine = void (*)(Passed..., decltype(index)...);
    reinterpret_cast<Routine>(address_)(arguments..., (static_cast<void>(index), 1)...);
  }

  void* address_;
};

/// The first of several libraries that could be loaded, or none.
class NumericLibrary {
 public:
  explicit NumericLibrary(const std::vector<std::string>& candidates);

  bool found() const { return handle_ != nullptr; }
  /// As it was asked for; empty when there is none.
  const std::string& file() const { return file_; }
  /// Address of a symbol of the library or of those that it needs; null when there is none.
  void* symbol(const char* name) const;
  FortranRoutine routine(const char* name) const { return FortranRoutine(symbol(name)); }

 private:
  void* handle_ = nullptr;
  std::string file_;
};

/// BLAS and LAPACK: OpenBLAS with one thread and the kernels of this processor, or else the
/// reference libraries.
const NumericLibrary& lapack();
/// What the table calls them.
std::string lapackName();

/// The LINPACK routines that R carries.
const NumericLibrary& linpack();

/// Adds a peer to an operation, up to so many rows, if its routine is there.
void addPeer(Operation& operation, const std::string& name, const FortranRoutine& routine,
             Maker make, int largest = std::numeric_limits<int>::max());

/// A line about each of the two: what was loaded, or that it is missing.
std::vector<std::string> fortranNotes();

}  // namespace bench
