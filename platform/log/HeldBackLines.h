#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <string_view>

namespace platform {

/// Log lines on their way to a file descriptor, held back so that many go with one call. Not
/// thread-safe, but for `writeFromSignalHandler`.
///
/// Lines come out whole and in order. When the descriptor is non-blocking and full, writing waits
/// for the reader, but no longer than its patience, and not again until the reader has caught up;
/// what was not written stays here. Lines are lost when the buffer is full, and when the descriptor
/// takes nothing more (its reader is gone, the disk is full).
class HeldBackLines {
 public:
  /// Enough for the records of several queries; a larger batch is written in several pieces.
  static constexpr std::size_t kCapacity = 64UL * 1024;

  /// Milliseconds that one write waits in vain.
  static constexpr int kPatience = 100;
  /// For a thread that has nothing else to do: waits as a blocking descriptor would make it wait.
  static constexpr int kUnlimitedPatience = -1;

  /// `descriptor` is borrowed and stays open.
  explicit HeldBackLines(int descriptor, int patience = kPatience);

  /// Takes one line, which ends with its line feed; writes when there is no room for it. A line
  /// larger than the buffer is written at once, and is cut when the reader does not keep up.
  void append(std::string_view line);

  /// Writes what is held back.
  void write();

  /// Whether lines were lost since the last call.
  bool takeLoss();

  /// The same as `write` for a process that is about to end, from a signal handler of any thread;
  /// `kPatience` is the most that it waits. A line that another thread was writing at this moment
  /// may come out twice or not at all.
  void writeFromSignalHandler() noexcept;

 private:
  struct Outcome;

  static Outcome writeTo(int descriptor, std::string_view text, int patience);
  Outcome writeNow(std::string_view text);
  void writeOversized(std::string_view line);
  void hold(std::string_view text);
  void dropAll();

  const int descriptor_;
  const int patience_;
  const std::unique_ptr<char[]> buffer_;
  /// How much of the buffer is filled, after the bytes that it counts are in place.
  std::atomic<std::size_t> size_{0};
  bool isBehind_ = false;    // the last write waited in vain
  bool isLineOpen_ = false;  // the last byte written was no line feed
  bool hasLoss_ = false;
};

}  // namespace platform
