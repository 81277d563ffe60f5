#pragma once

namespace platform {

/// The root of objects that the platform is given by a common type.
class NSObject {
 public:
  NSObject() = default;
  NSObject(const NSObject&) = delete;
  NSObject& operator=(const NSObject&) = delete;
  virtual ~NSObject() = default;
};

}  // namespace platform
