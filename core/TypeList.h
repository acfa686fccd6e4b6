#pragma once

#include <array>
#include <cstddef>
#include <tuple>

/// A type where a value is wanted.
template <typename T>
struct TypeTag {
  using Type = T;  ///< The type itself.
};

/// Types in their order. Tables with an entry for each are made of the list, so that none is forgotten.
template <typename... Types>
struct TypeList {
  /// How many types there are.
  static constexpr std::size_t Count = sizeof...(Types);

  /// The last of the types.
  using Last = std::tuple_element_t<Count - 1, std::tuple<Types...>>;

  /// The types as arguments of another template.
  template <template <typename...> class Template>
  using As = Template<Types...>;

  /// What `make` answers to the TypeTag of each type, which are asked in their order.
  template <typename Make>
  static constexpr auto Table(Make make) {
    return std::array{make(TypeTag<Types>())...};
  }
};
