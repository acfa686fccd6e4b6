#pragma once

#include <array>
#include <cstddef>
#include <tuple>

/// Stands for a type where a value is needed.
template <typename T>
struct TypeTag {
  using Type = T;  ///< The type itself.
};

/// Types in order. Tables with an entry for each type are built from the list, so that none is forgotten.
template <typename... Types>
struct TypeList {
  /// How many types there are.
  static constexpr std::size_t count = sizeof...(Types);

  /// The last of the types.
  using Last = std::tuple_element_t<count - 1, std::tuple<Types...>>;

  /// The types as arguments of another template.
  template <template <typename...> class Template>
  using As = Template<Types...>;

  /// What `make` returns for the TypeTag of each type; called in order.
  template <typename Make>
  static constexpr auto Table(Make make) {
    return std::array{make(TypeTag<Types>())...};
  }
};
