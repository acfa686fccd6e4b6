#pragma once

/// A copy of `object`, owned by the caller; null for null.
template <typename T>
T* CloneOrNull(const T* object) {
  return object == nullptr ? nullptr : object->Clone();
}
