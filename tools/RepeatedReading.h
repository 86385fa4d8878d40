// One reading of a patch made of several: its row was scanned as often.
#pragma once

#include <vector>

#include "tools/PatchReading.h"

namespace J4Tool {

/// The mean of the spectra, with their mean difference from it. The way is the one that was tried last of theirs, the
/// samples are all that were averaged, their spread is taken over all of them, the residual is the largest.
/// @param readings  one at least; of one it is that one
PatchReading AverageOf(const std::vector<PatchReading>& readings);

}  // namespace J4Tool
