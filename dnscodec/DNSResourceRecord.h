#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "dnscodec/DNSLabel.h"
#include "dnscodec/WireWriter.h"
#include "platform/base/Data.h"

namespace quillet {

/// A resource record whose RDATA is kept as bytes (RFC 1035 section 4.1.3). Decoding yields these
/// whatever the type; `fromResource` turns one into a record of a particular kind.
///
/// A kind of record derives from `DNSTypedResourceRecord` and overrides `decodeFromResource` and
/// `encodeData`, or `encodeTo` when more than the RDATA is its own.
class DNSResourceRecord {
 public:
  /// The most octets of RDATA that RDLENGTH can tell.
  static constexpr std::size_t kMaxDataSize = 0xFFFF;

  DNSResourceRecord() = default;
  virtual ~DNSResourceRecord() = default;

  /// A record of `Kind` filled from a generic one.
  template <class Kind = DNSResourceRecord>
  static std::shared_ptr<Kind> fromResource(const DNSResourceRecord& record) {
    auto typed = std::make_shared<Kind>();
    typed->copyFromResource(record);
    return typed;
  }

  /// Takes name, type, class and TTL from `record`, then what `decodeFromResource` makes of it.
  void copyFromResource(const DNSResourceRecord& record);
  /// Fills the fields of the record's own kind; here there are none.
  virtual void decodeFromResource(const DNSResourceRecord& record);
  /// The whole record's wire bytes.
  [[nodiscard]] platform::Data encode() const;
  /// Writes the whole record. RDATA beyond `kMaxDataSize` is left out whole.
  virtual void encodeTo(WireWriter& writer) const;
  /// The RDATA to write.
  [[nodiscard]] virtual platform::Data encodeData() const;
  /// A copy of the same kind.
  [[nodiscard]] virtual std::shared_ptr<DNSResourceRecord> copy() const;

  /// The octets to make room for before the record is written.
  [[nodiscard]] std::size_t expectedSize() const;

  std::string name;
  std::uint16_t type = 0;
  std::uint16_t resourceClass = 0;
  std::uint32_t ttl = 0;
  /// RDATA.
  platform::Data data;

 protected:
  // Copied by `copy` only, so that a record is never cut down to its base.
  DNSResourceRecord(const DNSResourceRecord&) = default;
  DNSResourceRecord& operator=(const DNSResourceRecord&) = default;
  DNSResourceRecord(DNSResourceRecord&&) = default;
  DNSResourceRecord& operator=(DNSResourceRecord&&) = default;

  /// Writes the record with this class, TTL and RDATA in place of its own.
  void encodeAs(WireWriter& writer, std::uint16_t classToWrite, std::uint32_t ttlToWrite,
                platform::DataView rdata) const;
};

/// What every kind of record has for itself: how one is made from a generic record, and copied.
///
///     class DNSOPTResourceRecord final : public DNSTypedResourceRecord<DNSOPTResourceRecord>
template <class Kind>
class DNSTypedResourceRecord : public DNSResourceRecord {
 public:
  /// A record of this kind filled from a generic one.
  static std::shared_ptr<Kind> fromResource(const DNSResourceRecord& record) {
    return DNSResourceRecord::fromResource<Kind>(record);
  }

  [[nodiscard]] std::shared_ptr<DNSResourceRecord> copy() const final {
    return std::make_shared<Kind>(static_cast<const Kind&>(*this));
  }
};

/// A CNAME record with its target as text (RFC 1035 section 3.3.1).
class DNSCNAMEResourceRecord final : public DNSTypedResourceRecord<DNSCNAMEResourceRecord> {
 public:
  /// Reads the target from the RDATA alone, without the message around it; one that cannot be read
  /// leaves the name empty.
  void decodeFromResource(const DNSResourceRecord& record) override;
  [[nodiscard]] platform::Data encodeData() const override;

  std::string canonicalName;
};

/// An EDNS OPT pseudo-record (RFC 6891 section 6.1): class and TTL carry fields of their own,
/// `data` the options.
class DNSOPTResourceRecord final : public DNSTypedResourceRecord<DNSOPTResourceRecord> {
 public:
  static constexpr std::uint16_t kType = 41;

  /// Takes the fields from class and TTL.
  void decodeFromResource(const DNSResourceRecord& record) override;
  /// Writes the fields in place of class and TTL.
  void encodeTo(WireWriter& writer) const override;

  std::uint16_t udpPayloadSize = 0;
  std::uint8_t extendedRCode = 0;
  std::uint8_t version = 0;
  bool dnssecOK = false;
};

/// Reads one resource record as a plain one, whatever its type. Made fresh for each.
class DNSResourceRecordDecoder {
 public:
  /// Reads the record at `offset` and moves it past the record. A broken one leaves `resource`
  /// unset.
  void decodeResourceInBuffer(platform::DataView buffer, std::uint32_t& offset);
  /// The same, charged to the budget of a whole message.
  void decodeResourceInBuffer(platform::DataView buffer, std::uint32_t& offset,
                              DecodeBudget& budget);

  std::shared_ptr<DNSResourceRecord> resource;
};

}  // namespace quillet
