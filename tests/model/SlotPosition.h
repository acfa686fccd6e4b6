#pragma once

#include <cstddef>
#include <cstring>
#include <vector>

/// Position of a virtual operation in its class's table, the first being 1, as the Itanium C++ ABI
/// encodes it in the pointer to member. 0 for an operation that is not virtual.
template <typename MemberPointer>
int SlotPosition(MemberPointer member) {
  struct Encoded {
    std::ptrdiff_t pointer;
    std::ptrdiff_t adjustment;
  } encoded{};
  static_assert(sizeof(member) == sizeof(encoded), "pointers to members are encoded as two words");
  std::memcpy(&encoded, &member, sizeof(encoded));
#if defined(__arm__) || defined(__aarch64__)
  const bool isVirtual = (encoded.adjustment & 1) != 0;
  const std::ptrdiff_t offset = encoded.pointer;
#else
  const bool isVirtual = (encoded.pointer & 1) != 0;
  const std::ptrdiff_t offset = encoded.pointer - 1;
#endif
  return isVirtual ? static_cast<int>(offset / static_cast<std::ptrdiff_t>(sizeof(void*))) + 1 : 0;
}

template <typename... MemberPointers>
std::vector<int> SlotPositions(MemberPointers... members) {
  return {SlotPosition(members)...};
}

/// Deletes `object` by calling the operation at `position`, which has to be the deleting destructor: the
/// second of the two positions that a virtual destructor takes.
template <typename T>
void DeleteThroughSlot(T* object, int position) {
  using Destructor = void (*)(void*);
  const Destructor* table = nullptr;
  std::memcpy(&table, static_cast<const void*>(object), sizeof(table));
  table[position - 1](object);
}
