#include "control_client/TopLayout.h"

#include <algorithm>
#include <numeric>

#include "control_client/Bars.h"
#include "control_client/DisplayText.h"
#include "control_client/Quantities.h"
#include "control_client/RoutingRule.h"

namespace quilletctl {

namespace {

using Block = std::vector<StyledLine>;

// What is lower has no room for blank lines, what is narrower none for two blocks side by side.
constexpr std::size_t kRoomyHeight = 20;
constexpr std::size_t kRoomyWidth = 60;
constexpr std::size_t kGap = 2;  // between two blocks
constexpr std::size_t kShareWidth = 8;
constexpr std::size_t kCountWidth = 9;
constexpr std::size_t kTimeWidth = 13;
constexpr std::size_t kRateHeight = 3;

std::size_t less(std::size_t width, std::size_t taken) { return width - std::min(width, taken); }

Block titleBlock(const TopModel& model, const std::string& title, std::size_t width) {
  const std::string keys = "q quits";
  const auto text = title + ", watched for " + durationText(static_cast<double>(model.age()));
  StyledLine line(padded(text, less(width, keys.size() + kGap)), Style::kHeading);
  return {line.addAt(less(width, keys.size()), StyledLine(keys, Style::kFaint))};
}

Block rateBlock(const TopModel& model, ScreenSize size) {
  auto rates = model.perSecond();
  rates.erase(rates.begin(),
              rates.end() - static_cast<std::ptrdiff_t>(std::min(rates.size(), size.width)));
  const auto now = rates.empty() ? 0 : rates.back();
  const auto most = rates.empty() ? 0 : *std::ranges::max_element(rates);
  Block block{StyledLine("queries a second", Style::kHeading)};
  block.front().add(": " + std::to_string(now) + ", at most " + std::to_string(most) +
                    " in the last " + std::to_string(rates.size()) + " s");
  const auto height = size.height < kRoomyHeight ? 1 : kRateHeight;
  for (auto& bars : verticalBars(rates, height)) {
    block.emplace_back(std::move(bars), Style::kBar);
  }
  return block;
}

/// In one line, or more where that is too narrow.
Block faultsBlock(const TopModel& model, std::size_t width) {
  Block block{StyledLine("faults", Style::kHeading)};
  const auto add = [&block, width](const char* name, std::uint64_t count) {
    StyledLine fault(std::string("  ") + name + ' ');
    fault.add(std::to_string(count), count == 0 ? Style::kPlain : Style::kBad);
    if (block.back().columns() + fault.columns() > width) {
      block.emplace_back();
    }
    block.back().addAt(0, fault);
  };
  const auto& faults = model.faults();
  add("unanswered", faults.unanswered);
  add("SERVFAIL", faults.serverFailure);
  add("REFUSED", faults.refused);
  add("lost", faults.lost);
  return block;
}

/// A label, its share in figures, and as a bar in what is left of the width.
StyledLine shareLine(const std::string& label, std::uint64_t part, std::uint64_t whole,
                     std::size_t width) {
  StyledLine line(label + rightAligned(shareText(part, whole), kShareWidth) + ' ');
  return line.add(horizontalBar(part, whole, less(width, line.columns())), Style::kBar);
}

Block rulesBlock(const TopModel& model, std::size_t width) {
  Block block{StyledLine("rule", Style::kHeading)};
  for (const auto& rule : kRoutingRules) {
    const auto label = std::to_string(rule.number) + ' ' + std::string(rule.name);
    block.push_back(shareLine(padded(label, RoutingRule::kWidest + 2), model.ofRule(rule.number),
                              model.queries(), width));
  }
  return block;
}

/// "below 1 ms", "1 to 5 ms", "500 ms up"
std::string rangeText(std::size_t range) {
  const auto bound = [](std::size_t i) {
    return std::to_string(static_cast<int>(TopModel::kTimeBounds[i]));
  };
  if (range == 0) {
    return "below " + bound(0) + " ms";
  }
  if (range == TopModel::kTimeBounds.size()) {
    return bound(range - 1) + " ms up";
  }
  return bound(range - 1) + " to " + bound(range) + " ms";
}

Block timesBlock(const TopModel& model, std::size_t width) {
  const auto& counts = model.byTime();
  const auto whole = std::accumulate(counts.begin(), counts.end(), std::uint64_t{0});
  Block block{StyledLine("answer time", Style::kHeading)};
  for (std::size_t range = 0; range < counts.size(); ++range) {
    block.push_back(shareLine(padded(rangeText(range), kTimeWidth), counts[range], whole, width));
  }
  return block;
}

Block busiestBlock(const char* title, const BusiestTexts& texts, ScreenSize size) {
  Block block{StyledLine(title, Style::kHeading)};
  for (const auto& [count, text] : texts.first(less(size.height, 1))) {
    StyledLine line(rightAligned(std::to_string(count), kCountWidth) + ' ');
    block.push_back(line.add(cut(text, less(size.width, kCountWidth + 1))));
  }
  return block;
}

/// The picture as it grows downwards.
class Picture {
 public:
  explicit Picture(ScreenSize size) : size_(size) {}

  [[nodiscard]] bool isWide() const { return size_.width >= kRoomyWidth; }
  [[nodiscard]] std::size_t columnWidth() const {
    return isWide() ? (size_.width - kGap) / 2 : size_.width;
  }
  [[nodiscard]] std::size_t heightLeft() const { return less(size_.height, lines_.size()); }

  void add(const Block& block) { lines_.insert(lines_.end(), block.begin(), block.end()); }
  /// Side by side where there is room for that, else one below the other.
  void addBoth(const Block& left, const Block& right) {
    if (!isWide()) {
      add(left);
      add(right);
      return;
    }
    for (std::size_t i = 0; i < std::max(left.size(), right.size()); ++i) {
      StyledLine line = i < left.size() ? left[i] : StyledLine();
      lines_.push_back(i < right.size() ? line.addAt(columnWidth() + kGap, right[i]) : line);
    }
  }
  void addGap() {
    if (size_.height >= kRoomyHeight) {
      lines_.emplace_back();
    }
  }

  Block take() {
    lines_.resize(std::min(lines_.size(), size_.height));
    for (auto& line : lines_) {
      line = line.cutTo(size_.width);
    }
    return std::move(lines_);
  }

 private:
  ScreenSize size_;
  Block lines_;
};

}  // namespace

std::vector<StyledLine> topLayout(const TopModel& model, const std::string& title,
                                  ScreenSize size) {
  Picture picture(size);
  picture.add(titleBlock(model, title, size.width));
  picture.addGap();
  picture.add(rateBlock(model, size));
  picture.add(faultsBlock(model, size.width));
  picture.addGap();
  const auto width = picture.columnWidth();
  picture.addBoth(rulesBlock(model, width), timesBlock(model, width));
  picture.addGap();
  const ScreenSize rest{width, picture.heightLeft()};
  picture.addBoth(busiestBlock("busiest applications", model.applications(), rest),
                  busiestBlock("busiest names", model.names(), rest));
  return picture.take();
}

}  // namespace quilletctl
