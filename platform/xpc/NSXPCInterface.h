#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>

#include "platform/base/NSObject.h"

namespace platform {

/// The block by which a method answers with one text.
using NSXPCReply = std::function<void(std::string)>;

/// The methods that a connection's clients may call, under their wire names. Each takes one text
/// and answers nothing, or takes nothing and answers one text.
class NSXPCInterface {
 public:
  struct Method {
    bool takesText = false;
    bool replies = false;
    /// `object` is of the type that the method belongs to; `reply` runs once before this returns.
    std::function<void(NSObject& object, const std::string& text, const NSXPCReply& reply)> call;
  };

  template <class Protocol>
  NSXPCInterface& add(std::string wireName, void (Protocol::*method)(const std::string&)) {
    methods_[std::move(wireName)] = {
        true, false, [method](NSObject& object, const std::string& text, const NSXPCReply&) {
          (dynamic_cast<Protocol&>(object).*method)(text);
        }};
    return *this;
  }

  template <class Protocol>
  NSXPCInterface& add(std::string wireName, void (Protocol::*method)(const NSXPCReply&)) {
    methods_[std::move(wireName)] = {
        false, true, [method](NSObject& object, const std::string&, const NSXPCReply& reply) {
          (dynamic_cast<Protocol&>(object).*method)(reply);
        }};
    return *this;
  }

  /// nullptr for a method that is not exported.
  [[nodiscard]] const Method* find(const std::string& wireName) const {
    const auto found = methods_.find(wireName);
    return found == methods_.end() ? nullptr : &found->second;
  }

 private:
  std::map<std::string, Method> methods_;
};

}  // namespace platform
