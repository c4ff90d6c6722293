#pragma once

#include <string>

#include "base/wall_records.h"
#include "drawing/wall_drawing.h"

namespace ctl {

/// The wall as it is drawn; the screen of the console at `console` is marked. runLoading's rules
/// for threads hold.
drawing::Wall wallToDraw(const outInf& wall, const std::string& console);

}  // namespace ctl
