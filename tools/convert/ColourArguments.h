// The arguments of every command that computes colours: for which illuminant and which observer.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

#include "chart/colour/ColourConditions.h"

namespace J4Tool {

struct ColourArguments {
    std::string illuminant;
    std::string observer;

    void AddTo(CLI::App& command);

    /// Nothing where neither was given; D50 and 2 degrees for what was not.
    std::optional<J4Chart::ColourConditions> Conditions() const;
};

}  // namespace J4Tool
