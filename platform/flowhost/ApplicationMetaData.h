#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/networkextension/NEAppProxyUDPFlow.h"

namespace platform {

/// What flows tell of their applications, one object for all flows of an application.
class ApplicationMetaData {
 public:
  /// Applications that are remembered; some 300 octets each. When there are more, all are
  /// forgotten.
  static constexpr std::size_t kMaxCount = 1024;

  /// `unknown` is the identifier of an application that is not known.
  explicit ApplicationMetaData(std::string unknown);

  std::shared_ptr<const NEFlowMetaData> of(std::optional<std::string_view> application);

 private:
  using MetaData = std::shared_ptr<const NEFlowMetaData>;

  const MetaData unknown_;
  std::map<std::string, MetaData, std::less<>> known_;
};

}  // namespace platform
