#pragma once

#include <string>
#include <string_view>

#include "platform/base/Description.h"

namespace DnsToolsSocket {

/// Appends the printed form of a structure: `DnsToolsSocket.Question(name: "a.", type: 1)`. Opens
/// it when constructed, closes it when destroyed; fields come in between, in the order of their
/// declaration.
class StructureText {
 public:
  StructureText(std::string& out, std::string_view typeName) : out_(out) {
    out_.append("DnsToolsSocket.").append(typeName).push_back('(');
  }
  ~StructureText() { out_.push_back(')'); }
  StructureText(const StructureText&) = delete;
  StructureText& operator=(const StructureText&) = delete;
  StructureText(StructureText&&) = delete;
  StructureText& operator=(StructureText&&) = delete;

  template <class T>
  StructureText& field(std::string_view name, const T& value) {
    out_.append(separator_).append(name).append(": ");
    platform::debugDescribe(out_, value);
    separator_ = ", ";
    return *this;
  }

 private:
  std::string& out_;
  std::string_view separator_;
};

}  // namespace DnsToolsSocket
