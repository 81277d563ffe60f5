#include "dnscodec/DNSLabel.h"

#include <algorithm>
#include <utility>

#include "dnscodec/WireWriter.h"

namespace quillet {

using platform::DataView;

namespace {

constexpr std::uint8_t kPointerBits = 0xC0;

bool isAscii(DataView bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte < 0x80; });
}

}  // namespace

void DNSLabelDecoder::decodeLabelInBuffer(DataView message, std::uint32_t& offset) {
  DecodeBudget budget;
  decodeLabelInBuffer(message, offset, budget);
}

void DNSLabelDecoder::decodeLabelInBuffer(DataView message, std::uint32_t& offset,
                                          DecodeBudget& budget) {
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
