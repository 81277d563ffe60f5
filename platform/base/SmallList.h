#pragma once

#include <cstddef>
#include <initializer_list>
#include <utility>
#include <vector>

namespace platform {

/// A list that allocates nothing for a single element, which stands in the list itself. More than
/// one are a vector. After a move it may only be assigned to or destroyed.
template <class T>
class SmallList {
 public:
  using value_type = T;

  SmallList() = default;
  SmallList(std::initializer_list<T> elements) {
    for (const T& element : elements) {
      push_back(element);
    }
  }

  [[nodiscard]] std::size_t size() const { return many_.empty() ? hasOne_ : many_.size(); }
  [[nodiscard]] bool empty() const { return size() == 0; }
  [[nodiscard]] const T* begin() const { return many_.empty() ? &one_ : many_.data(); }
  [[nodiscard]] const T* end() const { return begin() + size(); }
  [[nodiscard]] T* begin() { return many_.empty() ? &one_ : many_.data(); }
  [[nodiscard]] T* end() { return begin() + size(); }
  [[nodiscard]] const T& front() const { return *begin(); }
  [[nodiscard]] const T& operator[](std::size_t index) const { return begin()[index]; }
  /// What has been allocated, in elements.
  [[nodiscard]] std::size_t capacity() const { return many_.capacity(); }

  void reserve(std::size_t count) {
    if (count > 1) {
      many_.reserve(count);
    }
  }
  void push_back(T element) {  // NOLINT(readability-identifier-naming): as of a vector
    if (size() == 0) {
      one_ = std::move(element);
      hasOne_ = true;
      return;
    }
    if (many_.empty()) {
      many_.push_back(std::move(one_));
    }
    many_.push_back(std::move(element));
  }
  void assign(std::size_t count, const T& element) {
    clear();
    while (size() < count) {
      push_back(element);
    }
  }
  void clear() { *this = {}; }

 private:
  T one_;
  bool hasOne_ = false;
  std::vector<T> many_;
};

}  // namespace platform
