#pragma once

/// Thread body: opens InputViSocket and asks the current box every 5 seconds. Never returns.
void* viThr(void* unused);
