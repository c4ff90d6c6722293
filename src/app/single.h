#pragma once

/// True when no other console runs in this network namespace; it is this one then, until the
/// process ends, however it does. True also where that cannot be found out. Once, at start.
bool becomeTheOnlyOne();
