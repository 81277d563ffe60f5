#pragma once

#include <charconv>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <ranges>
#include <string>
#include <string_view>
#include <type_traits>

/// The printed form of values, as every log text uses it.
///
/// `describe` gives a value's plain form, `debugDescribe` the form that it has inside another value
/// (a list, a map, an optional), where texts stand in quotes:
///
///     describe(out, "a")                          a
///     describe(out, std::vector{"a", "b"})        ["a", "b"]
///     describe(out, std::map{{"k", 1}})           ["k": 1]         ([:] when empty)
///     describe(out, std::optional{"a"})           Optional("a")    (nil when absent)
///     describe(out, Data{1, 2, 3})                3 bytes
///     describe(out, 12.0)                         12.0
///
/// A text that has come to `kMaxDescription` grows by no further element of a list or a map: what
/// comes from outside may have a printed form of many times its size.
///
/// A type of one's own brings a member `void describe(std::string& out) const`; where its form
/// inside other values differs, a `void debugDescribe(std::string& out) const` too. For a type of
/// another library `Describer` is specialised instead.
namespace platform {

/// In bytes; a log record shows no more of a text.
inline constexpr std::size_t kMaxDescription = 256UL * 1024;

/// Specialised with static `describe(out, value)` and `debugDescribe(out, value)`.
template <class T>
struct Describer {};

namespace detail {

template <class T>
concept HasDescriber = requires(const T& value, std::string& out) {
  Describer<T>::describe(out, value);
  Describer<T>::debugDescribe(out, value);
};

template <class T>
concept Describable = requires(const T& value, std::string& out) {
  value.describe(out);
};

template <class T>
concept DebugDescribable = requires(const T& value, std::string& out) {
  value.debugDescribe(out);
};

template <class T>
concept Pointer = requires(const T& value) {
  typename T::element_type;
  value.get();
  *value;
};

template <class T>
concept Optional = requires(const T& value) {
  value.has_value();
  *value;
};

template <class T>
concept Map = std::ranges::range<T> && requires {
  typename T::mapped_type;
};

template <class T>
concept Bytes = std::ranges::range<T> &&
    std::same_as<std::remove_cv_t<std::ranges::range_value_t<T>>, std::uint8_t>;

template <class T>
constexpr bool isNullPointer(const T& value) {
  if constexpr (std::is_pointer_v<T>) {
    return value == nullptr;
  } else {
    return false;
  }
}

void describeFloating(std::string& out, double value);
void describeQuoted(std::string& out, std::string_view text);

template <std::integral T>
void describeInteger(std::string& out, T value) {
  char digits[24];
  const auto result = std::to_chars(digits, digits + sizeof digits, value);
  out.append(digits, result.ptr);
}

}  // namespace detail

template <class T>
void debugDescribe(std::string& out, const T& value);

namespace detail {

template <class T>
void describeMap(std::string& out, const T& map) {
  out.push_back('[');
  const char* separator = "";
  for (const auto& [key, mapped] : map) {
    if (out.size() > kMaxDescription) {
      return;
    }
    out.append(separator);
    debugDescribe(out, key);
    out.append(": ");
    debugDescribe(out, mapped);
    separator = ", ";
  }
  out.append(*separator == '\0' ? ":]" : "]");
}

template <class T>
void describeSequence(std::string& out, const T& sequence) {
  out.push_back('[');
  const char* separator = "";
  for (const auto& element : sequence) {
    if (out.size() > kMaxDescription) {
      return;
    }
    out.append(separator);
    debugDescribe(out, element);
    separator = ", ";
  }
  out.push_back(']');
}

template <class T>
void describeOptional(std::string& out, const T& optional) {
  if (!optional.has_value()) {
    out.append("nil");
    return;
  }
  out.append("Optional(");
  debugDescribe(out, *optional);
  out.push_back(')');
}

}  // namespace detail

/// Appends the plain form of `value` to `out`.
template <class T>
void describe(std::string& out, const T& value) {
  if constexpr (detail::HasDescriber<T>) {
    Describer<T>::describe(out, value);
  } else if constexpr (detail::Describable<T>) {
    value.describe(out);
  } else if constexpr (std::same_as<T, char>) {
    out.push_back(value);
  } else if constexpr (std::convertible_to<const T&, std::string_view>) {
    out.append(detail::isNullPointer(value) ? std::string_view("nil") : std::string_view(value));
  } else if constexpr (std::same_as<T, bool>) {
    out.append(value ? "true" : "false");
  } else if constexpr (std::same_as<T, std::nullopt_t>) {
    out.append("nil");
  } else if constexpr (std::integral<T>) {
    detail::describeInteger(out, value);
  } else if constexpr (std::floating_point<T>) {
    detail::describeFloating(out, value);
  } else if constexpr (detail::Optional<T>) {
    detail::describeOptional(out, value);
  } else if constexpr (detail::Pointer<T>) {
    if (value) {
      describe(out, *value);
    } else {
      out.append("nil");
    }
  } else if constexpr (detail::Bytes<T>) {
    detail::describeInteger(out, std::ranges::size(value));
    out.append(" bytes");
  } else if constexpr (detail::Map<T>) {
    detail::describeMap(out, value);
  } else {
    static_assert(std::ranges::range<T>, "this type has no printed form");
    detail::describeSequence(out, value);
  }
}

/// Appends the form that `value` has inside another value to `out`.
template <class T>
void debugDescribe(std::string& out, const T& value) {
  if constexpr (detail::HasDescriber<T>) {
    Describer<T>::debugDescribe(out, value);
  } else if constexpr (detail::DebugDescribable<T>) {
    value.debugDescribe(out);
  } else if constexpr (detail::Describable<T>) {
    value.describe(out);
  } else if constexpr (std::same_as<T, char>) {
    detail::describeQuoted(out, std::string_view(&value, 1));
  } else if constexpr (std::convertible_to<const T&, std::string_view>) {
    if (detail::isNullPointer(value)) {
      out.append("nil");
    } else {
      detail::describeQuoted(out, value);
    }
  } else if constexpr (detail::Pointer<T>) {
    if (value) {
      debugDescribe(out, *value);
    } else {
      out.append("nil");
    }
  } else {
    describe(out, value);
  }
}

/// The plain form of `value` as a text of its own.
template <class T>
std::string description(const T& value) {
  std::string out;
  describe(out, value);
  return out;
}

}  // namespace platform
