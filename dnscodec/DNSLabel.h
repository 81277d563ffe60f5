#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "dnscodec/WireReader.h"
#include "platform/base/Data.h"

namespace quillet {

/// What decoding one message may cost, so that names which point at each other cannot multiply its
/// few octets into much text or much time: each octet of a name costs one, each pointer followed
/// `kPointerCost`.
class DecodeBudget {
 public:
  /// Four times the largest datagram. A message without pointers costs no more than its size.
  static constexpr std::size_t kTotal = 256UL * 1024;
  static constexpr std::size_t kPointerCost = 16;

  /// Takes `cost` off what is left; false when there is not enough.
  bool charge(std::size_t cost) {
    if (cost > left_) {
      return false;
    }
    left_ -= cost;
    return true;
  }

 private:
  std::size_t left_ = kTotal;
};

/// Reads one name, compressed or not (RFC 1035 section 4.1.4). Made fresh for each.
///
/// A length octet below 192 announces a label of that many ASCII octets, 0 the end; 192 and above
/// begin a pointer. What stands at a pointer's target is a name of its own: it joins the labels as
/// one more entry, "." when it is the root, and a target that is no name adds nothing. A name of
/// more than `kMaxPointers` pointers, such as a circle of them, fails: 255 octets hold no more
/// labels (RFC 1035 section 2.3.4).
class DNSLabelDecoder {
 public:
  static constexpr int kMaxPointers = 127;

  /// Reads the name at `offset` and moves it past the name, past the first pointer if there is
  /// one. A name that fails leaves `name` unset and `offset` where it was.
  void decodeLabelInBuffer(platform::DataView message, std::uint32_t& offset);
  /// The same, charged to the budget of a whole message; what it does not allow fails.
  void decodeLabelInBuffer(platform::DataView message, std::uint32_t& offset, DecodeBudget& budget);

  /// The labels joined by "." without a trailing one; "." for the root.
  std::optional<std::string> name;

 private:
  enum class State { expectingLength, readingLabel, readingPointer, finished };

  /// Reads labels of ASCII that no pointer ends, but not the root: their octets are the text
  /// shifted by one, with lengths where the dots belong. False, and nothing done, for others.
  bool readPlainName(platform::DataView message, std::uint32_t& offset, DecodeBudget& budget);
  void expectLength(WireReader& reader);
  void readLabel(WireReader& reader, DecodeBudget& budget);
  void readPointer(WireReader& reader, platform::DataView message, DecodeBudget& budget);
  void breakOff();
  void endName();
  void addLabel(std::string_view label);
  void resetBufferToSize(std::size_t size);
  void compileNameAndReset();

  State state_ = State::expectingLength;
  std::size_t bufferSize_ = 0;   // octets of the label to read
  std::size_t pointerHigh_ = 0;  // the first octet of the pointer to read
  std::string labels_;           // those read so far, joined

  // A target is read in the same run as the name that points at it, so that no chain of them
  // recurses. These say how much of `labels_` there was when the last two pointers were followed.
  int openTargets_ = 0;
  std::size_t targetStart_ = 0;
  std::size_t parentStart_ = 0;
  std::optional<std::uint32_t> afterFirstPointer_;
};

/// Writes names.
class DNSLabelEncoder {
 public:
  /// A name without compression, see `WireWriter::writeName`.
  static platform::Data encode(std::string_view name);
};

}  // namespace quillet
