#pragma once

#include <functional>
#include <utility>
#include <vector>

namespace QuilletXPCservice {

/// A value that tells its observers, in the order in which they came, each time it is set. For one
/// thread; an observer adds no observers.
template <class T>
class Published {
 public:
  using Observer = std::function<void(const T&)>;

  explicit Published(T value) : value_(std::move(value)) {}
  Published(const Published&) = delete;
  Published& operator=(const Published&) = delete;
  ~Published() = default;

  /// Sets the value and calls the observers.
  Published& operator=(T value) {
    value_ = std::move(value);
    for (const auto& observer : observers_) {
      observer(value_);
    }
    return *this;
  }
  [[nodiscard]] const T& operator*() const { return value_; }

  void observe(Observer observer) { observers_.push_back(std::move(observer)); }

 private:
  T value_;
  std::vector<Observer> observers_;
};

}  // namespace QuilletXPCservice
