#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <tl/expected.hpp>

#include "dns_tools/EncodeError.h"
#include "dns_tools/Labels.h"
#include "platform/base/Data.h"

namespace DnsToolsSocket {

class StructureText;
class Writer;

/// What every kind of resource record has (RFC 1035 section 4.1.3). The kinds are values; a list of
/// records of any kind holds them as `RecordValue`.
class ResourceRecord {
 public:
  /// The fields that all kinds have in common.
  struct Head {
    std::string name;
    bool unique = false;
    std::uint16_t internetClass = 0;
    std::uint32_t ttl = 0;
  };

  virtual ~ResourceRecord() = default;

  [[nodiscard]] const std::string& name() const { return head_.name; }
  void setName(std::string name) { head_.name = std::move(name); }
  [[nodiscard]] virtual std::uint16_t type() const = 0;
  /// Without its top bit, which is `unique`.
  [[nodiscard]] std::uint16_t internetClass() const { return head_.internetClass; }
  void setInternetClass(std::uint16_t internetClass) { head_.internetClass = internetClass; }
  [[nodiscard]] bool unique() const { return head_.unique; }
  void setUnique(bool unique) { head_.unique = unique; }
  /// Seconds.
  [[nodiscard]] std::uint32_t ttl() const { return head_.ttl; }
  void setTtl(std::uint32_t ttl) { head_.ttl = ttl; }

  /// Appends the record's wire form to `onto`, which begins with the message, and extends the
  /// message's dictionary. After a failure both are of no use.
  tl::expected<void, EncodeError> serialize(platform::Data& onto, Labels& labels) const;
  void write(Writer& writer) const;

  virtual void describe(std::string& out) const = 0;
  [[nodiscard]] virtual std::unique_ptr<ResourceRecord> clone() const = 0;

 protected:
  explicit ResourceRecord(Head&& head) : head_(std::move(head)) {}
  ResourceRecord(const ResourceRecord&) = default;
  ResourceRecord& operator=(const ResourceRecord&) = default;
  ResourceRecord(ResourceRecord&&) = default;
  ResourceRecord& operator=(ResourceRecord&&) = default;

  void describeHead(StructureText& text) const;

 private:
  virtual void writeData(Writer& writer) const = 0;

  Head head_;
};

}  // namespace DnsToolsSocket
