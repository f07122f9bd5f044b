// The functions that the application installs and the library calls.
#pragma once

namespace vxKilnBase::detail {

template <class Function>
class Hook;

/// A hook without a function does nothing and answers zero.
template <class Result, class... Arguments>
class Hook<Result (*)(Arguments...)> {
 public:
  void install(Result (*function)(Arguments...)) { function_ = function; }
  Result operator()(Arguments... arguments) const {
    return function_ != nullptr ? function_(arguments...) : Result();
  }

 private:
  Result (*function_)(Arguments...) = nullptr;
};

}  // namespace vxKilnBase::detail
