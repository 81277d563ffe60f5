#pragma once

#include <concepts>
#include <memory>
#include <string>
#include <utility>

#include "dns_tools/ResourceRecord.h"

namespace DnsToolsSocket {

class Reader;

/// A record of any kind as a value: owns it, and a copy owns a copy. After a move it may only be
/// assigned to or destroyed.
class RecordValue {
 public:
  /// Implicit, so that lists can be written with plain records.
  template <std::derived_from<ResourceRecord> Kind>
  RecordValue(Kind record) : record_(std::make_unique<Kind>(std::move(record))) {}
  RecordValue(const RecordValue& other) : record_(other.record_->clone()) {}
  RecordValue& operator=(const RecordValue& other) { return *this = RecordValue(other); }
  RecordValue(RecordValue&&) = default;
  RecordValue& operator=(RecordValue&&) = default;
  ~RecordValue() = default;

  /// The next record of a message, of the kind that its type asks for; unusable when the reader
  /// fails.
  static RecordValue read(Reader& reader);

  [[nodiscard]] const ResourceRecord& operator*() const { return *record_; }
  [[nodiscard]] ResourceRecord& operator*() { return *record_; }
  [[nodiscard]] const ResourceRecord* operator->() const { return record_.get(); }
  [[nodiscard]] ResourceRecord* operator->() { return record_.get(); }

  void describe(std::string& out) const { record_->describe(out); }

 private:
  explicit RecordValue(std::unique_ptr<ResourceRecord> record) : record_(std::move(record)) {}

  std::unique_ptr<ResourceRecord> record_;
};

}  // namespace DnsToolsSocket
