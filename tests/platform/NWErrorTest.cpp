#include <gtest/gtest.h>

#include <cerrno>

#include "platform/foundation/Description.h"
#include "platform/network/NWConnection.h"
#include "platform/network/NWError.h"

namespace platform {
namespace {

TEST(NWErrorTest, PrintedForms) {
  EXPECT_EQ(description(NWError::posix(ECONNREFUSED)),
            "POSIXErrorCode(rawValue: 111): Connection refused");
  EXPECT_EQ(description(NWError::posix(EMFILE)),
            "POSIXErrorCode(rawValue: 24): Too many open files");
  EXPECT_EQ(description(NWError::posix(99999)),
            "POSIXErrorCode(rawValue: 99999): Unknown error 99999");
  EXPECT_EQ(description(NWError::noSuchRecord()), "-65554: NoSuchRecord");
  EXPECT_EQ(NWError::posix(EADDRINUSE).text(), "Address already in use");
  EXPECT_EQ(description(std::optional(NWError::noSuchRecord())), "Optional(-65554: NoSuchRecord)");
}

TEST(NWErrorTest, EqualWhenKindAndCodeAre) {
  EXPECT_EQ(NWError::posix(1), NWError::posix(1));
  EXPECT_NE(NWError::posix(1), NWError::posix(2));
  EXPECT_NE(NWError::posix(NWError::noSuchRecord().code()), NWError::noSuchRecord());
}

TEST(NWConnectionStateTest, PrintedForms) {
  using State = NWConnection::State;
  using Kind = State::Kind;
  EXPECT_EQ(description(State{Kind::setup, {}}), "setup");
  EXPECT_EQ(description(State{Kind::preparing, {}}), "preparing");
  EXPECT_EQ(description(State{Kind::ready, {}}), "ready");
  EXPECT_EQ(description(State{Kind::cancelled, {}}), "cancelled");
  EXPECT_EQ(description(State{Kind::waiting, NWError::noSuchRecord()}),
            "waiting(-65554: NoSuchRecord)");
  EXPECT_EQ(description(State{Kind::failed, NWError::posix(EMFILE)}),
            "failed(POSIXErrorCode(rawValue: 24): Too many open files)");
}

}  // namespace
}  // namespace platform
