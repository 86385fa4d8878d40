#include "tools/convert/ColourArguments.h"

#include <algorithm>

namespace J4Tool {

using J4Chart::ColourConditions;

namespace {

template <class Kind, size_t Count>
Kind ColourKindOf(const std::string& name, const std::array<const char*, Count>& names)
{
    const auto found = std::find(names.begin(), names.end(), name);
    return static_cast<Kind>(found == names.end() ? 0 : found - names.begin());
}

template <size_t Count>
CLI::IsMember MemberOf(const std::array<const char*, Count>& names)
{
    return CLI::IsMember(std::vector<std::string>(names.begin(), names.end()));
}

}  // namespace

void ColourArguments::AddTo(CLI::App& command)
{
    command
        .add_option("--illuminant", illuminant,
                    "compute XYZ and Lab from the spectra for this illuminant (default D50)")
        ->type_name("NAME")
        ->check(MemberOf(ColourConditions::IlluminantNames));
    command.add_option("--observer", observer, "and this observer, degrees (default 2)")
        ->type_name("DEGREES")
        ->check(MemberOf(ColourConditions::ObserverNames));
}

std::optional<ColourConditions> ColourArguments::Conditions() const
{
    if (illuminant.empty() && observer.empty()) {
        return std::nullopt;
    }
    return ColourConditions(ColourKindOf<ColourConditions::Illuminant>(illuminant, ColourConditions::IlluminantNames),
                            ColourKindOf<ColourConditions::Observer>(observer, ColourConditions::ObserverNames));
}

}  // namespace J4Tool
