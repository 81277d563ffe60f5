#include "dnscodec/DNSLabel.h"

#include <utility>

#include "dnscodec/WireWriter.h"
#include "platform/base/Utf8.h"

namespace quillet {

using platform::DataView;

namespace {

constexpr std::uint8_t kPointerBits = 0xC0;

bool isAscii(DataView bytes) { return platform::isAscii(platform::textOf(bytes)); }

/// Where the labels that begin at `offset` end with a root label; absent when they do not.
std::optional<std::size_t> endOfLabels(DataView message, std::size_t offset) {
  while (offset < message.size() && message[offset] != 0 && message[offset] < kPointerBits) {
    offset += std::size_t{1} + message[offset];
  }
  return offset < message.size() && message[offset] == 0 ? std::optional(offset) : std::nullopt;
}

}  // namespace

void DNSLabelDecoder::decodeLabelInBuffer(DataView message, std::uint32_t& offset) {
  DecodeBudget budget;
  decodeLabelInBuffer(message, offset, budget);
}

void DNSLabelDecoder::decodeLabelInBuffer(DataView message, std::uint32_t& offset,
                                          DecodeBudget& budget) {
  if (readPlainName(message, offset, budget)) {
    return;
  }
  WireReader reader(message, offset);
  while (state_ != State::finished) {
    if (state_ == State::expectingLength) {
      expectLength(reader);
    } else if (state_ == State::readingLabel) {
      readLabel(reader, budget);
    } else {
      readPointer(reader, message, budget);
    }
  }
  if (name) {
    offset = afterFirstPointer_.value_or(reader.offset());
  }
}

bool DNSLabelDecoder::readPlainName(DataView message, std::uint32_t& offset, DecodeBudget& budget) {
  const auto end = endOfLabels(message, offset);
  if (!end || *end == offset) {
    return false;
  }
  const auto labels = message.subspan(offset, *end - offset);
  if (!isAscii(labels) || !budget.charge(labels.size())) {
    return false;
  }
  name = platform::textOf(labels.subspan(1));
  for (std::size_t next = labels[0] + 1UL; next < labels.size(); next += labels[next] + 1UL) {
    (*name)[next - 1] = '.';
  }
  offset = static_cast<std::uint32_t>(*end + 1);
  return true;
}

void DNSLabelDecoder::expectLength(WireReader& reader) {
  const std::uint8_t length = reader.readUInt8();
  if (reader.failed()) {
    breakOff();
  } else if (length >= kPointerBits) {
    pointerHigh_ = length - kPointerBits;
    state_ = State::readingPointer;
  } else if (length == 0) {
    endName();
  } else {
    resetBufferToSize(length);
  }
}

void DNSLabelDecoder::readLabel(WireReader& reader, DecodeBudget& budget) {
  const auto label = reader.readBytes(bufferSize_);
  if (!budget.charge(1 + label.size())) {
    state_ = State::finished;
  } else if (reader.failed() || !isAscii(label)) {
    breakOff();
  } else {
    addLabel(platform::textOf(label));
    state_ = State::expectingLength;
  }
}

void DNSLabelDecoder::readPointer(WireReader& reader, DataView message, DecodeBudget& budget) {
  const std::size_t target = pointerHigh_ << 8 | reader.readUInt8();
  if (reader.failed()) {
    breakOff();
    return;
  }
  if (!afterFirstPointer_) {
    afterFirstPointer_ = reader.offset();
  }
  if (++openTargets_ > kMaxPointers || !budget.charge(DecodeBudget::kPointerCost)) {
    state_ = State::finished;
    return;
  }
  parentStart_ = std::exchange(targetStart_, labels_.size());
  reader = WireReader(message, target);
  state_ = State::expectingLength;
}

// The name being read is none. When a pointer led to it, the name that points at it ends there.
void DNSLabelDecoder::breakOff() {
  if (openTargets_ == 0) {
    state_ = State::finished;
    return;
  }
  labels_.resize(std::exchange(targetStart_, parentStart_));
  --openTargets_;
  endName();
}

void DNSLabelDecoder::endName() {
  if (openTargets_ > 0 && labels_.size() == targetStart_) {
    addLabel(".");
  }
  compileNameAndReset();
}

void DNSLabelDecoder::addLabel(std::string_view label) {
  if (!labels_.empty()) {
    labels_.push_back('.');
  }
  labels_.append(label);
}

void DNSLabelDecoder::resetBufferToSize(std::size_t size) {
  bufferSize_ = size;
  state_ = State::readingLabel;
}

void DNSLabelDecoder::compileNameAndReset() {
  if (labels_.empty()) {
    labels_ = ".";
  }
  name = std::exchange(labels_, {});
  state_ = State::finished;
}

platform::Data DNSLabelEncoder::encode(std::string_view name) {
  WireWriter writer(WireWriter::maxNameSize(name));
  writer.writeName(name);
  return writer.finish();
}

}  // namespace quillet
