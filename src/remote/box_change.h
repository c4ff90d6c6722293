#pragma once

#include <vector>

#include "base/function_ref.h"
#include "remote/box_in_control.h"
#include "remote/told.h"

/// The only way to change the box in control: for the handover and the picture, and for nobody else
/// (tests/one_accessor.sh). `change` runs under the guard: it neither waits, prints nor calls out.
/// What it returns is sent when the guard is released. Any thread.
using Change = FunctionRef<std::vector<Datagram>(BoxInControl& box, Told& told)>;
void changeBoxInControl(Change change);

/// True when nothing that was noted or taken out is still on its way. Any thread.
bool nobodyIsSending();
