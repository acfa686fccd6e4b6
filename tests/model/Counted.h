#pragma once

#include <utility>

/// A `T` that counts how often one of its kind is destroyed.
template <typename T>
class Counted : public T {
 public:
  template <typename... Arguments>
  explicit Counted(int* destroyed, Arguments&&... arguments)
      : T(std::forward<Arguments>(arguments)...), destroyed_(destroyed) {}
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;

  ~Counted() override { ++*destroyed_; }

 private:
  int* const destroyed_;
};
