#include "tools/TableText.h"

#include <utility>

#include "chart/cgats/CgatsFile.h"
#include "tools/ToolError.h"

namespace J4Tool {

std::string TableText(J4Chart::CgatsTable table, const std::string& complaint, const std::string& hint)
{
    J4Chart::CgatsFile file;
    file.Add(std::move(table));
    try {
        return file.Text();
    } catch (const J4Chart::CgatsError& error) {
        throw ToolError(ExitCode::File, complaint + ": " + error.what(), hint);
    }
}

}  // namespace J4Tool
