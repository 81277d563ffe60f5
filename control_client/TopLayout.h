#pragma once

#include <string>
#include <vector>

#include "control_client/StyledLine.h"
#include "control_client/Terminal.h"
#include "control_client/TopModel.h"

namespace quilletctl {

/// The picture of `top`: at most `height` lines of at most `width` columns, however small that is.
/// `title` is printable.
std::vector<StyledLine> topLayout(const TopModel& model, const std::string& title, ScreenSize size);

}  // namespace quilletctl
