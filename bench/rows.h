#pragma once

#include "figures.h"

/// The groups of rows. Each starts what it measures and ends it again.

void measureDelays(Table& table);     ///< key, movement, click: from the record to the datagram
void measureFullSpeed(Table& table);  ///< movements a second and processor time of each
void measureMice(Table& table);       ///< a key beside mice of 125 Hz to 8 x 1 kHz
void measureLogs(Table& table);       ///< a key's delay whatever happens to the log
void measureCosts(Table& table);      ///< system calls and instructions
/// Instructions of the programs in `build`, made for the board, under the emulator qemu-arm.
void measureArm(Table& table, const std::string& build);
void measureRest(Table& table);  ///< start, idle, memory, a crossing

/// The console's processor time a movement at full speed, over the plain loop's.
double cpuRatioAtFullSpeed();

/// What is judged: system calls and instructions, which are exact, and that ratio.
void judgeBudget(Table& table);
