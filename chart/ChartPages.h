// The pages of a chart that is printed on several sheets: its file tells by the field PAGE on which one a patch is.
#pragma once

#include <optional>
#include <vector>

#include "chart/cgats/CgatsFile.h"

namespace J4Chart::ChartPages {

/// The numbers of a table's pages in their order; none for a chart without pages.
/// @throws CgatsError for a PAGE that is no whole number from 1 on
std::vector<size_t> Of(const CgatsTable& table);

/// The file with the patches of one page alone; tables without pages stay as they are.
/// @param page  its number; nothing for the first one
/// @throws CgatsError where no table has the page
CgatsFile Select(const CgatsFile& file, std::optional<size_t> page);

/// "1, 2, 3".
std::string Text(const std::vector<size_t>& pages);

}  // namespace J4Chart::ChartPages
