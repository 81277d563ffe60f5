#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "platform/base/Data.h"
#include "platform/base/Description.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Rows.h"
#include "tests/support/Wire.h"

/// The words that all tests speak.
namespace quillet::test {

using platform::bytesOf;
using platform::Data;
using platform::DataView;
using platform::description;
using platform::textOf;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;
using namespace std::string_literals;  // NOLINT
using Texts = std::vector<std::string>;

}  // namespace quillet::test
