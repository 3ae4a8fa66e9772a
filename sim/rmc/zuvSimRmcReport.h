#pragma once
// What the simulated RMC put together, in the words the demos print.

#include "zuvSimRmc.h"

#include <cstddef>
#include <cstdio>

namespace zuvsim {

// Writes the commands the RMC put together, from the one at `from` on: for each its name, its
// block count and argument length, its faults, and its argument, pretty-printed when it is JSON.
// Returns the number of commands reported by now, the `from` of the next call.
size_t reportCommands(const SimulatedRmc& rmc, size_t from, std::FILE* out);

}  // namespace zuvsim
